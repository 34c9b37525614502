#pragma once

#include <string>
#include <string_view>

#include "InstallCommon/Command.h"

namespace Inspect {

/// A command list that can be asked for by name.
struct NamedCommandList {
    std::string_view name;
    /// One phrase for the help text.
    std::string_view summary;
    /// Makes the list anew; the disk is not touched.
    InstallCommon::CommandList (*make)();
};

/// The list of this name; null when there is none.
[[nodiscard]] const NamedCommandList* findCommandList(std::string_view name);

/// All names with their summaries, one line each, for the help text.
[[nodiscard]] std::string describeCommandLists();

/// All names, separated by ", ".
[[nodiscard]] std::string commandListNames();

}  // namespace Inspect
