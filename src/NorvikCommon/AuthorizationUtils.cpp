#include "NorvikCommon/AuthorizationUtils.h"

#include <string>

#include "Platform/SystemPorts.h"

namespace NorvikCommon {

namespace {

constexpr std::string_view kAdministratorRight = "system.privilege.admin";
constexpr std::uint32_t kInteractionAllowed = 1;
constexpr std::uint32_t kExtendRights = 2;

/// The length of a UTF-8 text in UTF-16 units, as the system's strings count their characters.
std::size_t lengthInCharacters(std::string_view text) {
    std::size_t length = 0;
    for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        const bool continues = (value & 0xC0U) == 0x80U;
        const bool needsSurrogates = value >= 0xF0U;
        length += continues ? 0U : (needsSurrogates ? 2U : 1U);
    }
    return length;
}

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
    // The value's length counts characters, not bytes, on purpose.
    const Platform::AuthorizationItem promptItem{"prompt", std::string(localizedMessage),
                                                 lengthInCharacters(localizedMessage), 0};
    std::unique_ptr<Platform::SFAuthorization> authorization =
        Platform::SystemPorts::current().authorization.create();
    if (!authorization->obtainWithRights({rightItem}, flags, {promptItem})) {
        return nullptr;
    }
    return authorization;
}

}  // namespace NorvikCommon
