// sentrel-inspect scan and verify on simulated Macs: every exit status, with what makes it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "LookedAtMac.h"

namespace InspectTest {

namespace {

using TestSupport::ProgramResult;
using Lines = std::vector<std::string>;

const std::string kTool = "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper";
const std::string kUninstaller = "Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel";
const std::string kInstalledUninstaller = "/Applications/Sentrel.app/Contents/Applications/" + kUninstaller;
constexpr const char* kKext = "/Library/Extensions/FileAccessFilter.kext";
constexpr const char* kKextInfo =
    "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>com.norvik.kext.FileAccessFilter"
    "</string></dict></plist>";

void expectResult(const ProgramResult& result, int status, const std::string& output) {
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.out, output);
    EXPECT_EQ(result.err, "");
}

TEST(ScanOfAMac, FindsNothingWhereNothingIs) {
    LookedAtMac mac({"--empty"});
    expectResult(mac.inspect({"verify"}), 0, "result: nothing, 0 found, exit status 0\n");
    expectResult(mac.inspect({"verify"}, "alice"), 0, "result: nothing, 0 found, exit status 0\n");
    expectResult(mac.inspect({"scan"}), 0, "Nothing of Sentrel is on this Mac.\n");
    expectResult(mac.inspectFolder({"scan", "--removal-lines"}), 0, "");
}

TEST(ScanOfAMac, TellsTheGenerationsApart) {
    for (const char* generation :
         {"norvik-apps", "antivir", "antivirus", "snt-plain", "snt-folder", "snt-bundle", "current"}) {
        const LookedAtMac mac({"--installed", generation});
        const ProgramResult result = mac.inspectFolder({"scan", "--json"});
        EXPECT_EQ(result.status, 3) << generation;
        const auto found = jsonOf(result);
        EXPECT_EQ(found.at("generations"), nlohmann::json::array({generation}));
        EXPECT_EQ(
            found.at("notLookedAt"),
            nlohmann::json::array({"jobs", "processes", "loaded kernel extensions", "launchd overrides"}));
        EXPECT_EQ(found.at("root"), mac.path());
    }
}

TEST(ScanOfAMac, ShowsEverythingOfAnInstallation) {
    LookedAtMac mac({"--installed", "all", "--users", "alice:501,bob:502:logged-out", "--running", "Sentrel",
                     "--version", "6.3/630"});
    const ProgramResult result = mac.inspect({"scan", "--json"});
    EXPECT_EQ(result.status, 3);
    const auto found = jsonOf(result);
    EXPECT_EQ(found.at("verdict"), "installed");
    EXPECT_EQ(found.at("version"), (nlohmann::json{{"short", "6.3"}, {"build", "630"}}));
    EXPECT_EQ(found.at("uninstaller"), "uninstalls");
    EXPECT_EQ(found.at("generations"),
              (nlohmann::json{"norvik-apps", "antivir", "antivirus", "snt-folder", "snt-bundle", "current"}));
    EXPECT_EQ(found.at("loadedExtensions"), nlohmann::json::array({"com.norvik.kext.FileAccessFilter"}));
    EXPECT_EQ(found.at("couldNotLook"), nlohmann::json::array());
    EXPECT_EQ(found.at("leftovers"), nlohmann::json::array());
    const auto state = mac.state();
    Lines expectedJobs;
    for (const auto& [domain, jobs] : state.at("jobs").items()) {
        for (const auto& job : jobs) {
            expectedJobs.push_back(domain + "/" + job.at("label").get<std::string>());
        }
    }
    Lines jobs;
    for (const auto& job : found.at("jobs")) {
        jobs.push_back(job.at("domain").get<std::string>() + "/" + job.at("label").get<std::string>());
        EXPECT_EQ(job.at("filesAreGone"), false);
    }
    std::sort(jobs.begin(), jobs.end());
    std::sort(expectedJobs.begin(), expectedJobs.end());
    EXPECT_EQ(jobs, expectedJobs);
    // Everything that macsim calls a path of the product is named, or lies in the console.
    const Lines items = column(found.at("items"), "path");
    for (const auto& path : state.at("productPaths")) {
        const auto text = path.get<std::string>();
        EXPECT_TRUE(text.starts_with("/Applications/Sentrel.app/") ||
                    std::find(items.begin(), items.end(), text) != items.end())
            << text;
    }
    Lines processes = column(found.at("processes"), "path");
    EXPECT_NE(
        std::find(processes.begin(), processes.end(), "/Applications/Sentrel.app/Contents/MacOS/Sentrel"),
        processes.end());
    EXPECT_EQ(mac.inspect({"verify"}, "alice").status, 3);
}

TEST(ScanOfAMac, KeepsWithinAHundredColumnsAndColoursOnATerminalOnly) {
    const LookedAtMac mac({"--installed", "all"});
    const std::string plain = mac.inspectFolder({"scan"}).out;
    std::istringstream lines(plain.substr(plain.find('\n')));
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 100U) << line;
    }
    EXPECT_EQ(plain.find('\x1b'), std::string::npos);
    const auto onTerminal = [&mac](const std::string& environment) {
        return TestSupport::runProgram({"env", "-u", "COLUMNS", environment, "script", "-qec",
                                        INSPECT_PROGRAM " scan --root '" + mac.path() + "' 2>/dev/null",
                                        "/dev/null"});
    };
    const ProgramResult coloured = onTerminal("TERM=xterm");
    EXPECT_EQ(coloured.status, 3);
    EXPECT_TRUE(coloured.out.starts_with("\x1b[32mSentrel ")) << coloured.out.substr(0, 100);
    EXPECT_EQ(onTerminal("TERM=dumb").out.find('\x1b'), std::string::npos);
    ::setenv("TERM", "xterm", 1);
    EXPECT_EQ(onTerminal("NO_COLOR=1").out.find('\x1b'), std::string::npos);
    EXPECT_TRUE(onTerminal("NO_COLOR=").out.starts_with("\x1b[32m"));
}

