#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/PropertyList.h"
#include "support/SimulatedMac.h"

namespace {

using TestSupport::ProgramResult;
using TestSupport::SimulatedMac;

constexpr const char* kLabel = "com.norvik.InstallerHelper";
constexpr const char* kClient = "/Applications/Client.app/Contents/MacOS/client";
constexpr const char* kTool = "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper";
constexpr const char* kRefused = "The operation couldn\u2019t be completed. (CFErrorDomainLaunchd error ";
constexpr const char* kReports =
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

TEST_F(MacsimBlessing, InstallsTheToolAndItsJob) {
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel}).out, "granted\nblessed\n");
    struct stat status {};
    ASSERT_EQ(::stat(mac_.path(kTool).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0544U);
    const auto job = Simulator::parsePropertyList(
        mac_.contents("/Library/LaunchDaemons/com.norvik.InstallerHelper.plist"));
    ASSERT_TRUE(job.has_value());
    EXPECT_EQ(job->at("ProgramArguments"), std::vector<std::string>{kTool});
    EXPECT_EQ(mac_.jobs("system"), std::vector<std::string>{kLabel});
}

TEST_F(MacsimBlessing, TheHelperStartsOnDemandAndLeavesWhenIdle) {
    const ProgramResult result = client({"authorize", "2", ",", "bless", kLabel, ",", "call", kLabel});
    EXPECT_EQ(result.out, std::string("granted\nblessed\n") + kReports);
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(mac_.processes().empty());
}

TEST_F(MacsimBlessing, TheHelperStartsAgainAfterItHasLeft) {
    const std::string line = std::string(kClient) + " authorize 2 , bless " + kLabel + " , call " + kLabel +
                             " >/dev/null; sleep 1; " + kClient + " call " + kLabel;
    EXPECT_EQ(mac_.shell(line).out, kReports);
}

TEST_F(MacsimBlessing, AnybodyMayCallTheService) {
    ASSERT_EQ(client({"authorize", "2", ",", "bless", kLabel}).status, 0);
    EXPECT_EQ(client({"call", kLabel}, {}, "alice").out, kReports);
}

TEST_F(MacsimBlessing, ReplacesAnOlderToolOfTheSameLabel) {
    SimulatedMac older;
    ASSERT_EQ(older.create({"--installed", "current", "--without-uninstaller"}).status, 0);
    older.putCopy(kClient, SENTREL_FIXTURES "/macsim_client");
    older.putCopy(std::string("/Applications/Client.app/Contents/Library/LaunchServices/") + kLabel,
                  SENTREL_FIXTURES "/macsim_helper");
    older.put("/Applications/Client.app/Contents/Info.plist",
              mac_.contents("/Applications/Client.app/Contents/Info.plist"));
    EXPECT_EQ(older.run({}, {kClient, "authorize", "2", ",", "bless", kLabel, ",", "call", kLabel}).out,
              std::string("granted\nblessed\n") + kReports);
}

TEST_F(MacsimBlessing, SaysThatAHelperIsCutOffWhenTheWaitIsOver) {
    // The helper leaves after half a second; one that was stopped before stays.
    const std::string line = std::string(kClient) + " authorize 2 , bless " + kLabel +
                             " >/dev/null; until launchctl kickstart system/" + kLabel +
                             "; p=$(launchctl list " + kLabel +
                             " | sed -n 's/.*pid = //p'); [ -n \"$p\" ] && kill -STOP $p; do :; done";
    const ProgramResult result = TestSupport::runProgram(
        {SimulatedMac::macsim(), "run", mac_.path(), "--wait", "0", "--", "/bin/sh", "-c", line});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, std::string("macsim: ") + kLabel +
                              " still runs 0 s after the command and is cut off; --wait SECONDS gives it "
                              "longer\n");
}

