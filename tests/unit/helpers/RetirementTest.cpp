#include "Helpers/Retirement.h"

#include <gtest/gtest.h>

#include "support/FakeMac.h"

namespace {

const std::string kTools = "/Library/PrivilegedHelperTools/";
const std::string kPlists = "/Library/LaunchDaemons/";
const std::string kOwn = "com.norvik.InstallerHelper";

class Retirement : public testing::Test {
  protected:
    void install(const std::string& label) {
        mac_.files.addFile(kTools + label);
        mac_.files.addFile(kPlists + label + ".plist");
    }

    TestSupport::FakeMac mac_;
};

TEST_F(Retirement, TakesEveryToolWhoseFilesAreGoneOutOfLaunchdTheOwnLast) {
    Helpers::retireRemovedTools(kOwn);
    EXPECT_EQ(
        mac_.callsOf("launch "),
        (TestSupport::CallList{"launch /bin/launchctl bootout system/com.norvik.DiagnosticUtilityHelper",
                               "launch /bin/launchctl bootout system/com.norvik.SolutionUpdaterHelper",
                               "launch /bin/launchctl bootout system/com.norvik.UninstallerHelper",
                               "launch /bin/launchctl bootout system/com.norvik.InstallerHelper"}));
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

TEST_F(Retirement, LeavesEverythingWhileTheOwnToolIsThere) {
    install(kOwn);
    Helpers::retireRemovedTools(kOwn);
    EXPECT_EQ(mac_.callsOf("launch "), TestSupport::CallList());
}

TEST_F(Retirement, LeavesEverythingWhileTheOwnPropertyListIsThere) {
    mac_.files.addFile(kPlists + kOwn + ".plist");
    Helpers::retireRemovedTools(kOwn);
    EXPECT_EQ(mac_.callsOf("launch "), TestSupport::CallList());
}

TEST_F(Retirement, LeavesAToolThatIsStillInstalled) {
    install("com.norvik.SolutionUpdaterHelper");
    Helpers::retireRemovedTools(kOwn);
    EXPECT_EQ(
        mac_.callsOf("launch "),
        (TestSupport::CallList{"launch /bin/launchctl bootout system/com.norvik.DiagnosticUtilityHelper",
                               "launch /bin/launchctl bootout system/com.norvik.UninstallerHelper",
                               "launch /bin/launchctl bootout system/com.norvik.InstallerHelper"}));
}

TEST_F(Retirement, OfOneselfRemovesToolAndPropertyListAndThenTheJob) {
    install("com.norvik.SupportPrivilegedHelper");
    Helpers::retireSelf("com.norvik.SupportPrivilegedHelper");
    EXPECT_EQ(mac_.calls,
              (TestSupport::CallList{
                  "remove /Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper",
                  "remove /Library/LaunchDaemons/com.norvik.SupportPrivilegedHelper.plist",
                  "launch /bin/launchctl bootout system/com.norvik.SupportPrivilegedHelper", "wait"}));
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

TEST_F(Retirement, SurvivesALaunchctlThatCannotBeRun) {
    mac_.tasks.notExecutable = {"/bin/launchctl"};
    Helpers::retireSelf("label");
    EXPECT_EQ(mac_.callsOf("wait"), TestSupport::CallList());
}

}  // namespace
