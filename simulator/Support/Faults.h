#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Simulator {

/// A failure that can be requested in a simulated Mac.
struct FaultKind {
    std::string_view name;
    /// The placeholder after "=", for people; empty if the fault takes no value.
    std::string_view value;
    std::string_view explanation;
};

/// Every fault, in alphabetical order.
[[nodiscard]] std::span<const FaultKind> faultKinds();

/// Faults in force, each with its value (empty for those that take none).
using Faults = std::map<std::string, std::string, std::less<>>;

/// Adds `text` (NAME or NAME=VALUE) to `faults`. Returns what is wrong with it, for people.
[[nodiscard]] std::optional<std::string> addFault(Faults& faults, const std::string& text);

/// The value of a fault that is in force.
[[nodiscard]] std::optional<std::string> faultValue(const Faults& faults, std::string_view name);

/// A fault's value as a number; nothing if the fault is not in force.
[[nodiscard]] std::optional<double> faultNumber(const Faults& faults, std::string_view name);

/// Labels of the two helpers that faults refer to.
inline constexpr std::string_view kInstallerHelperLabel = "com.norvik.InstallerHelper";
inline constexpr std::string_view kSupportHelperLabel = "com.norvik.SupportPrivilegedHelper";

}  // namespace Simulator
