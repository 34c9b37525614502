#include "Helpers/PackageInstaller.h"

#include <memory>
#include <string>
#include <vector>

#include "Platform/SystemPorts.h"

namespace Helpers {

namespace {

constexpr const char* kInstallerTool = "/usr/sbin/installer";

std::string withoutTrailingLineBreaks(std::string text) {
    text.erase(text.find_last_not_of("\r\n") + 1);
    return text;
}

}  // namespace

std::optional<Platform::Error> installPackage(const Base::URL& package) {
    const Platform::SystemPorts& ports = Platform::SystemPorts::current();
    if (!ports.files.itemExists(package)) {
        return Platform::Error{"The package \"" + package.path() + "\" does not exist.", 1};
    }
    const std::unique_ptr<Platform::Task> task =
        ports.tasks.launch(kInstallerTool, std::vector<std::string>{"-pkg", package.path(), "-target", "/"});
    if (task == nullptr) {
        return Platform::Error{
            std::string("The system's installer tool ") + kInstallerTool + " cannot be run.", 1};
    }
    // Read before waiting: how much the tool reports is not ours to say, and a full pipe would stop it. Its
    // complaints are short.
    static_cast<void>(task->readOutputToEnd());
    const std::string complaint = withoutTrailingLineBreaks(task->readErrorToEnd());
    task->waitUntilExit();
    const bool succeeded =
        task->terminationReason() == Platform::TerminationReason::exit && task->terminationStatus() == 0;
    if (succeeded) {
        return std::nullopt;
    }
    return Platform::Error{
        complaint.empty() ? "The package \"" + package.path() + "\" could not be installed." : complaint,
        task->terminationStatus()};
}

}  // namespace Helpers
