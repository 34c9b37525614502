#include "InstallCommon/FileSystemUtil.h"

#include <string>

#include "NorvikCommon/InstallerLog.h"
#include "NorvikCommon/UIDUtil.h"
#include "Platform/SystemPorts.h"

namespace InstallCommon {

namespace {

constexpr std::uint32_t kRootUserId = 0;
constexpr std::uint32_t kWheelGroupId = 0;

Platform::FileManager& files() {
    return Platform::SystemPorts::current().files;
}

void logError(const Platform::Error& error) {
    NorvikCommon::logInstallerLine("Error: " + error.description);
}

void logChownFailure(const Base::URL& item, int error) {
    NorvikCommon::logInstallerLine("Chown failed for path " + item.absoluteString() + " and set errno to " +
                                   std::to_string(error) + ".");
}

}  // namespace

void FileSystemUtil::createDirectory(const Base::URL& at, bool withIntermediateDirectories) {
    NorvikCommon::UIDUtil::performWithUid(kRootUserId, [&] {
        if (const auto error = files().createDirectory(at, withIntermediateDirectories)) {
            logError(*error);
        }
    });
}

bool FileSystemUtil::isEmpty(const Base::URL& directory) {
    Platform::Error error;
    const std::optional<bool> holdsSomething = files().hasVisibleEntries(directory, error);
    if (!holdsSomething) {
        logError(error);
        return true;
    }
    return !*holdsSomething;
}

void FileSystemUtil::remove(const std::optional<Base::URL>& at) {
    if (!at) {
        return;
    }
    if (const auto error = files().removeItem(*at)) {
        NorvikCommon::logInstallerLine("Error removing: " + error->description);
    } else {
        NorvikCommon::logInstallerLine("Removed at " + at->path());
    }
}

void FileSystemUtil::setPermissions(std::uint16_t mode, const Base::URL& fileLocation) {
    if (const int error = files().setMode(fileLocation, mode); error != 0) {
        NorvikCommon::logInstallerLine("Chmod failed for path " + fileLocation.absoluteString() +
                                       " and set errno to " + std::to_string(error));
    }
}

void FileSystemUtil::setOwner(std::uint32_t owner, std::uint32_t group, const Base::URL& of) {
    if (const int error = files().setOwner(of, owner, group); error != 0) {
        logChownFailure(of, error);
    }
}

void FileSystemUtil::setOwnerRecursively(std::uint32_t owner, std::uint32_t group, const Base::URL& of) {
    setOwner(owner, group, of);
    files().setOwnerOfContents(of, owner, group, logChownFailure);
}

void FileSystemUtil::copy(const Base::URL& source, const Base::URL& destination) {
    NorvikCommon::logInstallerLine("Copy source " + source.path() + "; destination: " + destination.path());
    const Base::URL parent = destination.deletingLastPathComponent();
    if (!files().itemExists(parent)) {
        createDirectory(parent, true);
    }
    if (const auto error = files().copyItem(source, destination)) {
        logError(*error);
    }
    setOwnerRecursively(kRootUserId, kWheelGroupId, destination);
}

}  // namespace InstallCommon
