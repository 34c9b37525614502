#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "Inventory.h"
#include "Platform/InspectionPorts.h"

namespace Inventory {

/// Where and how to look.
struct Viewpoint {
    Platform::FileFacts& files;
    Platform::LoadedExtensions& extensions;
    /// The process that looks, which does not count itself.
    std::int32_t self = 0;
    /// A folder that holds the files of a Mac, without a trailing slash; empty for this Mac. `files` then
    /// answers for that folder, and facts that only a running Mac has are not looked at.
    std::string root{};
};

/// Looks once at everything, through `viewpoint` and the system's ports. Sends nothing to any helper; of
/// launchctl only "print" and "print-disabled" are used.
[[nodiscard]] Inventory look(const Viewpoint& viewpoint);

/// Calls `lookOnce` until two looks in succession agree, five times at most. A Mac that keeps changing gets
/// an entry in `blind`.
[[nodiscard]] Inventory settledLook(const std::function<Inventory()>& lookOnce);

/// Whether a process or a job of the uninstaller's helpers runs.
[[nodiscard]] bool helperRuns(const Inventory& inventory);

}  // namespace Inventory
