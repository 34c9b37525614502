#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "InspectRun.h"
#include "SampleLog.h"
#include "support/InstallerLine.h"

/// sentrel-inspect explain on logs that a test writes.
namespace InspectTest {

using TestSupport::installerLine;

using Entries = std::vector<SampleEntry>;

inline const std::string kFailed = installerLine("Uninstallation failed.");

/// The runs of a log with these entries.
class Explain : public Inspect {
  protected:
    [[nodiscard]] nlohmann::json runs(const Entries& entries, LogForm form = LogForm::systemLog) const {
        const nlohmann::json document = json({"explain", "--json"}, logOf(entries, form));
        EXPECT_EQ(document.at("formatVersion"), 1);
        return document.at("runs");
    }

    [[nodiscard]] nlohmann::json onlyRun(const Entries& entries) const {
        const nlohmann::json all = runs(entries);
        EXPECT_EQ(all.size(), 1U);
        return all.at(0);
    }
};

inline std::string outcome(const nlohmann::json& run, std::size_t step) {
    return run.at("steps").at(step - 1).at("outcome");
}

inline std::size_t countOf(const nlohmann::json& run, const std::string& wanted) {
    const nlohmann::json& steps = run.at("steps");
    return static_cast<std::size_t>(
        std::count_if(steps.begin(), steps.end(),
                      [&](const nlohmann::json& step) { return step.at("outcome") == wanted; }));
}

/// The entries with those whose text is `text` replaced by others.
inline Entries replaced(Entries entries, const std::string& text, const std::vector<std::string>& others) {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const SampleEntry& entry) { return entry.text == text; });
    EXPECT_NE(found, entries.end()) << text;
    const SampleEntry model = *found;
    auto at = entries.erase(found);
    for (const std::string& other : others) {
        at = entries.insert(at, {model.second, model.program, model.pid, other}) + 1;
    }
    return entries;
}

}  // namespace InspectTest
