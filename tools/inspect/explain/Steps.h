#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "InstallCommon/Command.h"
#include "inspect/explain/StepReports.h"

namespace Inspect {

/// One command of the list, seen through the lines that the helper writes while it executes it.
class Step {
  public:
    virtual ~Step() = default;

    /// Takes a line that this step could have written next; returns false, changing nothing, for any other.
    [[nodiscard]] virtual bool take(std::string_view text) = 0;
    /// Whether nothing more can follow from this step.
    [[nodiscard]] virtual bool isComplete() const = 0;
    /// What it means if the helper went past this step without a line of it.
    [[nodiscard]] virtual StepOutcome outcomeOfSilence() const = 0;
    [[nodiscard]] virtual bool pauses() const { return false; }

    /// In the log's order; at most kMostAlike of each outcome, and the last one.
    [[nodiscard]] const std::vector<StepDetail>& details() const { return details_; }
    /// How many more there were.
    [[nodiscard]] std::size_t leftOut() const { return leftOut_; }

    static constexpr std::size_t kMostAlike = 100;
    /// Of a detail's subject and reason so many bytes are kept.
    static constexpr std::size_t kLongestText = 2048;

  protected:
    void add(StepDetail detail);
    [[nodiscard]] StepDetail* last() { return details_.empty() ? nullptr : &details_.back(); }

  private:
    std::vector<StepDetail> details_;
    std::size_t leftOut_ = 0;
};

/// The step of a command of an uninstallation's list; null for a class that is in no such list.
[[nodiscard]] std::unique_ptr<Step> makeStep(const InstallCommon::Command& command);

/// done if anything was done, failed if anything failed, otherwise notThere or unknown.
[[nodiscard]] StepOutcome combinedOutcome(const std::vector<StepDetail>& details);

}  // namespace Inspect
