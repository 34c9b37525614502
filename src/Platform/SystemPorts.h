#pragma once

#include "Platform/Authorization.h"
#include "Platform/Bundles.h"
#include "Platform/Clock.h"
#include "Platform/CodeModules.h"
#include "Platform/Dispatch.h"
#include "Platform/DistantObjects.h"
#include "Platform/FileManager.h"
#include "Platform/KernelExtensions.h"
#include "Platform/Port.h"
#include "Platform/PrivateCopies.h"
#include "Platform/ProcessTable.h"
#include "Platform/ServiceManagement.h"
#include "Platform/StandardFolders.h"
#include "Platform/SystemLog.h"
#include "Platform/TaskRunner.h"
#include "Platform/Termination.h"
#include "Platform/Users.h"
#include "Platform/XPC.h"

namespace Platform {

/// Every service of the Mac that the program uses, one reference each. The referred objects outlive the
/// struct. Each port has to be named when a set is made, if only as `nullptr`: none is forgotten.
struct SystemPorts {
    Port<SystemLog> log;
    Port<FileManager> files;
    Port<StandardFolders> folders;
    Port<TaskRunner> tasks;
    Port<ProcessTable> processes;
    Port<Users> users;
    Port<KernelExtensions> kernelExtensions;
    Port<Authorization> authorization;
    Port<ServiceManagement> serviceManagement;
    Port<XPC> xpc;
    Port<Bundles> bundles;
    Port<Clock> clock;
    Port<Dispatch> dispatch;
    Port<DistantObjects> distantObjects;
    Port<CodeModules> codeModules;
    Port<PrivateCopies> privateCopies;
    Port<Termination> termination;

    /// The ports in force. Using them before they were set is a programming error that ends the process.
    [[nodiscard]] static const SystemPorts& current();
    /// Sets them; called once, at the start of `main`. `ports` must outlive the process's use of them.
    static void setCurrent(const SystemPorts* ports);
};

/// The ports that the members of these names in `services` are.
template <typename Services>
[[nodiscard]] SystemPorts portsOf(Services& services) {
    return {.log = services.log,
            .files = services.files,
            .folders = services.folders,
            .tasks = services.tasks,
            .processes = services.processes,
            .users = services.users,
            .kernelExtensions = services.kernelExtensions,
            .authorization = services.authorization,
            .serviceManagement = services.serviceManagement,
            .xpc = services.xpc,
            .bundles = services.bundles,
            .clock = services.clock,
            .dispatch = services.dispatch,
            .distantObjects = services.distantObjects,
            .codeModules = services.codeModules,
            .privateCopies = services.privateCopies,
            .termination = services.termination};
}

/// The real services of the system that the program was built for; made on first use, living until the
/// process ends.
[[nodiscard]] const SystemPorts& createSystemPorts();

}  // namespace Platform
