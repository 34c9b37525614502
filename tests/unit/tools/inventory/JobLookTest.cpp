#include "Look.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "InspectedMac.h"

namespace InspectUnitTests {

namespace {

using Inventory::JobOverride;
using Inventory::RegisteredJob;
using Lines = std::vector<std::string>;

class JobLook : public testing::Test {
  protected:
    InspectedMac mac;
};

TEST_F(JobLook, FindsTheProductsJobsInAllDomains) {
    const std::string plist = "/Library/LaunchAgents/com.norvik.TrayMenu.plist";
    mac.files.add(plist);
    mac.addJob("system", "com.example.other");
    mac.addJob("system", "com.norvik.fileaccessd",
               "\tpath = /Library/LaunchDaemons/gone.plist\n\tprogram = /Applications/gone\n");
    mac.addJob("gui/501", "com.norvik.TrayMenu", "\tpath = " + plist + "\n\tpid = 12\n");
    EXPECT_EQ(mac.look().jobs,
              (std::vector<RegisteredJob>{{"system", "com.norvik.fileaccessd", std::nullopt,
                                           "/Library/LaunchDaemons/gone.plist", "/Applications/gone", true},
                                          {"gui/501", "com.norvik.TrayMenu", 12, plist, "", false}}));
}

TEST_F(JobLook, TakesAJobWhoseProgramIsThereForAliveWithoutItsPropertyList) {
    mac.files.add("/opt/program");
    mac.addJob("system", "com.norvik.Agent", "\tpath = /gone.plist\n\tprogram = /opt/program\n");
    EXPECT_FALSE(mac.look().jobs.at(0).filesAreGone);
}

TEST_F(JobLook, DoesNotCallAFileGoneThatItCouldNotLookAt) {
    mac.files.failures["/secret/program"] = {"secret", EACCES};
    mac.addJob("system", "com.norvik.Agent", "\tprogram = /secret/program\n");
    const auto found = mac.look();
    EXPECT_FALSE(found.jobs.at(0).filesAreGone);
    EXPECT_EQ(found.blind, Lines{"secret"});
}

TEST_F(JobLook, PassesOverAJobThatGoesWhileItLooks) {
    mac.addJob("system", "com.norvik.Agent");
    mac.answer("print system/com.norvik.Agent", "", 113, "Could not find service\n");
    const auto found = mac.look();
    EXPECT_TRUE(found.jobs.empty());
    EXPECT_EQ(found.blind, Lines{});
}

TEST_F(JobLook, SaysWhyJobsCouldNotBeListed) {
    mac.addJob("gui/501", "com.norvik.Agent");
    mac.answer("print system", "something else\n");
    mac.answer("print gui/501/com.norvik.Agent", "", 5, "Input/output error\nmore\n");
    mac.answer("print gui/502", "", 1);
    const auto found = mac.look();
    EXPECT_EQ(found.blind,
              (Lines{"the jobs in system could not be listed: launchctl's answer has another form than "
                     "expected",
                     "the job gui/501/com.norvik.Agent could not be looked at: launchctl failed with status "
                     "5: Input/output error",
                     "the jobs in gui/502 could not be listed: launchctl failed with status 1"}));
    EXPECT_EQ(found.jobs, (std::vector<RegisteredJob>{{"gui/501", "com.norvik.Agent", {}, "", "", false}}));
}

// The system's own domain is always there.
TEST_F(JobLook, DoesNotTakeAMissingSystemDomainForAnEmptyOne) {
    for (const std::int32_t status : {112, 113, 125}) {
        mac.answer("print system", "", status);
        mac.answer("print gui/502", "", status);
        EXPECT_EQ(mac.look().blind, (Lines{"the jobs in system could not be listed: launchctl failed with "
                                           "status " +
                                           std::to_string(status)}));
    }
}

TEST_F(JobLook, SaysThatLaunchctlCannotBeRunOrWasEnded) {
    mac.mac.tasks.results["/bin/launchctl print system"].reason = Platform::TerminationReason::uncaughtSignal;
    mac.mac.tasks.results["/bin/launchctl print system"].status = 9;
    EXPECT_EQ(mac.look().blind,
              Lines{"the jobs in system could not be listed: launchctl was ended by signal 9"});
    mac.mac.tasks.notExecutable = {"/bin/launchctl"};
    EXPECT_EQ(mac.look().blind, (Lines{"the jobs in system could not be listed: launchctl cannot be run",
                                       "the jobs in gui/501 could not be listed: launchctl cannot be run",
                                       "the jobs in gui/502 could not be listed: launchctl cannot be run"}));
}

TEST_F(JobLook, DoesNotTakeAnEmptyPasswordDatabaseForAMacWithoutUsers) {
    mac.mac.users.entries.clear();
    EXPECT_EQ(mac.look().blind,
              Lines{"the users' jobs could not be listed: the password database names no local user"});
}

TEST_F(JobLook, FindsOverridesOfTheProductsLabels) {
    mac.answer("print-disabled system",
               "disabled services = {\n\"com.norvik.fileaccessd\" => true\n\"com.example\" => true\n}\n");
    mac.answer("print-disabled gui/501", "disabled services = {\n\"com.norvik.Agent\" => enabled\n}\n");
    EXPECT_EQ(mac.look().overrides, (std::vector<JobOverride>{{"system", "com.norvik.fileaccessd", true},
                                                              {"gui/501", "com.norvik.Agent", false}}));
}

TEST_F(JobLook, DoesNotMindThatOverridesCannotBeHad) {
    mac.answer("print-disabled gui/501", "", 64);
    const auto found = mac.look();
    EXPECT_EQ(found.notLookedAt, Lines{"launchd overrides in gui/501"});
    EXPECT_EQ(found.blind, Lines{});
}

TEST(HelperRuns, KnowsTheUninstallersHelpersByJobAndByProcess) {
    Inventory::Inventory inventory;
    EXPECT_FALSE(helperRuns(inventory));
    inventory.jobs = {{"system", "com.norvik.InstallerHelper", std::nullopt, "", "", false},
                      {"system", "com.norvik.fileaccessd", 5, "", "", false}};
    inventory.processes = {{6, 0, kConsole + "/Contents/MacOS/Sentrel"}};
    EXPECT_FALSE(helperRuns(inventory));
    inventory.jobs[0].pid = 7;
    EXPECT_TRUE(helperRuns(inventory));
    inventory.jobs.clear();
    inventory.processes = {{8, 0, "/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper"}};
    EXPECT_TRUE(helperRuns(inventory));
}

}  // namespace

}  // namespace InspectUnitTests
