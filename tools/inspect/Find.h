#pragma once

#include <string>
#include <vector>

#include "RecordJson.h"

namespace Inspect {

/// A record of the catalogue that names the given word.
struct FoundRecord {
    /// "ComponentPathProvider.trayMenu", "ComponentPathProvider.legacyVersionsUserAgents 2" (counted from 1).
    std::string record;
    /// "launchd.label", "app.bundle.location"; empty for a plain path.
    std::string field;
    /// The enclosing folder, if the record names a folder above it.
    std::string inside;
    /// The generation that alone has the record; empty if several have it.
    std::string generation;

    friend bool operator==(const FoundRecord&, const FoundRecord&) = default;
};

/// A step of an uninstallation that touches it.
struct FoundStep {
    std::size_t number = 0;
    std::string className;
    std::string description;

    friend bool operator==(const FoundStep&, const FoundStep&) = default;
};

struct FindResult {
    std::string what;
    std::vector<FoundRecord> records;
    std::vector<FoundStep> steps;

    [[nodiscard]] bool isEmpty() const { return records.empty() && steps.empty(); }
};

/// Everything that the catalogue and an uninstallation know by this name: an absolute path, a launchd label,
/// the name of a process, or an identifier. Names must match exactly.
[[nodiscard]] FindResult find(const std::string& what);

[[nodiscard]] std::string findText(const FindResult& result);
[[nodiscard]] Json findJson(const FindResult& result);

}  // namespace Inspect
