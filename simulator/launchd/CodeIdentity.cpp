#include "launchd/CodeIdentity.h"

#include <filesystem>

#include <sys/stat.h>

#include "Support/Files.h"
#include "Support/PropertyList.h"
#include "launchd/Caller.h"

namespace Simulator {

namespace {

/// Whether only root can have written the item.
bool isRootsAlone(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && status.st_uid == 0 && !S_ISLNK(status.st_mode) &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

/// Whether the path that a process's executable claims really leads to that executable.
bool runsFrom(pid_t pid, const std::string& executable) {
    struct stat running {};
    struct stat named {};
    return ::stat(("/proc/" + std::to_string(pid) + "/exe").c_str(), &running) == 0 &&
           ::lstat(executable.c_str(), &named) == 0 && running.st_dev == named.st_dev &&
           running.st_ino == named.st_ino;
}

}  // namespace

std::string bundleOfExecutable(const std::string& executable) {
    const std::filesystem::path path(executable);
    const std::filesystem::path contents = path.parent_path().parent_path();
    const std::filesystem::path bundle = contents.parent_path();
    const bool fits = path.parent_path().filename() == "MacOS" && contents.filename() == "Contents" &&
                      bundle.extension() == ".app";
    return fits ? bundle.string() : "";
}

std::optional<std::string> codeIdentifier(pid_t pid) {
    const std::string executable = executableOfProcess(pid).value_or("");
    const std::string bundle = bundleOfExecutable(executable);
    if (bundle.empty() || !runsFrom(pid, executable)) {
        return std::nullopt;
    }
    for (const std::string& path : {bundle, bundle + "/Contents", bundle + "/Contents/MacOS", executable,
                                    bundle + "/Contents/Info.plist"}) {
        if (!isRootsAlone(path)) {
            return std::nullopt;
        }
    }
    const auto bytes = readFile(bundle + "/Contents/Info.plist");
    const auto info = bytes ? parseHostilePropertyList(*bytes) : std::nullopt;
    const std::string identifier = info ? stringOf(*info, "CFBundleIdentifier") : "";
    return identifier.empty() ? std::nullopt : std::optional(identifier);
}

}  // namespace Simulator
