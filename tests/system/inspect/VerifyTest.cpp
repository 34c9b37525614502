// sentrel-inspect verify on simulated Macs: every exit status, with what makes it.

#include <gtest/gtest.h>

#include <cstdlib>

#include "LookedAtMac.h"
#include "support/ProductMac.h"

namespace InspectTest {

namespace {

using SystemTests::kInstalledUninstaller;
using TestSupport::ProgramResult;

const std::string kTool = "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper";
const std::string kUninstaller = "Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel";
constexpr const char* kKext = "/Library/Extensions/FileAccessFilter.kext";
constexpr const char* kKextInfo =
    "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>com.norvik.kext.FileAccessFilter"
    "</string></dict></plist>";

TEST(VerifyOfAMac, FindsNothingAfterAnUninstallation) {
    LookedAtMac mac({"--installed", "all", "--running", "all"});
    mac.putCopy("/usr/local/bin/before", INSPECT_PROGRAM);
    const ProgramResult result =
        mac.shell("'" + kInstalledUninstaller + "' --silent 2>/dev/null; sentrel-inspect verify --wait 120");
    expectResult(result, 0, "result: nothing, 0 found, exit status 0\n");
    EXPECT_EQ(mac.inspectFolder({"verify"}).status, 0);
}

TEST(VerifyOfAMac, FindsWhatARefusedRunLeavesAndTheLinesTakeItAway) {
    LookedAtMac mac({"--empty"});
    ASSERT_EQ(TestSupport::runProgram({"cp", "-R", SENTREL_BINARIES "/Uninstall Sentrel.app",
                                       mac.path("/Volumes/Uninstall Sentrel.app")})
                  .status,
              0);
    const ProgramResult result = mac.shell("'/Volumes/" + kUninstaller +
                                           "' --silent 2>/dev/null\n"
                                           "sentrel-inspect verify --wait 120 | grep InstallerHelper; "
                                           "sentrel-inspect verify >/dev/null; echo $?\n"
                                           "sudo() { \"$@\"; }\n"
                                           "sentrel-inspect scan --removal-lines >/tmp/lines; . /tmp/lines\n"
                                           "sentrel-inspect verify");
    expectResult(result, 0,
                 "found: file " + kTool +
                     "\n"
                     "found: file /Library/LaunchDaemons/com.norvik.InstallerHelper.plist\n"
                     "found: job system/com.norvik.InstallerHelper, not running\n"
                     "4\n"
                     "result: nothing, 0 found, exit status 0\n");
}

TEST(VerifyOfAMac, KnowsThatOnlyARestartIsMissing) {
    LookedAtMac mac({"--empty"});
    mac.put(std::string(kKext) + "/Contents/Info.plist", kKextInfo);
    expectResult(mac.shell(std::string("rm -r ") + kKext + "; sentrel-inspect verify"), 5,
                 "found: loaded kernel extension com.norvik.kext.FileAccessFilter\n"
                 "result: restart, 1 found, exit status 5\n");
    // After it, nothing is there.
    EXPECT_EQ(mac.inspect({"verify"}).status, 0);
}

TEST(VerifyOfAMac, KnowsAJobWhoseFilesAreGone) {
    LookedAtMac mac({"--empty"});
    const std::string plist = "/Library/LaunchDaemons/com.norvik.fileaccessd.plist";
    mac.putJob(plist, "com.norvik.fileaccessd", "/usr/local/bin/daemon", "exit 0");
    expectResult(
        mac.shell("sentrel-inspect verify; rm /usr/local/bin/daemon; sentrel-inspect verify; rm " + plist +
                  "; sentrel-inspect verify; launchctl bootout system/com.norvik.fileaccessd; "
                  "sentrel-inspect verify"),
        0,
        "found: file " + plist +
            "\nfound: job system/com.norvik.fileaccessd, not running\n"
            "result: leftovers, 2 found, exit status 4\n"
            "found: file " +
            plist +
            "\nfound: job system/com.norvik.fileaccessd, not running\n"
            "result: leftovers, 2 found, exit status 4\n"
            "found: job system/com.norvik.fileaccessd, not running, its files are gone\n"
            "result: restart, 1 found, exit status 5\n"
            "result: nothing, 0 found, exit status 0\n");
}

TEST(VerifyOfAMac, WaitsUntilTheHelperHasFinished) {
    LookedAtMac mac({"--empty"});
    mac.putJob("/Library/LaunchDaemons/com.norvik.InstallerHelper.plist", "com.norvik.InstallerHelper", kTool,
               "read line </tmp/finish");
    // The helper ends when the first second has been waited.
    const ProgramResult result = mac.shell(
        "mkfifo /tmp/finish; launchctl kickstart system/com.norvik.InstallerHelper\n"
        "sentrel-inspect verify | grep -c 'running as process'\n"
        "(sleep 1; echo >/tmp/finish) &\n"
        "sentrel-inspect verify --wait 120");
    expectResult(result, 4,
                 "1\n"
                 "found: file " +
                     kTool +
                     "\n"
                     "found: file /Library/LaunchDaemons/com.norvik.InstallerHelper.plist\n"
                     "found: job system/com.norvik.InstallerHelper, not running\n"
                     "result: leftovers, 3 found, exit status 4\n");
}

TEST(VerifyOfAMac, NeverSaysNothingWhereAUserMayNotLook) {
    LookedAtMac mac({"--empty", "--users", "alice:501"});
    ASSERT_EQ(mac.shell("mkdir -m 700 -p /Applications/NORVIK/SNT; chmod 700 /Applications/NORVIK").status,
              0);
    const ProgramResult asAlice = mac.inspect({"verify"}, "alice");
    EXPECT_EQ(asAlice.status, 1);
    EXPECT_NE(asAlice.out.find(
                  "could not look: \"/Applications/NORVIK/SNT\" could not be looked at: Permission denied\n"),
              std::string::npos)
        << asAlice.out;
    EXPECT_TRUE(asAlice.out.ends_with("result: unknown, 1 found, exit status 1\n")) << asAlice.out;
    expectResult(mac.inspect({"verify"}), 4,
                 "found: folder /Applications/NORVIK/SNT\n"
                 "found: folder /Applications/NORVIK\n"
                 "result: leftovers, 2 found, exit status 4\n");
}

TEST(VerifyOfAMac, NeverSaysNothingWhereAProcessMayBeTheProducts) {
    LookedAtMac mac({"--empty", "--users", "alice:501"});
    mac.putCopy("/opt/TrayMenu", "/bin/sleep");
    const std::string started = LookedAtMac::startOf("/opt/TrayMenu");
    // Its program lies elsewhere, which root sees.
    expectResult(mac.shell(started + "sentrel-inspect verify"), 0,
                 "result: nothing, 0 found, exit status 0\n");
    const ProgramResult asAlice =
        mac.shell(started + "setpriv --reuid 501 --clear-groups sentrel-inspect verify");
    EXPECT_EQ(asAlice.status, 1);
    EXPECT_NE(asAlice.out.find(" is called \"TrayMenu\", but its program could not be looked up\n"),
              std::string::npos)
        << asAlice.out << asAlice.err;
}

TEST(VerifyOfAMac, NeverSaysNothingWhenLaunchdDoesNotAnswer) {
    LookedAtMac mac({"--empty", "--users", "alice:501"});
    expectResult(
        mac.inspect({"verify"}, "root", {"launchctl-fail=print"}), 1,
        "could not look: the jobs in system could not be listed: launchctl failed with status 5: Print "
        "failed: 5: Input/output error\n"
        "could not look: the jobs in gui/501 could not be listed: launchctl failed with status 5: "
        "Print failed: 5: Input/output error\n"
        "result: unknown, 0 found, exit status 1\n");
    expectResult(mac.inspect({"verify"}, "root", {"unreadable-passwd"}), 1,
                 "could not look: the users' jobs could not be listed: the password database names no local "
                 "user\n"
                 "result: unknown, 0 found, exit status 1\n");
}

TEST(VerifyOfAMac, NeverSaysNothingOfAMacThatDoesNotHoldStill) {
    LookedAtMac mac({"--empty", "--users", "alice:501"});
    // Each look asks for the system's jobs once, and so changes what the next one sees.
    const ProgramResult result = mac.shell(
        "cp -L /bin/launchctl /tmp/real; rm /bin/launchctl\n"
        "printf '#!/bin/sh\\n[ \"$1 $2\" = \"print system\" ] && { rmdir /Users/Shared/Norvik || mkdir "
        "/Users/Shared/Norvik; } 2>/dev/null\\nexec /tmp/real \"$@\"\\n' >/bin/launchctl\n"
        "chmod 755 /bin/launchctl; sentrel-inspect verify");
    EXPECT_EQ(result.status, 1) << result.out;
    EXPECT_NE(result.out.find("could not look: this Mac kept changing while it was looked at\n"),
              std::string::npos)
        << result.out;
}

}  // namespace

}  // namespace InspectTest
