#include "SwiftUtils/Process+Extensions.h"

#include <utility>

#include "Base/FatalError.h"
#include "Base/UTF8.h"
#include "NorvikCommon/InstallerLog.h"
#include "Platform/SystemPorts.h"

namespace SwiftUtils {

namespace {

std::optional<std::string> text(std::string bytes) {
    if (bytes.empty() || !Base::isValidUTF8(bytes)) {
        return std::nullopt;
    }
    return bytes;
}

void logResult(const ProcessResult& result, const std::vector<std::string>& arguments) {
    if (result.errorDescription()) {
        const bool exited = result.terminationReason() == Platform::TerminationReason::exit;
        NorvikCommon::logLines("[SNTM Installer]\nError description: " + *result.errorDescription() +
                                   ";\ntermination status: " + std::to_string(result.terminationStatus()) +
                                   ";\ntermination reason: " + (exited ? "exit" : "uncaughtSignal") + ".",
                               arguments);
    }
    if (result.output()) {
        NorvikCommon::logLines("[SNTM Installer] Output: " + *result.output(), arguments);
    }
}

}  // namespace

ProcessResult::ProcessResult()
    : terminationStatus_(0), terminationReason_(Platform::TerminationReason::exit) {
    Base::fatalError("Use of unimplemented initializer 'init()' for class 'SwiftUtils.ProcessResult'");
}

ProcessResult::ProcessResult(std::optional<std::string> output, std::optional<std::string> errorDescription,
                             std::int32_t terminationStatus, Platform::TerminationReason terminationReason)
    : output_(std::move(output)),
      errorDescription_(std::move(errorDescription)),
      terminationStatus_(terminationStatus),
      terminationReason_(terminationReason) {}

ProcessResult execute(const std::string& launchPath,
                      const std::optional<std::vector<std::string>>& arguments) {
    const std::unique_ptr<Platform::Task> task =
        Platform::SystemPorts::current().tasks->launch(launchPath, arguments);
    if (task == nullptr) {
        Base::fatalError("launch path not accessible: " + launchPath);
    }
    task->waitUntilExit();
    std::optional<std::string> output = text(task->readOutputToEnd());
    std::optional<std::string> errorDescription = text(task->readErrorToEnd());
    ProcessResult result(std::move(output), std::move(errorDescription), task->terminationStatus(),
                         task->terminationReason());
    logResult(result, arguments.value_or(std::vector<std::string>()));
    return result;
}

ProcessResult execute(const Base::URL& launchURL, const std::optional<std::vector<std::string>>& arguments) {
    return execute(launchURL.path(), arguments);
}

}  // namespace SwiftUtils
