// Who may talk to the helpers, and what becomes of those who send nonsense or go away.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ProductMac.h"

namespace {

using namespace SystemTests;
using Lines = std::vector<std::string>;
using testing::AllOf;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kBundle = "/Users/alice/Uninstall Sentrel.app";
const std::string kProgram = kBundle + "/Contents/MacOS/Uninstall Sentrel";

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
    EXPECT_THAT(log, Contains(AllOf(StartsWith("[SNTM Installer] Refused process "),
                                    HasSubstr("_TtC13InstallCommon15CommandConcrete")))
                         .Times(1));
}

TEST(InstallerHelperPeers, ARecordAmongTheCommandsRefusesTheList) {
    HostileMac mac;
    EXPECT_EQ(mac.shell("timeout 3 '" + kProgram + "' record; '" + kProgram + "' good").out,
              "reported Deleting\n");
    EXPECT_TRUE(mac.exists("/tmp/victim"));
    EXPECT_THAT(mac.helperLog(),
                Contains("[SNTM Installer] Refused the list holds something else than commands"));
}

TEST(InstallerHelperPeers, AProgramWithoutTheIdentityIsRefusedWhileTheUninstallationRuns) {
    ProductMac mac({"--installed", "current"});
    mac.put("/tmp/knock.py", R"(
import socket, time
for attempt in range(60):
    try:
        s = socket.socket(socket.AF_UNIX)
        s.connect("/var/run/mach/com.norvik.InstallerHelper")
        s.send(b"\0\0\0\5\2aaaa")
    except OSError:
        pass
    time.sleep(0.1)
)");
    const auto result =
        mac.shell("/usr/bin/python3 /tmp/knock.py & '" + kInstalledUninstaller + "' --silent; wait");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(mac.helperLog(),
                Contains(AllOf(StartsWith("[SNTM Installer] Refused process "),
                               EndsWith(" of user 0: its code has no identity that can be trusted"))));
    EXPECT_EQ(mac.uninstallerLog(), kSuccess);
}

TEST(InstallerHelperPeers, AnIdentityThatAUserWroteHimselfIsNotTrusted) {
    HostileMac mac;
    mac.shell("chown -R alice '" + kBundle + "'");
    const auto result = mac.shell("timeout 5 '" + kProgram + "' good");
    EXPECT_NE(result.out, "reported Deleting\n");
    EXPECT_TRUE(mac.exists("/tmp/target"));
}

TEST(InstallerHelperPeers, AClientThatGoesAwayInTheMiddleLeavesAListThatIsFinished) {
    ProductMac mac({"--installed", "current"});
    const auto result = mac.shell("'" + kInstalledUninstaller + "' --silent & sleep 2; kill -9 $!; sleep 14");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(mac.uninstallerLog(), Lines{kSuccess[0]});
    mac.expectClean();
}

}  // namespace
