#pragma once

#include <string>

#include "Platform/SystemPorts.h"
#include "support/Call.h"
#include "support/FakeBundles.h"
#include "support/FakeDispatch.h"
#include "support/FakeFileManager.h"
#include "support/FakePrivateCopies.h"
#include "support/FakeProcesses.h"
#include "support/FakeServices.h"
#include "support/FakeXPC.h"

namespace TestSupport {

/// Sets the ports for as long as it lives and resets everything that a process makes once, so that each test
/// starts like a new process.
class ScopedSystemPorts {
  public:
    explicit ScopedSystemPorts(const Platform::SystemPorts& ports);
    ScopedSystemPorts(const ScopedSystemPorts&) = delete;
    ScopedSystemPorts& operator=(const ScopedSystemPorts&) = delete;
    ~ScopedSystemPorts();
};

/// A Mac whose every service is a fake, in force while it lives.
class FakeMac {
  public:
    FakeMac();

    /// All calls of all services, in order.
    CallList calls;
    FakeSystemLog log;
    FakeFileManager files{calls};
    FakeStandardFolders folders;
    FakeTaskRunner tasks{calls};
    FakeProcessTable processes{calls};
    FakeUsers users{calls};
    FakeKernelExtensions kernelExtensions{calls};
    FakeAuthorization authorization{calls};
    FakeServiceManagement serviceManagement{calls};
    FakeXPC xpc{calls};
    FakeBundles bundles{calls};
    FakeClock clock{calls};
    FakeDispatch dispatch{calls};
    FakeDistantObjects distantObjects{calls};
    FakeCodeModules codeModules{calls};
    FakePrivateCopies privateCopies{calls};
    FakeTermination termination;

    /// The calls of this operation; with `start`, only those whose first operand starts so.
    [[nodiscard]] CallList callsOf(const std::string& operation, const std::string& start = "") const;

  private:
    Platform::SystemPorts ports_;
    ScopedSystemPorts scope_;
};

}  // namespace TestSupport
