// com.norvik.SupportPrivilegedHelper without its entry point: the service that installs the runtime support
// package as root.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Helpers/PackageInstaller.h"
#include "Platform/XPC.h"

namespace Helpers {

/// NVKSupportPrivilegedHelper, as it is exported. Every connection delivers on its own thread; concurrent
/// installations wait for each other.
///
/// A client that has been served may stay connected needlessly, so it does not keep the process alive. Tool
/// and job stay: the next client may already have been told that they are there. The installer helper removes
/// them at the end of an uninstallation.
class SupportHelper final : public Platform::XPCObject {
  public:
    static constexpr std::uint32_t kIdleSeconds = 2;

    /// Installs packages that match the fingerprint `maker`. `listener` outlives the object.
    SupportHelper(Platform::XPCListener& listener, PackageFingerprint maker);

    /// Serves the mach service that launchd handed to this process until the helper is idle for kIdleSeconds.
    /// Logs every refusal. False, with a log line, if launchd handed over no service.
    [[nodiscard]] static bool serve(PackageFingerprint maker);

    [[nodiscard]] std::string_view protocolName() const override { return "NVKSupportPrivilegedHelper"; }

    /// Any selector but the one that installs a package is answered with an error.
    void message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                 Platform::XPCReply reply) override;

  private:
    Platform::XPCListener& listener_;
    const PackageFingerprint maker_;
};

}  // namespace Helpers
