// The command that reads a log.

#include <algorithm>
#include <functional>
#include <optional>

#include "Commands.h"
#include "DisplayText.h"
#include "Files.h"
#include "Output.h"
#include "Terminal.h"
#include "inspect/explain/Explain.h"
#include "inspect/explain/Narrator.h"
#include "inspect/explain/RunReport.h"

namespace Inspect {

namespace {

int writePage(const std::string& file, const std::string& page) {
    std::string why;
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(page.data());
    return replaceFile(file, {bytes, page.size()}, why) ? kDone : refuse(file, "standard output", why);
}

/// Shows the steps of each run as its lines are read.
class Telling {
  public:
    void operator()(const RunAnalyzer& analyzer) {
        const std::optional<RunAnalyzer::Standing> standing = analyzer.standing();
        if (!standing) {
            return;
        }
        if (!narrator_ || standing->run != run_) {
            finish();
            narrator_.emplace(reportWidth(), usesColour());
            run_ = standing->run;
        }
        write(narrator_->tell(standing->steps, standing->settled));
    }

    /// Also shows a run's last step before it broke off.
    void finish(const std::vector<Run>& runs = {}) {
        if (narrator_) {
            const auto last =
                std::find_if(runs.begin(), runs.end(), [this](const Run& run) { return run.number == run_; });
            if (last != runs.end()) {
                write(narrator_->tell(last->steps, last->steps.size()));
            }
            write(narrator_->finish() + "\n");
        }
    }

    /// The exit status so far: whether everything could be written.
    [[nodiscard]] int status() const { return status_; }

  private:
    void write(const std::string& text) {
        if (!text.empty() && status_ == kDone) {
            status_ = print(text);
        }
    }

    int status_ = kDone;
    std::optional<Narrator> narrator_;
    std::size_t run_ = 0;
};

}  // namespace

int runExplain(const Arguments& arguments) {
    const std::string file = arguments.argument.empty() ? "-" : arguments.argument;
    std::string why;
    std::string notice;
    Telling telling;
    const bool follows = arguments.has("--follow");
    const auto runs =
        follows ? runsOfLog(file, why, notice, std::ref(telling)) : runsOfLog(file, why, notice);
    if (!runs) {
        return refuse(file, "standard input", why);
    }
    if (follows) {
        telling.finish(*runs);
        if (telling.status() != kDone) {
            return telling.status();
        }
    }
    if (!notice.empty()) {
        fail(kDone, notice);
    }
    if (const std::optional<std::string> page = arguments.value("--html")) {
        if (*page == "-") {
            return print(runPage(*runs));
        }
        if (const int status = writePage(*page, runPage(*runs)); status != kDone) {
            return status;
        }
    }
    return print(arguments.has("--json") ? jsonText(runJson(*runs))
                                         : runReport(*runs, arguments.has("--all"), reportWidth()));
}

}  // namespace Inspect
