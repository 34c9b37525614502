#pragma once

#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "InstallCommon/Command.h"

namespace InstallCommon {

/// A command's description: a fixed prefix, the component's name and three full stops.
[[nodiscard]] inline std::string describe(std::string_view prefix, std::string_view name) {
    return std::string(prefix).append(name).append("...");
}

/// Moves the commands of `more` to the end of `list`.
inline void append(CommandList& list, CommandList more) {
    std::move(more.begin(), more.end(), std::back_inserter(list));
}

}  // namespace InstallCommon
