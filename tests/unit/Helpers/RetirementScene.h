#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "FakeListener.h"
#include "Helpers/Retirement.h"
#include "support/FakeMac.h"

/// An installer helper at the end of a list, on a Mac whose launchd answers as a test says.
namespace RetirementTests {

using TestSupport::CallList;
using Result = TestSupport::FakeTaskRunner::Result;

inline const std::string kTools = "/Library/PrivilegedHelperTools/";
inline const std::string kPlists = "/Library/LaunchDaemons/";
inline const std::string kOwn = "com.norvik.InstallerHelper";
inline const std::string kSupport = "com.norvik.SupportPrivilegedHelper";
inline const std::string kBootout = "/bin/launchctl bootout system/";
inline const std::string kPrint = "/bin/launchctl print system/";
inline const std::string kIdleJob = "system/x = {\n\tactive count = 0\n\tstate = not running\n}\n";
inline const std::string kRunningJob = "system/x = {\n\tstate = running\n\tpid = 12\n}\n";

class Retirement : public testing::Test {
  protected:
    Retirement() {
        install(kSupport);
        mac_.tasks.results[kPrint + kSupport].output = kIdleJob;
        mac_.tasks.results[kBootout + kOwn] = {.runsOn = true,
                                               .onLaunch = [this] { mac_.termination.request(); }};
        mac_.dispatch.onWait = [this] { mac_.clock.present += 100'000'000; };
    }

    void install(const std::string& label) {
        mac_.files.addFile(kTools + label);
        mac_.files.addFile(kPlists + label + ".plist");
    }
    void remove(const std::string& label) {
        mac_.files.nodes.erase(kTools + label);
        mac_.files.nodes.erase(kPlists + label + ".plist");
    }
    [[nodiscard]] bool isInstalled(const std::string& label) const {
        return mac_.files.has(kTools + label) && mac_.files.has(kPlists + label + ".plist");
    }
    [[nodiscard]] bool isGone(const std::string& label) const {
        return !mac_.files.has(kTools + label) && !mac_.files.has(kPlists + label + ".plist");
    }

    /// A list that deletes the helper's own tool.
    void runList() {
        retirement_.listBegins();
        end();
    }
    void end() {
        mac_.calls.clear();
        retirement_.listEnds([this] { return anotherWaits_ && anotherWaits_(); });
    }
    [[nodiscard]] CallList launches() const { return mac_.callsOf("launch"); }
    [[nodiscard]] bool launched(const std::string& command) const {
        return !mac_.callsOf("launch", command).empty();
    }

    TestSupport::FakeMac mac_;
    HelperTests::FakeListener listener_;
    Helpers::Retirement retirement_{kOwn, kSupport, listener_};
    std::function<bool()> anotherWaits_;
};

}  // namespace RetirementTests
