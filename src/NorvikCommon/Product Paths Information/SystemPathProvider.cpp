#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"

#include "Platform/SystemPorts.h"

namespace NorvikCommon {

Base::URL SystemPathProvider::daemonsPlists() {
    return Base::URL::fileURL("/Library/LaunchDaemons");
}

Base::URL SystemPathProvider::userAgentsPlists() {
    return Base::URL::fileURL("/Library/LaunchAgents");
}

Base::URL SystemPathProvider::extensions() {
    return Base::URL::fileURL("/Library/Extensions");
}

Base::URL SystemPathProvider::privilegedHelperTools() {
    return Base::URL::fileURL("/Library/PrivilegedHelperTools");
}

Base::URL SystemPathProvider::lsRegisterDatabase() {
    return Base::URL::fileURL(
        "/System/Library/Frameworks/CoreServices.framework/Frameworks/LaunchServices.framework/Support/"
        "lsregister");
}

Base::URL SystemPathProvider::launchctlExecutable() {
    return Base::URL::fileURL("/bin/launchctl");
}

Base::URL SystemPathProvider::localApplications() {
    return Platform::SystemPorts::current().folders->folder(Platform::StandardFolder::applications);
}

Base::URL SystemPathProvider::localApplicationSupport() {
    return Platform::SystemPorts::current().folders->folder(Platform::StandardFolder::applicationSupport);
}

}  // namespace NorvikCommon
