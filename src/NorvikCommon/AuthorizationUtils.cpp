#include "NorvikCommon/AuthorizationUtils.h"

#include <string>

#include "Base/UTF16.h"
#include "Platform/SystemPorts.h"

namespace NorvikCommon {

namespace {

constexpr std::string_view kAdministratorRight = "system.privilege.admin";
constexpr std::uint32_t kInteractionAllowed = 1;
constexpr std::uint32_t kExtendRights = 2;

}  // namespace

std::unique_ptr<Platform::SFAuthorization> AuthorizationUtils::authorizationForRootAction(bool interactive) {
    return interactive ? askAuthorizationForRight(kAdministratorRight)
                       : askAuthorizationForRight(kAdministratorRight, "", kExtendRights);
}

std::unique_ptr<Platform::SFAuthorization> AuthorizationUtils::askAuthorizationForRight(
    std::string_view right) {
    return askAuthorizationForRight(right, "");
}

std::unique_ptr<Platform::SFAuthorization> AuthorizationUtils::askAuthorizationForRight(
    std::string_view right, std::string_view localizedMessage) {
    return askAuthorizationForRight(right, localizedMessage, kInteractionAllowed | kExtendRights);
}

std::unique_ptr<Platform::SFAuthorization> AuthorizationUtils::askAuthorizationForRight(
    std::string_view right, std::string_view localizedMessage, std::uint32_t flags) {
    const Platform::AuthorizationItem rightItem{std::string(right), std::nullopt, 0, 0};
    // The value's length intentionally counts characters, as the system's strings do, not bytes.
    const std::size_t characters = Base::utf16FromUTF8(localizedMessage).size();
    const Platform::AuthorizationItem promptItem{"prompt", std::string(localizedMessage), characters, 0};
    std::unique_ptr<Platform::SFAuthorization> authorization =
        Platform::SystemPorts::current().authorization->create();
    if (!authorization->obtainWithRights({rightItem}, flags, {promptItem})) {
        return nullptr;
    }
    return authorization;
}

}  // namespace NorvikCommon
