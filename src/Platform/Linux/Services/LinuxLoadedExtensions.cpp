#include "Platform/Linux/Services/LinuxLoadedExtensions.h"

namespace Platform::Linux {

std::optional<bool> LinuxLoadedExtensions::isLoaded(const std::string& bundleIdentifier, Error& error) {
    const auto reply = services().request({"is-kext-loaded", bundleIdentifier});
    if (reply && reply->size() == 1 && (reply->front() == "0" || reply->front() == "1")) {
        return reply->front() == "1";
    }
    error = {"the kernel extension " + bundleIdentifier + " could not be looked up: launchd does not answer",
             0};
    return std::nullopt;
}

}  // namespace Platform::Linux
