#include "Platform/Linux/Bundles/LinuxBundles.h"
#include "Platform/Linux/Files/LinuxStandardFolders.h"
#include "Platform/Linux/Processes/LinuxDispatch.h"
#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Platform/Linux/Processes/LinuxSystemLog.h"
#include "Platform/Linux/Services/LinuxServices.h"
#include "Platform/Linux/XPC/LinuxXPC.h"
#include "Platform/Posix/PosixClock.h"
#include "Platform/Posix/PosixCodeModules.h"
#include "Platform/Posix/PosixFileManager.h"
#include "Platform/Posix/PosixPrivateCopies.h"
#include "Platform/Posix/PosixTaskRunner.h"
#include "Platform/Posix/PosixTermination.h"
#include "Platform/Posix/PosixUsers.h"
#include "Platform/SystemPorts.h"

namespace Platform {

namespace {

struct Services {
    Linux::LinuxSystemLog log;
    Posix::PosixFileManager files;
    Linux::LinuxStandardFolders folders;
    Posix::PosixTaskRunner tasks;
    Linux::LinuxProcessTable processes;
    Posix::PosixUsers users;
    Linux::LinuxKernelExtensions kernelExtensions;
    Linux::LinuxAuthorization authorization;
    Linux::LinuxServiceManagement serviceManagement;
    Linux::LinuxXPC xpc;
    Linux::LinuxBundles bundles;
    Posix::PosixClock clock;
    Linux::LinuxDispatch dispatch;
    Linux::LinuxDistantObjects distantObjects;
    Posix::PosixCodeModules codeModules;
    Posix::PosixPrivateCopies privateCopies;
    Posix::PosixTermination termination;

    const SystemPorts ports = portsOf(*this);
};

}  // namespace

const SystemPorts& createSystemPorts() {
    // Never destroyed: other threads may still use the services while the process ends.
    static const Services* const services = new Services;
    return services->ports;
}

}  // namespace Platform
