#include "NorvikCommon/UIDUtil.h"

#include <set>

#include "Platform/ProcessOnce.h"
#include "Platform/SystemPorts.h"

namespace NorvikCommon {

namespace {

Platform::ProcessOnce<std::string> usersDirectory;

}  // namespace

std::vector<std::uint32_t> UIDUtil::allUsers() {
    Platform::Users& database = Platform::SystemPorts::current().users;
    std::set<std::uint32_t> ids;
    database.rewind();
    while (const std::optional<Platform::Users::Entry> entry = database.next()) {
        if (entry->home.starts_with(usersDirectoryPath())) {
            ids.insert(entry->uid);
        }
    }
    database.close();
    return {ids.begin(), ids.end()};
}

void UIDUtil::performWithUid(std::uint32_t uid, const std::function<void()>& block) {
    Platform::Users& users = Platform::SystemPorts::current().users;
    const std::uint32_t realUserId = users.realUserId();
    static_cast<void>(users.setEffectiveUserId(uid));
    block();
    static_cast<void>(users.setEffectiveUserId(realUserId));
}

const std::string& UIDUtil::usersDirectoryPath() {
    return usersDirectory.get([] {
        return Platform::SystemPorts::current().folders->folder(Platform::StandardFolder::users).path();
    });
}

}  // namespace NorvikCommon
