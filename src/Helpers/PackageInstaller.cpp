#include "Helpers/PackageInstaller.h"

#include <memory>
#include <string>
#include <vector>

#include "Platform/SystemPorts.h"

namespace Helpers {

namespace {

constexpr const char* kInstallerTool = "/usr/sbin/installer";

// The folder of the blessed tools: it exists whenever a helper runs, only root may write to it and to those
// above it, and anybody who looks for the helper sees what is left in it.
constexpr const char* kFolder = "/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper.package";
constexpr const char* kCopy = "SwiftRuntimeForCommandLineTools.pkg";

std::string withoutTrailingLineBreaks(std::string text) {
    text.erase(text.find_last_not_of("\r\n") + 1);
    return text;
}

/// The reason why the copy is not the maker's package; empty if it is.
std::string difference(const Platform::PrivateCopy& copy, const PackageFingerprint& maker) {
    const std::string size = std::to_string(maker.size);
    if (copy.size() > maker.size) {
        return "it has more than " + size + " bytes";
    }
    if (copy.size() < maker.size) {
        return "it has " + std::to_string(copy.size()) + " bytes instead of " + size;
    }
    if (copy.sha256() != maker.sha256) {
        return "its SHA-256 is " + copy.sha256() + " instead of " + std::string(maker.sha256);
    }
    return {};
}

/// Has the system's tool install `copy`; errors call it `package`.
std::optional<Platform::Error> install(const Base::URL& copy, const Base::URL& package) {
    const std::unique_ptr<Platform::Task> task = Platform::SystemPorts::current().tasks->launch(
        kInstallerTool, std::vector<std::string>{"-pkg", copy.path(), "-target", "/"});
    if (task == nullptr) {
        return Platform::Error{
            std::string("The system's installer tool ") + kInstallerTool + " cannot be run.", 1};
    }
    // Read before waiting: the tool may report any amount, and a full pipe would stop it. Its complaints are
    // short.
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

}  // namespace

std::optional<Platform::Error> installPackage(const Base::URL& package, const PackageFingerprint& maker) {
    const Base::URL destination = Base::URL::fileURL(kFolder).appendingPathComponent(kCopy);
    Platform::Error error;
    // One extra byte reveals a longer package, whatever its length.
    const std::unique_ptr<Platform::PrivateCopy> copy =
        Platform::SystemPorts::current().privateCopies->copy(package, destination, maker.size + 1, error);
    if (copy == nullptr) {
        return error;
    }
    if (const std::string why = difference(*copy, maker); !why.empty()) {
        return Platform::Error{"The package \"" + package.path() + "\" is not the maker's: " + why, 1};
    }
    return install(destination, package);
}

std::optional<Platform::Error> removeLeftPackage() {
    return Platform::SystemPorts::current().privateCopies->removeFolder(Base::URL::fileURL(kFolder));
}

}  // namespace Helpers
