#include <gtest/gtest.h>
#include <sys/stat.h>

#include "BlessingMac.h"
#include "Support/PropertyList.h"
#include "support/SimulatedMac.h"

namespace {

using BlessingTests::kClient;
using BlessingTests::kLabel;
using BlessingTests::kRefused;
using BlessingTests::kReports;
using BlessingTests::kTool;
using BlessingTests::MacsimBlessing;
using TestSupport::ProgramResult;
using TestSupport::SimulatedMac;

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
