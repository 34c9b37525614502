// Who may talk to the helpers, and the fate of peers that send nonsense or go away.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/InstallerLine.h"
#include "support/ProductMac.h"

namespace {

using TestSupport::installerLine;
using namespace SystemTests;
using Lines = std::vector<std::string>;
using testing::AllOf;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kBundle = "/Users/alice/Uninstall Sentrel.app";
const std::string kProgram = kBundle + "/Contents/MacOS/Uninstall Sentrel";

/// Shell that waits until this stands in the system log.
std::string untilLogged(const std::string& text) {
    return "until grep -qF '" + text + "' /var/log/system.log; do sleep 0.1; done; ";
}

/// A Mac where the program in the uninstaller's bundle is the hostile client.
struct HostileMac : ProductMac {
    HostileMac() : ProductMac({}) {
        putUninstaller("/Users/alice");
        putCopy(kProgram, std::string(SENTREL_FIXTURES) + "/hostile_client");
        put("/tmp/victim", "keep");
        put("/tmp/target", "remove");
    }
};

TEST(InstallerHelperPeers, AListWithAnUnlistedClassIsRefusedWholeAndTheHelperGoesOnServing) {
    HostileMac mac;
    const auto result = mac.shell("'" + kProgram + "' unlisted && '" + kProgram + "' good");
    EXPECT_EQ(result.out, "invalidated\nreported Deleting\n") << result.err;
    EXPECT_TRUE(mac.exists("/tmp/victim"));
    EXPECT_FALSE(mac.exists("/tmp/target"));
    const Lines log = mac.helperLog();
    EXPECT_THAT(log, Contains(AllOf(StartsWith(installerLine("Refused process ")),
                                    HasSubstr("_TtC13InstallCommon15CommandConcrete")))
                         .Times(1));
}

TEST(InstallerHelperPeers, ARecordAmongTheCommandsRefusesTheList) {
    HostileMac mac;
    EXPECT_EQ(mac.shell("'" + kProgram + "' record & " + untilLogged("Refused a list") + "kill $!; '" +
                        kProgram + "' good")
                  .out,
              "reported Deleting\n");
    EXPECT_TRUE(mac.exists("/tmp/victim"));
    EXPECT_THAT(mac.helperLog(),
                Contains(installerLine("Refused a list: it contains an object that is not a command")));
}

TEST(InstallerHelperPeers, AProgramWithoutTheIdentityIsRefusedWhileTheUninstallationRuns) {
    ProductMac mac({"--installed", "current"});
    mac.put("/tmp/knock.py", R"(
import os, socket, time
open("/tmp/knocks", "w").close()
while not os.path.exists("/tmp/over"):
    try:
        s = socket.socket(socket.AF_UNIX)
        s.connect("/var/run/mach/com.norvik.InstallerHelper")
        s.send(b"\0\0\0\5\2aaaa")
    except OSError:
        pass
    time.sleep(0.1)
)");
    const auto result = mac.shell(
        "/usr/bin/python3 /tmp/knock.py & "
        "until [ -e /tmp/knocks ]; do sleep 0.1; done; '" +
        kInstalledUninstaller + "' --silent; touch /tmp/over; wait");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(mac.helperLog(),
                Contains(AllOf(StartsWith(installerLine("Refused process ")),
                               EndsWith(" of user 0: its code has no identity that can be trusted"))));
    EXPECT_EQ(mac.uninstallerLog(), kSuccess);
}

TEST(InstallerHelperPeers, AnIdentityThatAUserWroteIsNotTrusted) {
    HostileMac mac;
    mac.shell("chown -R alice '" + kBundle + "'");
    const auto result = mac.shell("timeout 5 '" + kProgram + "' good");
    EXPECT_NE(result.out, "reported Deleting\n");
    EXPECT_TRUE(mac.exists("/tmp/target"));
}

TEST(InstallerHelperPeers, AClientThatGoesAwayInTheMiddleLeavesAListThatIsFinished) {
    ProductMac mac({"--installed", "current"});
    const auto result =
        mac.shell("'" + kInstalledUninstaller + "' --silent & " + untilLogged("com.norvik.InstallerHelper[") +
                  "kill -9 $!; while launchctl print system/com.norvik.InstallerHelper >/dev/null "
                  "2>&1; do sleep 0.1; done");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(mac.uninstallerLog(), Lines{kSuccess[0]});
    mac.expectClean();
}

TEST(InstallerHelperLog, NoNameCanForgeALine) {
    HostileMac mac;
    mac.put("/tmp/a\n[SNTM Installer] Uninstallation finished.", "");
    EXPECT_EQ(mac.shell("'" + kProgram + "' forged").out, "reported Deleting\n");
    EXPECT_THAT(mac.helperLog(),
                Contains(installerLine("Removed at /tmp/a\\x0a[SNTM Installer] Uninstallation finished.")));
    EXPECT_THAT(mac.log(), testing::Each(testing::Not(StartsWith("[SNTM Installer]"))));
}

TEST(InstallerHelperLog, HasTheLastWordsOfAHelperThatCannotRunLaunchctl) {
    ProductMac mac({"--installed", "current"});
    std::filesystem::permissions(mac.path("/bin/launchctl"), std::filesystem::perms(0644));
    const std::string words = "Fatal error: launch path not accessible: /bin/launchctl";
    mac.shell("'" + kInstalledUninstaller + "' --silent & " + untilLogged(words) + "kill $!; wait");
    EXPECT_THAT(mac.helperLog(), Contains(words));
}

}  // namespace
