// sentrel-inspect scan on simulated Macs: every exit status, with what makes it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "LookedAtMac.h"

namespace InspectTest {

namespace {

using TestSupport::ProgramResult;
using Lines = std::vector<std::string>;

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
