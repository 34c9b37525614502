// com.norvik.InstallerHelper without its entry point: the service that executes command lists as root.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "Helpers/CommandExecutor.h"
#include "Helpers/RefusalLog.h"
#include "Helpers/Retirement.h"
#include "Platform/XPC.h"

namespace Helpers {

/// A request to end may arrive at any moment of the process's life, so its owner never destroys it.
class InstallerHelper {
  public:
    static constexpr std::uint32_t kIdleSeconds = 2;

    /// The helper behind the mach service that launchd handed to this process. Null, with a log line, if
    /// launchd handed over none.
    [[nodiscard]] static std::unique_ptr<InstallerHelper> make();

    /// Use `make`.
    explicit InstallerHelper(std::unique_ptr<Platform::XPCListener> listener);

    /// Serves until nobody has been connected and no list has been under way for kIdleSeconds, or until
    /// launchd has asked the process to end and the current list is done. Logs every refusal.
    void serve();

  private:
    std::unique_ptr<Platform::XPCListener> listener_;
    std::shared_ptr<RefusalLog> refusals_;
    Retirement retirement_;
};

}  // namespace Helpers
