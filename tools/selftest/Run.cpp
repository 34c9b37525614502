#include "Run.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

#include "Base/Displayable.h"
#include "Base/Excerpt.h"
#include "Platform/SystemPorts.h"
#include "Report.h"

namespace Selftest {

namespace {

constexpr int kMisuse = 2;
/// Long enough for a Mac that starts everything for the first time.
constexpr int kSeconds = 60;
constexpr std::string_view kUsage =
    "usage: sentrel-selftest [--list] [NAME...]\n"
    "\n"
    "Asks this Mac whether everything that Uninstall Sentrel relies on holds. Needs no rights, starts no\n"
    "service, changes nothing outside a scratch folder. One line for each check:\n"
    "\n"
    "  PASS  it holds          FAIL  it does not, and why          SKIP  it cannot be asked here, and why\n"
    "\n"
    "NAME chooses: a check (\"files.links\") or a group (\"files\"). --list names the checks.\n"
    "Exit status: 0 nothing failed, 1 something failed, 2 the command line is wrong.\n";

std::string lastLineOf(std::string_view text) {
    while (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    const std::size_t lineBreak = text.rfind('\n');
    return std::string(lineBreak == std::string_view::npos ? text : text.substr(lineBreak + 1));
}

Outcome withoutAnswer(const Platform::Task& task, const std::string& words) {
    constexpr std::size_t kLongest = 300;
    std::string why = task.terminationReason() == Platform::TerminationReason::uncaughtSignal
                          ? "its process was ended by signal "
                          : "its process gave no answer and exited with status ";
    why += std::to_string(task.terminationStatus());
    const std::string last = lastLineOf(words);
    return failed(
        last.empty() ? why : why + "; its last words: " + Base::displayable(Base::excerpt(last, kLongest)));
}

bool isChosen(std::string_view name, const std::vector<std::string>& chosen) {
    return chosen.empty() || std::any_of(chosen.begin(), chosen.end(), [name](const std::string& each) {
               return name == each || name.starts_with(each + ".");
           });
}

std::size_t widestOf(const Checks& checks) {
    std::size_t widest = 0;
    for (const Check& check : checks) {
        widest = std::max(widest, check.name.size());
    }
    return widest;
}

int runHere(const std::string& name, const Checks& checks) {
    const auto found =
        std::find_if(checks.begin(), checks.end(), [&name](const Check& each) { return each.name == name; });
    if (found == checks.end()) {
        return kMisuse;
    }
    printOutcome(found->run());
    // The queues of connections still run: nothing is destroyed under them.
    std::_Exit(0);
}

int runAll(const std::string& path, const Checks& checks) {
    std::vector<Result> results;
    const std::size_t width = widestOf(checks);
    for (const Check& check : checks) {
        results.push_back({check.name, outcomeOfProcess(path, check.name, kSeconds)});
        std::printf("%s\n", lineOf(check.name, results.back().outcome, width).c_str());
        std::fflush(stdout);
    }
    std::printf("\n%s", tableOf(results).c_str());
    return exitStatusOf(results);
}

}  // namespace

Outcome outcomeOfProcess(const std::string& path, std::string_view name, int seconds) {
    const std::unique_ptr<Platform::Task> task = Platform::SystemPorts::current().tasks->launch(
        path, std::vector<std::string>{"--only", std::string(name)});
    if (task == nullptr) {
        return failed("its process cannot be started: " + Base::displayable(path));
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (task->isRunning() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (task->isRunning()) {
        task->kill();
        return failed("no answer within " + std::to_string(seconds) + " seconds");
    }
    task->waitUntilExit();
    const std::optional<Outcome> outcome = outcomeIn(task->readOutputToEnd());
    const bool endedWell =
        task->terminationReason() == Platform::TerminationReason::exit && task->terminationStatus() == 0;
    return outcome && endedWell ? *outcome : withoutAnswer(*task, task->readErrorToEnd());
}

int runSelftest(const std::string& path, int argc, char** argv, const Checks& checks) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments.front() == "--only") {
        return runHere(arguments.back(), checks);
    }
    if (arguments.size() == 1 && arguments.front() == "--wait") {
        std::this_thread::sleep_for(std::chrono::seconds(kSeconds));
        return 0;
    }
    if (arguments.size() == 1 && arguments.front() == "--help") {
        std::fwrite(kUsage.data(), 1, kUsage.size(), stdout);
        return 0;
    }
    if (arguments.size() == 1 && arguments.front() == "--list") {
        for (const Check& check : checks) {
            std::printf("%s\n", std::string(check.name).c_str());
        }
        return 0;
    }
    Checks chosen;
    std::copy_if(checks.begin(), checks.end(), std::back_inserter(chosen),
                 [&arguments](const Check& each) { return isChosen(each.name, arguments); });
    const bool isEachKnown =
        std::all_of(arguments.begin(), arguments.end(), [&checks](const std::string& argument) {
            return std::any_of(checks.begin(), checks.end(),
                               [&argument](const Check& each) { return isChosen(each.name, {argument}); });
        });
    if (!isEachKnown) {
        std::fprintf(stderr, "sentrel-selftest: there is no such check; --list names them\n%s",
                     std::string(kUsage).c_str());
        return kMisuse;
    }
    return runAll(path, chosen);
}

}  // namespace Selftest
