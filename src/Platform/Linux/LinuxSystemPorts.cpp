#include "Platform/Linux/LinuxAuthorization.h"
#include "Platform/Linux/LinuxBundles.h"
#include "Platform/Linux/LinuxDispatch.h"
#include "Platform/Linux/LinuxDistantObjects.h"
#include "Platform/Linux/LinuxFileManager.h"
#include "Platform/Linux/LinuxKernelExtensions.h"
#include "Platform/Linux/LinuxProcessTable.h"
#include "Platform/Linux/LinuxServiceManagement.h"
#include "Platform/Linux/LinuxSystemLog.h"
#include "Platform/Linux/LinuxXPC.h"
#include "Platform/Posix/PosixClock.h"
#include "Platform/Posix/PosixCodeModules.h"
#include "Platform/Posix/PosixPrivateCopies.h"
#include "Platform/Posix/PosixTaskRunner.h"
#include "Platform/Posix/PosixTermination.h"
#include "Platform/Posix/PosixUsers.h"
#include "Platform/SystemPorts.h"

namespace Platform {

namespace {

struct Services {
    Linux::LinuxSystemLog log;
    Linux::LinuxFileManager files;
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

    const SystemPorts ports{
        log, files,   tasks, processes, users,          kernelExtensions, authorization, serviceManagement,
        xpc, bundles, clock, dispatch,  distantObjects, codeModules,      privateCopies, termination};
};

}  // namespace

const SystemPorts& createSystemPorts() {
    // Never destroyed: other threads may still use the services while the process ends.
    static const Services* const services = new Services;
    return services->ports;
}

}  // namespace Platform
