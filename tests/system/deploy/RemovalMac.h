#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/SimulatedMac.h"

namespace DeployTests {

/// The texts one after the other.
[[nodiscard]] std::string joined(std::initializer_list<std::string_view> texts);

/// How often `part` is in `text`.
[[nodiscard]] std::size_t countOf(std::string_view part, std::string_view text);

/// Where an administrator's package puts what a removal needs.
inline const std::string kKit = "/Library/SentrelRemoval";
inline const std::string kScript = kKit + "/remove-sentrel.sh";
inline const std::string kInspect = kKit + "/sentrel-inspect";

/// What Macs have on them: nothing, or so little that a run takes no pauses.
inline const std::vector<std::string> kEmpty{"--empty", "--users", "alice:501"};
inline const std::vector<std::string> kQuickMac{"--installed", "antivir", "--users", "alice:501"};

/// A simulated Mac with remove-sentrel.sh, sentrel-inspect and the uninstaller in kKit.
class RemovalMac : public TestSupport::SimulatedMac {
  public:
    /// Makes the Mac; a failure to do so fails the test.
    explicit RemovalMac(const std::vector<std::string>& options, bool withUninstaller = true);

    /// Runs a line of shell as root in the booted Mac, under faults.
    TestSupport::ProgramResult underFaults(const std::vector<std::string>& faults, const std::string& line);
    /// The calls of launchctl in the last run that change something: their arguments.
    [[nodiscard]] std::vector<std::string> launchctlChanges() const;
    /// What a look from outside finds of the product's files: the last line of verify.
    [[nodiscard]] std::string verdictFromOutside() const;
};

/// The one line of JSON that a removal prints. Fails the test if there is more or less, anything on standard
/// error, or another exit status in the line than in the result.
[[nodiscard]] nlohmann::json lineOf(const TestSupport::ProgramResult& result);

/// Fails the test unless the removal ended with this status and word, and says whether it changed something.
void expectOutcome(const TestSupport::ProgramResult& result, int status, const std::string& word,
                   bool changed);

}  // namespace DeployTests
