#include "NorvikCommon/InstallerLog.h"

#include <string>

#include "Base/Displayable.h"
#include "Platform/SystemPorts.h"

namespace NorvikCommon {

namespace {

constexpr std::string_view kPrefix = "[SNTM Installer]";

void write(std::string_view displayable) {
    Platform::SystemPorts::current().log->log(displayable);
}

/// The first of `names` in `text` that would break its line, as a part of `text`; of two that begin at the
/// same place, the longer one. Empty if there is none.
std::string_view firstUnruly(std::string_view text, std::span<const std::string> names) {
    std::string_view first = text.substr(text.size());
    for (const std::string& name : names) {
        const std::size_t at = name.find_first_of("\n\t") == std::string::npos ? text.npos : text.find(name);
        if (at == text.npos) {
            continue;
        }
        const std::string_view found = text.substr(at, name.size());
        if (found.data() < first.data() || (found.data() == first.data() && found.size() > first.size())) {
            first = found;
        }
    }
    return first;
}

}  // namespace

void logLine(std::string_view text) {
    write(Base::displayable(text));
}

void logInstallerLine(std::string_view text) {
    logLine(std::string(kPrefix).append(" ").append(text));
}

void logLines(std::string_view text, std::span<const std::string> names) {
    std::string entry;
    while (!text.empty()) {
        const std::string_view name = firstUnruly(text, names);
        const auto before = static_cast<std::size_t>(name.data() - text.data());
        entry += Base::displayableLines(text.substr(0, before)) + Base::displayable(name);
        text.remove_prefix(before + name.size());
    }
    const std::string forged = "\n" + std::string(kPrefix);
    for (std::size_t at = entry.find(forged); at != std::string::npos; at = entry.find(forged, at)) {
        entry.replace(at, 1, Base::displayable("\n"));
    }
    write(entry);
}

}  // namespace NorvikCommon
