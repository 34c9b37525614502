#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/explain/StepReports.h"

namespace Inspect {

/// Shows the steps of one run while it goes on: those of a kind together under a heading, each with a mark
/// for its outcome. Several stand on a line; one that failed has its own, with the reason.
class Narrator {
  public:
    /// `width` is the number of columns at most.
    Narrator(std::size_t width, bool inColour) : width_(width), inColour_(inColour) {}

    /// The text about the first `settled` of the run's steps that earlier calls have not shown, to be
    /// appended to their results; it may end in the middle of a line. Steps that the run did not reach are
    /// left out.
    [[nodiscard]] std::string tell(const std::vector<StepReport>& steps, std::size_t settled);

    /// The end of the text: a line feed, if one is missing.
    [[nodiscard]] std::string finish();

  private:
    void tellStep(std::string& text, const StepReport& step);
    void tellClosings(std::string& text, const std::vector<StepReport>& steps, std::size_t first,
                      std::size_t end);
    void beginGroup(std::string& text, std::string_view heading);
    void addItem(std::string& text, StepOutcome outcome, std::string_view name);
    void addFailures(std::string& text, const StepReport& step);

    std::size_t width_;
    bool inColour_;
    std::size_t told_ = 0;
    std::size_t column_ = 0;
    std::string heading_;
};

}  // namespace Inspect
