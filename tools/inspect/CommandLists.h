#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "InstallCommon/CommandLists.h"

namespace Inspect {

/// The folders of a payload that a list copies from.
struct PayloadUse {
    bool applications = false;
    bool launchdJobs = false;
    bool supportFiles = false;
};

/// A command list that can be asked for by name.
struct NamedCommandList {
    std::string_view name;
    /// One phrase for the help text.
    std::string_view summary;
    PayloadUse uses;
    /// Makes a new list without touching the disk. A folder that the list does not use may be any.
    InstallCommon::CommandList (*make)(const InstallCommon::PayloadLocations& payload);
};

/// The list with this name; null if there is none.
[[nodiscard]] const NamedCommandList* findCommandList(std::string_view name);

/// All names with their summaries, one line each, for the help text.
[[nodiscard]] std::string describeCommandLists();

/// All names.
[[nodiscard]] std::vector<std::string> commandListNameList();

}  // namespace Inspect
