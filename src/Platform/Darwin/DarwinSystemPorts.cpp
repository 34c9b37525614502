#include "Platform/Darwin/DarwinAuthorization.h"
#include "Platform/Darwin/DarwinBundles.h"
#include "Platform/Darwin/DarwinClock.h"
#include "Platform/Darwin/DarwinDispatch.h"
#include "Platform/Darwin/DarwinDistantObjects.h"
#include "Platform/Darwin/DarwinKernelExtensions.h"
#include "Platform/Darwin/DarwinProcessTable.h"
#include "Platform/Darwin/DarwinServiceManagement.h"
#include "Platform/Darwin/DarwinStandardFolders.h"
#include "Platform/Darwin/DarwinSystemLog.h"
#include "Platform/Darwin/XPC/DarwinXPC.h"
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
    Darwin::DarwinSystemLog log;
    Posix::PosixFileManager files;
    Darwin::DarwinStandardFolders folders;
    Posix::PosixTaskRunner tasks;
    Darwin::DarwinProcessTable processes;
    Posix::PosixUsers users;
    Darwin::DarwinKernelExtensions kernelExtensions;
    Darwin::DarwinAuthorization authorization;
    Darwin::DarwinServiceManagement serviceManagement;
    Darwin::DarwinXPC xpc;
    Darwin::DarwinBundles bundles;
    Darwin::DarwinClock clock;
    Darwin::DarwinDispatch dispatch;
    Darwin::DarwinDistantObjects distantObjects;
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
