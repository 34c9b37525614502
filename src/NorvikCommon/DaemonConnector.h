#pragma once

#include <memory>
#include <string_view>

#include "Platform/DistantObjects.h"

namespace NorvikCommon {

/// The product's daemon as seen by other programs: it runs if its objects answer. Each object's proxy is kept
/// and reused while it is valid. For the main thread; nothing is logged.
struct DaemonConnector {
    DaemonConnector() = delete;

    static constexpr std::string_view rootName = "com.norvik.antivirus.DaemonRoot";
    static constexpr std::string_view onDemandScannerRootName = "com.norvik.antivirus.OnDemandScannerRoot";

    /// The daemon's root object; null if the daemon does not run. A kept proxy is dropped, and the object
    /// looked up anew, when its connection or one of the connection's ports is no longer valid.
    [[nodiscard]] static std::shared_ptr<Platform::DistantObject> rootObject();

    /// The daemon's on-demand scanner. Its kept proxy counts as valid as long as the kept proxy of
    /// `rootObject` is; its own state is intentionally not checked.
    [[nodiscard]] static std::shared_ptr<Platform::DistantObject> onDemandScannerObject();
};

}  // namespace NorvikCommon
