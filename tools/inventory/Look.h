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
    /// The process that looks; it is no part of what it finds.
    std::int32_t self = 0;
    /// A folder that holds the files of a Mac, without a trailing slash; empty for this Mac. `files` answers
    /// for that folder then, and what only a running Mac has is not looked at.
    std::string root{};
};

/// Looks once at everything, through `viewpoint` and the system's ports. Sends nothing to any helper; of
/// launchctl only "print" and "print-disabled" are used.
[[nodiscard]] Inventory look(const Viewpoint& viewpoint);

/// Calls `lookOnce` until two looks in succession see the same, five times at most. A Mac that never holds
/// still gets an entry in `blind`.
[[nodiscard]] Inventory settledLook(const std::function<Inventory()>& lookOnce);

/// Whether a process or a job of the uninstaller's helpers runs.
[[nodiscard]] bool helperRuns(const Inventory& inventory);

}  // namespace Inventory
