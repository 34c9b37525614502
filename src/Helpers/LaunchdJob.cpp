#include "Helpers/LaunchdJob.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "Platform/SystemPorts.h"

namespace Helpers {

namespace {

constexpr std::int32_t kNoSuchService = 113;

std::unique_ptr<Platform::Task> launchctl(const std::string& verb, const std::string& label) {
    return Platform::SystemPorts::current().tasks->launch(
        NorvikCommon::SystemPathProvider::launchctlExecutable().path(),
        std::vector<std::string>{verb, "system/" + label});
}

bool succeeded(const Platform::Task& task) {
    return task.terminationReason() == Platform::TerminationReason::exit && task.terminationStatus() == 0;
}

/// launchctl's description of a job. Its own properties are indented by one tab, those of its parts by more.
/// A job that does not run is "waiting" up to macOS 10.14, "not running" later.
JobState readDescription(std::string_view text) {
    JobState state = JobState::running;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.starts_with("\tpid = ")) {
            return JobState::running;
        }
        if (line == "\tstate = not running" || line == "\tstate = waiting") {
            state = JobState::idle;
        }
    }
    return state;
}

}  // namespace

JobState stateOfJob(const std::string& label) {
    const std::unique_ptr<Platform::Task> task = launchctl("print", label);
    if (task == nullptr) {
        return JobState::running;
    }
    const std::string description = task->readOutputToEnd();
    task->waitUntilExit();
    if (succeeded(*task)) {
        return readDescription(description);
    }
    const bool isAbsent = task->terminationReason() == Platform::TerminationReason::exit &&
                          task->terminationStatus() == kNoSuchService;
    return isAbsent ? JobState::absent : JobState::running;
}

bool bootOut(const std::string& label) {
    const std::unique_ptr<Platform::Task> task = startBootOut(label);
    if (task == nullptr) {
        return false;
    }
    task->waitUntilExit();
    return succeeded(*task);
}

std::unique_ptr<Platform::Task> startBootOut(const std::string& label) {
    return launchctl("bootout", label);
}

}  // namespace Helpers
