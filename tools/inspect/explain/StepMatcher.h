#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inspect/explain/LogEntry.h"
#include "inspect/explain/StepReports.h"
#include "inspect/explain/Steps.h"

namespace Inspect {

/// Assigns the lines that the installer helper writes while it executes an uninstallation's list to the steps
/// that they belong to. The log does not number the steps: a line belongs to the first step, from the current
/// one on, that could have written it.
class StepMatcher {
  public:
    /// Makes the list anew; needs SystemPorts.
    StepMatcher();

    /// Takes one of the helper's entries. Returns false, and changes nothing, if no step from the current one
    /// on could have written it.
    [[nodiscard]] bool add(const LogEntry& entry);

    /// Whether the last step has written its last line.
    [[nodiscard]] bool isFinished() const;
    /// The number of steps up to the one that wrote last; 0 before the first line.
    [[nodiscard]] std::size_t reached() const { return reached_; }

    /// The current state of the steps. `wentThrough` says that the helper went through the whole list, so a
    /// step without lines had nothing to do; otherwise the steps after the last line were not reached.
    [[nodiscard]] std::vector<StepReport> reports(bool wentThrough) const;

  private:
    struct Entry {
        StepReport report;
        std::unique_ptr<Step> step;
    };

    static void moveLoneUnloadFailure(std::vector<StepReport>& reports);
    static void blurClosings(std::vector<StepReport>& reports);

    std::vector<Entry> steps_;
    std::size_t reached_ = 0;
};

}  // namespace Inspect