/// A helper that was blessed once and is to be blessed again.
class MacsimBlessingAgain : public MacsimBlessing {
  protected:
    /// Blesses, runs `change` in the Mac, and blesses again; whether the tool is another file afterwards.
    bool isReplacedAfter(const std::string& change) {
        const std::string bless = std::string(kClient) + " authorize 2 , bless " + kLabel;
        const std::string show = std::string("; stat -c '%i %z' ") + kTool + "; ";
        const auto result = mac_.shell(bless + show + change + show + bless + show + "launchctl list");
        std::vector<std::string> lines;
        std::istringstream text(result.out);
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "blessed"), 2) << result.out << result.err;
        EXPECT_TRUE(result.out.find(std::string("0\t") + kLabel) != std::string::npos) << result.out;
        const auto second = std::find(lines.rbegin(), lines.rend(), "blessed");
        return second == lines.rend() || *(second + 2) != *(second - 1);
    }
    /// The same when the application carries another version the second time: 10.2.1 is installed.
    bool isReplacedBy(const std::string& version) {
        std::string tool = contents(SENTREL_FIXTURES "/macsim_helper");
        tool.replace(tool.find("10.2.1"), 6, version);
        mac_.put("/tmp/tool", tool, 0755);
        return isReplacedAfter(
            std::string("cp /tmp/tool /Applications/Client.app/Contents/Library/LaunchServices/") + kLabel);
    }
    static std::string contents(const std::string& hostFile) {
        std::ifstream file(hostFile, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

TEST_F(MacsimBlessingAgain, KeepsAWholeHelperOfTheSameVersion) {
    EXPECT_FALSE(isReplacedAfter("true"));
}

TEST_F(MacsimBlessingAgain, KeepsOneOfAHigherVersion) {
    EXPECT_FALSE(isReplacedBy("9.99.9"));
}

TEST_F(MacsimBlessingAgain, KeepsOneThatRunsUndisturbed) {
    const std::string bless = std::string(kClient) + " authorize 2 , bless " + kLabel + "; ";
    const std::string pid = std::string("launchctl list ") + kLabel + " | sed -n 's/.*pid = //p'";
    // The helper leaves after half a second; one that was stopped before stays.
    const auto result = mac_.shell(bless + "until launchctl kickstart system/" + kLabel + "; p=$(" + pid +
                                   "); [ -n \"$p\" ] && kill -STOP $p; do :; done; " + bless + "[ \"$(" +
                                   pid + ")\" = $p ] && echo the same; kill -CONT $p");
    EXPECT_EQ(result.out, "granted\nblessed\ngranted\nblessed\nthe same\n") << result.err;
}

TEST_F(MacsimBlessingAgain, ReplacesALowerVersionByTheNumbersOfIt) {
    EXPECT_TRUE(isReplacedBy("10.3.0"));
}

TEST_F(MacsimBlessingAgain, ReplacesAToolThatIsMissing) {
    EXPECT_TRUE(isReplacedAfter(std::string("rm ") + kTool));
}

TEST_F(MacsimBlessingAgain, ReplacesAToolThatWasChanged) {
    EXPECT_TRUE(isReplacedAfter(std::string("printf x >>") + kTool));
}

TEST_F(MacsimBlessingAgain, ReplacesAToolThatIsNoLongerAProgram) {
    EXPECT_TRUE(isReplacedAfter(std::string("printf x >") + kTool));
}

TEST_F(MacsimBlessingAgain, ReplacesAToolThatOthersMayWrite) {
    EXPECT_TRUE(isReplacedAfter(std::string("chmod o+w ") + kTool));
}

TEST_F(MacsimBlessingAgain, ReplacesAHelperWithoutItsPropertyList) {
    EXPECT_TRUE(isReplacedAfter(std::string("rm /Library/LaunchDaemons/") + kLabel + ".plist"));
}

TEST_F(MacsimBlessingAgain, ReplacesAHelperWithoutItsJob) {
    EXPECT_TRUE(isReplacedAfter(std::string("launchctl bootout system/") + kLabel));
}

TEST_F(MacsimBlessingAgain, WaitsWhileAJobOfTheLabelIsBeingRemoved) {
    mac_.put("/usr/local/bin/stubborn",
             "#!/bin/bash\ntrap 'touch /tmp/asked' TERM\ntouch /tmp/ready\nwhile :; do sleep 0.1; done\n",
             0755);
    const Simulator::PropertyList job{{"Label", kLabel},
                                      {"RunAtLoad", true},
                                      {"ExitTimeOut", 2},
                                      {"ProgramArguments", {"/usr/local/bin/stubborn"}}};
    mac_.put(std::string("/Library/LaunchDaemons/") + kLabel + ".plist",
             Simulator::writePropertyList(job, Simulator::PropertyListForm::xml));
    const auto result =
        mac_.shell(std::string("until [ -e /tmp/ready ]; do sleep 0.1; done; launchctl bootout system/") +
                   kLabel + " & until [ -e /tmp/asked ]; do sleep 0.1; done; " + kClient +
                   " authorize 2 , bless " + kLabel + " , call " + kLabel);
    EXPECT_EQ(result.out, std::string("granted\nblessed\n") + kReports) << result.err;
}

TEST_F(MacsimBlessing, OnlyRootIsAuthorized) {
    for (const char* flags : {"2", "3"}) {
        EXPECT_EQ(client({"authorize", flags, ",", "bless", kLabel}, {}, "alice").out,
                  std::string("denied\n4 ") + kRefused + "4.)\n");
    }
    EXPECT_FALSE(mac_.exists(kTool));
}

TEST_F(MacsimBlessing, AnAuthorizationIsGoodForItsOwnProcessOnly) {
    const std::string line = std::string(kClient) +
                             " raw authorize 2 system.privilege.admin | sed 's/^0.//' >/tmp/t; " + kClient +
                             " raw bless $(cat /tmp/t) " + kLabel;
    EXPECT_EQ(mac_.shell(line).out, std::string("4|") + kRefused + "4.)\n");
    EXPECT_EQ(mac_.contents("/tmp/t").size(), 33U);
}

TEST_F(MacsimBlessing, BothSidesMustNameEachOther) {
    putInfo("com.example.client", "com.example.unrelated");
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel}).out,
              std::string("granted\n3 ") + kRefused + "3.)\n");
    putInfo("com.example.stranger", kLabel);
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel}).out,
              std::string("granted\n3 ") + kRefused + "3.)\n");
    EXPECT_EQ(mac_.messages("launchd"),
              (std::vector<std::string>{"Blessing of com.norvik.InstallerHelper refused: the application's "
                                        "SMPrivilegedExecutables do not name it",
                                        "Blessing of com.norvik.InstallerHelper refused: its "
                                        "SMAuthorizedClients do not name the application"}));
}

