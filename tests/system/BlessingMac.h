#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Support/PropertyList.h"
#include "support/SimulatedMac.h"

/// A simulated Mac with an application that has its helper blessed.
namespace BlessingTests {

using TestSupport::ProgramResult;
using TestSupport::SimulatedMac;

inline constexpr const char* kLabel = "com.norvik.InstallerHelper";
inline constexpr const char* kClient = "/Applications/Client.app/Contents/MacOS/client";
inline constexpr const char* kTool = "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper";

inline constexpr const char* kRefused =
    "The operation couldn\u2019t be completed. (CFErrorDomainLaunchd error ";

inline constexpr const char* kReports =
    "commandExecutingDidExecuteCommand:withWeight: 1\ncommandExecutingDidExecuteCommand:withWeight: 2\n"
    "commandExecutingDidExecuteCommand:withWeight: 3\ndone as 0\n\n";

class MacsimBlessing : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(mac_.create().status, 0);
        mac_.putCopy(kClient, SENTREL_FIXTURES "/macsim_client");
        mac_.putCopy(std::string("/Applications/Client.app/Contents/Library/LaunchServices/") + kLabel,
                     SENTREL_FIXTURES "/macsim_helper");
        putInfo("com.example.client", kLabel);
    }

    void putInfo(const std::string& identifier, const std::string& helper) {
        const Simulator::PropertyList info{
            {"CFBundleIdentifier", identifier},
            {"SMPrivilegedExecutables", {{helper, "identifier \"" + helper + "\""}}}};
        mac_.put("/Applications/Client.app/Contents/Info.plist",
                 Simulator::writePropertyList(info, Simulator::PropertyListForm::xml));
    }

    ProgramResult client(std::vector<std::string> steps, const std::vector<std::string>& faults = {},
                         const std::string& user = "root") {
        steps.insert(steps.begin(), kClient);
        return mac_.run(faults, steps, user);
    }

    SimulatedMac mac_;
};

}  // namespace BlessingTests
