#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "Platform/Authorization.h"

namespace NorvikCommon {

/// Obtains rights from the system's authorization service. Every operation blocks the calling thread, returns
/// null if the right was refused or the dialog was cancelled, and logs nothing.
struct AuthorizationUtils {
    AuthorizationUtils() = delete;

    /// The right "system.privilege.admin". With `interactive` the system may show its administrator dialog;
    /// otherwise only a process that holds the right already gets it, at once and without a dialog.
    [[nodiscard]] static std::unique_ptr<Platform::SFAuthorization> authorizationForRootAction(
        bool interactive);

    [[nodiscard]] static std::unique_ptr<Platform::SFAuthorization> askAuthorizationForRight(
        std::string_view right);
    /// `localizedMessage` is shown as the dialog's prompt.
    [[nodiscard]] static std::unique_ptr<Platform::SFAuthorization> askAuthorizationForRight(
        std::string_view right, std::string_view localizedMessage);
    /// `flags` are the Security framework's authorization flags: 1 interaction allowed, 2 extend rights.
    [[nodiscard]] static std::unique_ptr<Platform::SFAuthorization> askAuthorizationForRight(
        std::string_view right, std::string_view localizedMessage, std::uint32_t flags);
};

}  // namespace NorvikCommon