TEST_F(MacsimBlessing, RefusesAToolWithoutProperContents) {
    const std::string tool =
        std::string("/Applications/Client.app/Contents/Library/LaunchServices/") + kLabel;
    mac_.put(tool, "#!/bin/sh\n", 0755);
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel}).out,
              std::string("granted\n3 ") + kRefused + "3.)\n");
    std::filesystem::remove(mac_.path(tool));
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel}).out,
              std::string("granted\n6 ") + kRefused + "6.)\n");
    EXPECT_EQ(client({"authorize", "2", ",", "bless", "../../../tmp/x"}).out,
              std::string("granted\n6 ") + kRefused + "6.)\n");
}

TEST_F(MacsimBlessing, RefusesAProgramOutsideAnyApplication) {
    mac_.putCopy("/usr/local/bin/client", SENTREL_FIXTURES "/macsim_client");
    EXPECT_EQ(mac_.run({}, {"client", "authorize", "2", ",", "bless", kLabel}).out,
              std::string("granted\n3 ") + kRefused + "3.)\n");
}

TEST_F(MacsimBlessing, IdentifiesApplicationsThatOnlyRootCanHaveWritten) {
    EXPECT_EQ(client({"identify-self"}).out, "0|com.example.client\n");
    EXPECT_EQ(client({"identify-self"}, {}, "alice").out, "0|com.example.client\n");
    EXPECT_EQ(client({"identify", "1"}).out, "1|\n");
    EXPECT_EQ(client({"identify", "99999"}).out, "1|\n");
    EXPECT_EQ(client({"identify", "nonsense"}).out, "1|\n");
}

TEST_F(MacsimBlessing, IdentifiesNoApplicationThatSomebodyElseMayHaveWritten) {
    ASSERT_EQ(mac_.shell("cp -R /Applications/Client.app ~/Client.app", "alice").status, 0);
    EXPECT_EQ(mac_.run({}, {"/Users/alice/Client.app/Contents/MacOS/client", "identify-self"}).out, "1|\n");
    for (const char* item :
         {"", "/Contents", "/Contents/MacOS", "/Contents/MacOS/client", "/Contents/Info.plist"}) {
        const std::string path = std::string("/Applications/Client.app") + item;
        EXPECT_EQ(mac_.shell("chmod o+w " + path + "; " + kClient + " identify-self; chmod o-w " + path).out,
                  "1|\n")
            << path;
    }
    EXPECT_EQ(client({"identify-self"}).out, "0|com.example.client\n");
}

TEST_F(MacsimBlessing, FaultsOfBlessingAndAuthorizationShowAsErrors) {
    EXPECT_EQ(client({"authorize", "2"}, {"authorization"}).out, "denied\n");
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel}, {"bless-installer"}).out,
              std::string("granted\n2 ") + kRefused + "2.)\n");
    EXPECT_EQ(
        client({"authorize", "2", ",", "bless", "com.norvik.SupportPrivilegedHelper"}, {"bless-support"}).out,
        std::string("granted\n2 ") + kRefused + "2.)\n");
    EXPECT_FALSE(mac_.exists(kTool));
}

TEST_F(MacsimBlessing, ABlessedHelperMayHaveNoService) {
    EXPECT_EQ(
        client({"authorize", "2", ",", "bless", kLabel, ",", "call", kLabel}, {"no-installer-service"}).out,
        "granted\nblessed\nunreachable: No such file or directory\n");
}

TEST_F(MacsimBlessing, TheHelperDiesAfterTheReportAsked) {
    EXPECT_EQ(
        client({"authorize", "2", ",", "bless", kLabel, ",", "call", kLabel}, {"helper-exit-after=2"}).out,
        "granted\nblessed\ncommandExecutingDidExecuteCommand:withWeight: 1\n"
        "commandExecutingDidExecuteCommand:withWeight: 2\n\n");
}

TEST_F(MacsimBlessing, AMuteHelperSaysEverythingButItsReports) {
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel, ",", "call", kLabel}, {"helper-mute"}).out,
              "granted\nblessed\ndone as 0\n\n");
}

TEST_F(MacsimBlessing, TheHelpersPausesTakeTheTimeAsked) {
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel, ",", "call", kLabel},
                     {"helper-mute", "helper-pause=0.3"})
                  .out,
              "granted\nblessed\npaused\ndone as 0\n\n");
}

}  // namespace
