// The installer helper dies after each third command; the next run finishes what it began.

#include <gtest/gtest.h>

#include "support/InstallerLine.h"
#include "support/ProductMac.h"
#include "support/ProductPlaces.h"

namespace {

using TestSupport::installerLine;
using namespace SystemTests;
using Lines = std::vector<std::string>;

/// A Mac without daemons, whose stopping takes its time.
struct SmallMac : ProductMac {
    SmallMac()
        : ProductMac({"--installed", "norvik-apps", "--installed", "snt-folder", "--users", "alice:501",
                      "--running", "View Logs"}) {
        putUninstaller("/Users/alice/Downloads");
    }

    /// An uninstallation whose helper dies after that many commands; the uninstaller is not left to wait for
    /// the end that never comes.
    void uninstallUntil(int commands) {
        put("/tmp/die.sh", "'" + kElsewhere + "' --silent &\n" +
                               "until grep -q 'Job com.norvik.InstallerHelper was ended by signal 9' "
                               "/var/log/system.log; do sleep 0.05; done\n"
                               "kill -9 $!\n");
        const auto result = run({"helper-exit-after=" + std::to_string(commands)}, {"sh", "/tmp/die.sh"});
        ASSERT_EQ(result.status, 0) << result.err;
    }

    void uninstallWhole() { ASSERT_EQ(run({}, {kElsewhere, "--silent"}).status, 0); }
};

class DyingHelper : public testing::TestWithParam<int> {};

TEST_P(DyingHelper, LeavesARunThatTheNextFinishes) {
    SmallMac mac;
    mac.uninstallUntil(GetParam());
    EXPECT_TRUE(mac.exists("/Library/Application Support/NORVIK/SNT"));
    mac.uninstallWhole();
    EXPECT_EQ(mac.uninstallerLog().back(), installerLine("Uninstallation finished."));
    mac.expectClean();
    EXPECT_FALSE(mac.exists("/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper"));
    EXPECT_FALSE(mac.exists("/Library/LaunchDaemons/com.norvik.SupportPrivilegedHelper.plist"));
}

INSTANTIATE_TEST_SUITE_P(AfterEachThirdCommand, DyingHelper, testing::Range(3, 73, 3));

TEST(HelperThatDiedLate, AfterTheLastReportLeavesNothingToDo) {
    SmallMac mac;
    ASSERT_EQ(mac.run({"helper-exit-after=75"}, {kElsewhere, "--silent"}).status, 0);
    EXPECT_EQ(mac.uninstallerLog().back(), installerLine("Uninstallation finished."));
    mac.expectClean();
}

// The folder whose presence says that the product is installed goes with the last command but one.
TEST(HelperThatDiedLate, AfterTheLastCommandButOneLeavesTheToolsToWhoeverReadsTheDocuments) {
    SmallMac mac;
    mac.uninstallUntil(74);
    mac.uninstallWhole();
    const Lines log = mac.uninstallerLog();
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[log.size() - 2], "Antivirus cannot be uninstalled");
    EXPECT_EQ(log.back(), installerLine("Uninstallation failed."));
    namespace Places = TestSupport::ProductPlaces;
    for (const std::string& path : Places::everything()) {
        const bool isTool = path.find("Helper") != std::string::npos;
        EXPECT_EQ(mac.exists(path), isTool) << path;
    }
}

}  // namespace
