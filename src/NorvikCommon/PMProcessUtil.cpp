#include "NorvikCommon/PMProcessUtil.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "Platform/ProcessOnce.h"
#include "Platform/SystemPorts.h"

namespace NorvikCommon {

namespace {

constexpr std::size_t kBufferSize = 4096;

Platform::ProcessOnce<const PMProcessUtil*> sharedUtil;

Platform::ProcessTable& table() {
    return Platform::SystemPorts::current().processes;
}

std::string_view written(const std::array<char, kBufferSize>& buffer, int length) {
    const std::string_view bytes(buffer.data(), std::min(static_cast<std::size_t>(length), buffer.size()));
    return bytes.substr(0, bytes.find('\0'));
}

}  // namespace

const PMProcessUtil& PMProcessUtil::shared() {
    static const PMProcessUtil instance;
    return *sharedUtil.get([] { return &instance; });
}

std::vector<std::int32_t> PMProcessUtil::collectPidsForUser(std::uint32_t uid) const {
    const auto type = uid == kAllUsersId ? Platform::PidListType::all : Platform::PidListType::effectiveUser;
    const int expected = table().listPids(type, uid, {});
    if (expected <= 0) {
        return {};
    }
    // Both results count entries, and the buffer has four bytes for each entry that the first one counted.
    std::vector<std::int32_t> buffer(static_cast<std::size_t>(expected));
    const int listed = table().listPids(type, uid, buffer);
    if (listed <= 0) {
        return {};
    }
    const auto count = std::min(static_cast<std::size_t>(listed), buffer.size());
    const std::set<std::int32_t> pids(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count));
    return {pids.begin(), pids.end()};
}

std::optional<std::uint32_t> PMProcessUtil::processUidForPid(std::int32_t pid) const {
    std::uint32_t uid = 0;
    return table().effectiveUser(pid, uid) > 0 ? std::optional(uid) : std::nullopt;
}

std::optional<std::string> PMProcessUtil::processNameForPid(std::int32_t pid) const {
    std::array<char, kBufferSize> buffer{};
    // Intentionally asked twice; the first answer is ignored.
    static_cast<void>(table().name(pid, buffer));
    const int length = table().name(pid, buffer);
    const std::string_view name = length < 1 ? std::string_view() : written(buffer, length);
    if (!name.empty()) {
        return std::string(name);
    }
    const std::optional<Base::URL> location = processLocationForPid(pid);
    return location ? std::optional(location->lastPathComponent()) : std::nullopt;
}

std::optional<Base::URL> PMProcessUtil::processLocationForPid(std::int32_t pid) const {
    std::array<char, kBufferSize> buffer{};
    const int length = table().path(pid, buffer);
    return length < 1 ? std::nullopt : std::optional(Base::URL::fileURL(written(buffer, length)));
}

}  // namespace NorvikCommon
