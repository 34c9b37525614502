#include "Support/Faults.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace Simulator {

namespace {

constexpr std::array kKinds{
    FaultKind{"authorization", "", "no authorization is granted to anybody"},
    FaultKind{"bless-installer", "", "blessing com.norvik.InstallerHelper fails"},
    FaultKind{"bless-support", "", "blessing com.norvik.SupportPrivilegedHelper fails"},
    FaultKind{"disk-full", "", "the disk is full where the runtime package installs its files"},
    FaultKind{"helper-exit-after", "N", "the installer helper dies right after its Nth progress report"},
    FaultKind{"helper-mute", "", "the installer helper works, but its progress reports never arrive"},
    FaultKind{"helper-pause", "SECONDS", "the installer helper's pauses take that long, not 5 seconds each"},
    FaultKind{"immutable", "PATH", "the item at PATH cannot be changed or removed"},
    FaultKind{"kext-busy", "", "no kernel extension can be unloaded because it is in use"},
    FaultKind{"launchctl-fail", "VERB", "launchctl VERB fails with exit status 5"},
    FaultKind{"launchctl-hang", "SECONDS", "every launchctl call takes that long"},
    FaultKind{"no-installer-service", "",
              "the installer helper is blessed, but its mach service never appears"},
    FaultKind{"package", "", "installer refuses every package"},
    FaultKind{"unreadable-passwd", "", "the password database gives no entries"},
};

/// The verbs of launchctl that a fault can name.
constexpr std::array<std::string_view, 10> kVerbs{"bootout",        "bootstrap", "disable", "enable",
                                                  "kickstart",      "kill",      "list",    "print",
                                                  "print-disabled", "remove"};

bool isNumber(const std::string& text, double minimum, bool whole) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    return end != text.c_str() && *end == '\0' && std::isfinite(number) && number >= minimum &&
           number <= 1e6 && (!whole || number == std::floor(number));
}

std::optional<std::string> checkValue(const FaultKind& kind, const std::string& value) {
    if (kind.value == "N" && !isNumber(value, 1, true)) {
        return "fault " + std::string(kind.name) + " needs a whole number from 1";
    }
    if (kind.value == "SECONDS" && !isNumber(value, 0, false)) {
        return "fault " + std::string(kind.name) + " needs a number of seconds";
    }
    if (kind.value == "VERB" && std::find(kVerbs.begin(), kVerbs.end(), value) == kVerbs.end()) {
        std::string all;
        for (const std::string_view verb : kVerbs) {
            all += (all.empty() ? "" : ", ") + std::string(verb);
        }
        return "fault " + std::string(kind.name) + " needs a verb of launchctl: " + all;
    }
    if (kind.value == "PATH" && !value.starts_with('/')) {
        return "fault " + std::string(kind.name) + " needs an absolute path";
    }
    return std::nullopt;
}

}  // namespace

std::span<const FaultKind> faultKinds() {
    return kKinds;
}

std::optional<std::string> addFault(Faults& faults, const std::string& text) {
    const std::size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    const auto kind =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const FaultKind& k) { return k.name == name; });
    if (kind == kKinds.end()) {
        return "there is no fault named '" + name + "' (see macsim list-faults)";
    }
    if (kind->value.empty() && equals != std::string::npos) {
        return "fault " + name + " takes no value";
    }
    if (!kind->value.empty() && (equals == std::string::npos || equals + 1 == text.size())) {
        return "fault " + name + " needs a value: " + name + "=" + std::string(kind->value);
    }
    const std::string value = equals == std::string::npos ? "" : text.substr(equals + 1);
    if (auto wrong = checkValue(*kind, value)) {
        return wrong;
    }
    faults[name] = value;
    return std::nullopt;
}

std::optional<std::string> faultValue(const Faults& faults, std::string_view name) {
    const auto found = faults.find(name);
    return found == faults.end() ? std::nullopt : std::optional(found->second);
}

std::optional<double> faultNumber(const Faults& faults, std::string_view name) {
    const auto value = faultValue(faults, name);
    return value ? std::optional(std::strtod(value->c_str(), nullptr)) : std::nullopt;
}

}  // namespace Simulator