TEST(ScanOfAMac, SaysThatANewerVersionIsRefused) {
    const LookedAtMac mac({"--installed", "current", "--version", "99.1/1"});
    const ProgramResult result = mac.inspectFolder({"scan"});
    EXPECT_EQ(result.status, 3);
    EXPECT_TRUE(result.out.starts_with("Sentrel 99.1 (1) is installed in " + mac.path() +
                                       ".\nThe uninstaller 6.4 (640) refuses it: it is newer.\n"))
        << result.out;
}

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
    const std::string started = "/opt/TrayMenu 1000 & sentrel-inspect verify";
    // Its program lies elsewhere, which root sees.
    expectResult(mac.shell(started), 0, "result: nothing, 0 found, exit status 0\n");
    const ProgramResult asAlice = mac.run(
        {}, {"sh", "-c", "/opt/TrayMenu 1000 & setpriv --reuid 501 --clear-groups sentrel-inspect verify"});
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

TEST(ScanOfAFolder, IsRefusedUnlessItHoldsAMac) {
    LookedAtMac mac({"--empty"});
    const auto scan = [](const std::string& root) {
        return TestSupport::runProgram({INSPECT_PROGRAM, "scan", "--root", root});
    };
    const auto refused = [&](const std::string& root, const std::string& line) {
        const ProgramResult result = scan(root);
        EXPECT_EQ(result.status, 1) << root;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "sentrel-inspect: " + line + "\n");
    };
    refused("/no/such", "/no/such: is not the root folder of a Mac: it has no folder Applications");
    refused(mac.path("/Applications"),
            mac.path("/Applications") + ": is not the root folder of a Mac: it has no folder Applications");
    mac.put("/half/Applications/x", "");
    refused(mac.path("/half"),
            mac.path("/half") + ": is not the root folder of a Mac: it has no folder Library");
    EXPECT_EQ(scan(mac.path() + "//").status, 0);
}

TEST(ScanOfAFolder, DoesNotFollowALinkOutOfIt) {
    LookedAtMac mac({"--empty"});
    mac.put("/elsewhere/SNT/x", "");
    ASSERT_EQ(mac.shell("ln -s /elsewhere /Applications/NORVIK").status, 0);
    const ProgramResult result = mac.inspectFolder({"verify"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.out.find("is a link\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("found: link /Applications/NORVIK\n"), std::string::npos) << result.out;
}

TEST(OverridesOfAMac, AreShownAndDoNotCount) {
    LookedAtMac mac({"--empty", "--users", "alice:501"});
    const ProgramResult result = mac.shell(
        "launchctl disable system/com.norvik.fileaccessd; launchctl enable gui/501/com.norvik.Agent; "
        "launchctl disable system/com.example; sentrel-inspect scan");
    expectResult(result, 0,
                 "Nothing of Sentrel is on this Mac.\n"
                 "\n"
                 "Launchd overrides (launchd keeps them; they do no harm)\n"
                 "  system/com.norvik.fileaccessd, disabled\n"
                 "  gui/501/com.norvik.Agent, enabled\n");
}

}  // namespace

}  // namespace InspectTest
