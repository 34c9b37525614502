// The command that reads a log.

#include "Commands.h"
#include "DisplayText.h"
#include "Files.h"
#include "Output.h"
#include "Terminal.h"
#include "inspect/explain/Explain.h"
#include "inspect/explain/RunReport.h"

namespace Inspect {

namespace {

int writePage(const std::string& file, const std::string& page) {
    std::string why;
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(page.data());
    return replaceFile(file, {bytes, page.size()}, why) ? kDone : refuse(file, "standard output", why);
}

}  // namespace

int runExplain(const Arguments& arguments) {
    const std::string file = arguments.argument.empty() ? "-" : arguments.argument;
    std::string why;
    std::string notice;
    const auto runs = runsOfLog(file, why, notice);
    if (!runs) {
        return refuse(file, "standard input", why);
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
