#pragma once

#include "Platform/Authorization.h"
#include "Platform/Bundles.h"
#include "Platform/Clock.h"
#include "Platform/CodeModules.h"
#include "Platform/Dispatch.h"
#include "Platform/DistantObjects.h"
#include "Platform/FileManager.h"
#include "Platform/KernelExtensions.h"
#include "Platform/PrivateCopies.h"
#include "Platform/ProcessTable.h"
#include "Platform/ServiceManagement.h"
#include "Platform/SystemLog.h"
#include "Platform/TaskRunner.h"
#include "Platform/Termination.h"
#include "Platform/Users.h"
#include "Platform/XPC.h"

namespace Platform {

/// Every service of the Mac that the program uses, one reference each. The referred objects outlive the
/// struct.
struct SystemPorts {
    SystemLog& log;
    FileManager& files;
    TaskRunner& tasks;
    ProcessTable& processes;
    Users& users;
    KernelExtensions& kernelExtensions;
    Authorization& authorization;
    ServiceManagement& serviceManagement;
    XPC& xpc;
    Bundles& bundles;
    Clock& clock;
    Dispatch& dispatch;
    DistantObjects& distantObjects;
    CodeModules& codeModules;
    PrivateCopies& privateCopies;
    Termination& termination;

    /// The ports in force. Using them before they were set is a programming error that ends the process.
    [[nodiscard]] static const SystemPorts& current();
    /// Sets them; called once, at the start of `main`. `ports` must outlive the process's use of them.
    static void setCurrent(const SystemPorts* ports);
};

/// The real services of the system that the program was built for; made on first use, living until the
/// process ends.
[[nodiscard]] const SystemPorts& createSystemPorts();

}  // namespace Platform
