#include <algorithm>

#include <gtest/gtest.h>

#include "support/SimulatedMac.h"

namespace {

using TestSupport::ProgramResult;
using TestSupport::SimulatedMac;

constexpr const char* kDaemonPlist = "/Library/LaunchDaemons/com.example.sleeper.plist";
constexpr const char* kAgentPlist = "/Library/LaunchAgents/com.example.agent.plist";

std::string plist(const std::string& label, const std::string& program, const std::string& more = "") {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist "
           "version=\"1.0\"><dict><key>Label</key><string>" +
           label + "</string><key>ProgramArguments</key><array><string>" + program +
           "</string></array><key>RunAtLoad</key><true/>" + more + "</dict></plist>\n";
}

/// Shell: pid prints the daemon's process id; await waits until a line of shell succeeds; anew succeeds when
/// the daemon is another process than the one given. It asks once: between two questions the daemon can end.
constexpr const char* kFunctions =
    "pid() { launchctl list com.example.sleeper | sed -n 's/.*pid = //p'; }\n"
    "await() { n=0; until eval \"$1\"; do n=$((n+1)); [ $n -gt 20000 ] && return 1; sleep 0.02; done; }\n"
    "anew() { now=$(pid); [ -n \"$now\" ] && [ \"$now\" != \"$1\" ]; }\n";

class MacsimLaunchctl : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(mac_.create().status, 0);
        mac_.put("/usr/local/bin/sleeper", "#!/bin/sh\nexec sleep 1000\n", 0755);
        mac_.put("/usr/local/bin/stubborn",
                 "#!/bin/sh\ntrap 'touch /tmp/asked' TERM\ntouch /tmp/ready\n"
                 "until [ -e /tmp/end ]; do sleep 0.05; done\n",
                 0755);
        mac_.put(kDaemonPlist, plist("com.example.sleeper", "/usr/local/bin/sleeper"));
        mac_.put(kAgentPlist, plist("com.example.agent", "/usr/local/bin/sleeper"));
    }

    void expect(const std::string& line, int status, const std::string& error,
                const std::string& user = "root") {
        const ProgramResult result = mac_.shell(line, user);
        EXPECT_EQ(result.status, status) << line;
        EXPECT_EQ(result.err, error) << line;
    }

    SimulatedMac mac_;
};

TEST_F(MacsimLaunchctl, PrintSucceedsOnlyForARegisteredService) {
    const ProgramResult found = mac_.shell("launchctl print system/com.example.sleeper");
    EXPECT_EQ(found.status, 0);
    EXPECT_NE(found.out.find("state = running"), std::string::npos);
    expect("launchctl print system/com.example.none", 113,
           "Could not find service \"com.example.none\" in domain for system\n");
    expect("launchctl print gui/501/com.example.none", 113,
           "Could not find service \"com.example.none\" in domain for user gui: 501\n");
    expect("launchctl print gui/777/com.example.none", 112, "Could not find domain for user gui: 777\n");
}

TEST_F(MacsimLaunchctl, PrintsWhatWasEnabledAndDisabledByHand) {
    const ProgramResult result = mac_.shell(
        "launchctl print-disabled gui/501; launchctl disable gui/501/com.example.agent; "
        "launchctl enable gui/501/com.example.other; launchctl print-disabled gui/501",
        "alice");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out,
              "\tdisabled services = {\n\t}\n"
              "\tdisabled services = {\n\t\t\"com.example.agent\" => true\n"
              "\t\t\"com.example.other\" => false\n\t}\n");
    expect("launchctl print-disabled gui/777", 112, "Could not find domain for user gui: 777\n");
    const char* const usage =
        "Unrecognized target specifier.\nUsage: launchctl print-disabled <domain-target>\n";
    expect("launchctl print-disabled", 64, usage);
    expect("launchctl print-disabled system/com.example.agent", 64, usage);
}

TEST_F(MacsimLaunchctl, BootoutEndsTheProcessBeforeItReturns) {
    const ProgramResult result = mac_.shell(
        kFunctions + std::string("await '[ $(pgrep -x sleep | wc -l) = 4 ]'; launchctl bootout system ") +
        std::string(kDaemonPlist) + " && pgrep -x sleep | wc -l");
    EXPECT_EQ(result.out, "3\n");
    EXPECT_TRUE(mac_.jobs("system").empty());
}

TEST_F(MacsimLaunchctl, BootoutOfAServiceThatIsNotLoadedFails) {
    expect("launchctl bootout system " + std::string(kDaemonPlist) + "; launchctl bootout system " +
               std::string(kDaemonPlist),
           3, "Boot-out failed: 3: No such process\n");
    expect("launchctl bootout system/com.example.none", 3, "Boot-out failed: 3: No such process\n");
}

TEST_F(MacsimLaunchctl, BootoutNeedsThePropertyListThatItIsGiven) {
    expect("rm " + std::string(kDaemonPlist) + "; launchctl bootout system " + kDaemonPlist, 5,
           "Boot-out failed: 5: Input/output error\n");
}

TEST_F(MacsimLaunchctl, BootoutInAMissingDomainFails) {
    expect("launchctl bootout gui/0 " + std::string(kAgentPlist), 125,
           "Boot-out failed: 125: Domain does not support specified action\n");
}

TEST_F(MacsimLaunchctl, BootoutInProgressIsToldApart) {
    mac_.put(kDaemonPlist, plist("com.example.sleeper", "/usr/local/bin/stubborn",
                                 "<key>ExitTimeOut</key><integer>3600</integer>"));
    expect(kFunctions + std::string("await '[ -e /tmp/ready ]'; launchctl bootout system/com.example.sleeper "
                                    "& await '[ -e /tmp/asked ]'; launchctl bootout "
                                    "system/com.example.sleeper; "
                                    "s=$?; touch /tmp/end; wait; exit $s"),
           36, "Boot-out failed: 36: Operation now in progress\n");
    EXPECT_TRUE(mac_.jobs("system").empty());
}

TEST_F(MacsimLaunchctl, BootoutKillsWhatIgnoresSIGTERM) {
    mac_.put(kDaemonPlist, plist("com.example.sleeper", "/usr/local/bin/stubborn",
                                 "<key>ExitTimeOut</key><integer>1</integer>"));
    expect(
        kFunctions + std::string("await '[ -e /tmp/ready ]'; launchctl bootout system/com.example.sleeper"),
        0, "");
    EXPECT_TRUE(mac_.exists("/tmp/asked"));
    EXPECT_TRUE(mac_.jobs("system").empty());
    for (const std::string& name : mac_.processes()) {
        EXPECT_EQ(name, "sleep") << "an agent's";
    }
}

TEST_F(MacsimLaunchctl, BootstrapOfALoadedServiceFails) {
    expect("launchctl bootstrap system " + std::string(kDaemonPlist), 37,
           "Bootstrap failed: 37: Operation already in progress\n");
}

TEST_F(MacsimLaunchctl, BootstrapLoadsAgainWhatWasBootedOut) {
    expect("launchctl bootout gui/501 " + std::string(kAgentPlist) + " && launchctl bootstrap gui/501 " +
               kAgentPlist,
           0, "");
    EXPECT_EQ(mac_.jobs("gui/501"), std::vector<std::string>{"com.example.agent"});
}

TEST_F(MacsimLaunchctl, BootstrapRefusesAPropertyListThatOthersMayWrite) {
    expect("launchctl bootout system/com.example.sleeper; chmod 666 " + std::string(kDaemonPlist) +
               "; launchctl bootstrap system " + kDaemonPlist,
           122, "Bootstrap failed: 122: Path had bad ownership/permissions\n");
}

TEST_F(MacsimLaunchctl, TheStickyModeOfAStartedPlistIsAccepted) {
    expect("launchctl bootout system/com.example.sleeper; chmod 1204 " + std::string(kDaemonPlist) +
               "; launchctl bootstrap system " + kDaemonPlist,
           0, "");
}

TEST_F(MacsimLaunchctl, ADisabledServiceStaysDisabledOverARestart) {
    ASSERT_EQ(mac_.shell("launchctl disable system/com.example.sleeper").status, 0);
    expect("launchctl bootstrap system " + std::string(kDaemonPlist), 119,
           "Bootstrap failed: 119: Service is disabled\n");
    expect("launchctl enable system/com.example.sleeper && launchctl bootstrap system " +
               std::string(kDaemonPlist),
           0, "");
    EXPECT_EQ(mac_.jobs("system"), std::vector<std::string>{"com.example.sleeper"});
}

TEST_F(MacsimLaunchctl, AUserModifiesOnlyTheOwnDomain) {
    expect("launchctl bootout system/com.example.sleeper", 1, "Boot-out failed: 1: Operation not permitted\n",
           "alice");
    expect("launchctl bootout gui/502/com.example.agent", 1, "Boot-out failed: 1: Operation not permitted\n",
           "alice");
    expect("launchctl bootout gui/501/com.example.agent", 0, "", "alice");
}

TEST_F(MacsimLaunchctl, AgentsRunOncePerLoggedInUserUnderTheirIds) {
    ASSERT_EQ(mac_.run({}, {"true"}).status, 0);
    std::vector<int> uids;
    const auto state = mac_.state();
    for (const auto& process : state.at("processes")) {
        uids.push_back(process.at("uid"));
    }
    std::sort(uids.begin(), uids.end());
    EXPECT_EQ(uids, (std::vector<int>{0, 501, 502, 503}));
}

TEST_F(MacsimLaunchctl, KickstartAndKillReachTheProcess) {
    const ProgramResult result =
        mac_.shell(std::string(kFunctions) +
                   "a=$(pid); launchctl kickstart -k system/com.example.sleeper; "
                   "await 'anew $a' || exit 1; "
                   "launchctl kill KILL system/com.example.sleeper; await '[ -z \"$(pid)\" ]'");
    EXPECT_EQ(result.status, 0) << result.err;
}

TEST_F(MacsimLaunchctl, RemoveForgetsAJob) {
    expect("launchctl remove com.example.sleeper", 0, "");
    EXPECT_TRUE(mac_.jobs("system").empty());
}

TEST_F(MacsimLaunchctl, KeptAliveJobsComeBackAfterTheirThrottle) {
    mac_.put(kDaemonPlist,
             plist("com.example.sleeper", "/usr/local/bin/sleeper",
                   "<key>KeepAlive</key><true/><key>ThrottleInterval</key><integer>1</integer>"));
    // It begins anew, is killed at once, and comes back no sooner than a second after it began.
    const ProgramResult result =
        mac_.shell(std::string(kFunctions) +
                   "a=$(pid); begin=$(date +%s%N); launchctl kickstart -k system/com.example.sleeper; "
                   "await 'anew $a' || exit 1; "
                   "b=$(pid); launchctl kill KILL system/com.example.sleeper; "
                   "await 'anew $b' || exit 2; "
                   "[ $(($(date +%s%N) - begin)) -ge 1000000000 ] || exit 3");
    EXPECT_EQ(result.status, 0) << result.err;
}

TEST_F(MacsimLaunchctl, MisuseIsAnsweredWithUsage) {
    EXPECT_EQ(mac_.shell("launchctl").status, 64);
    EXPECT_EQ(mac_.shell("launchctl no-such-verb").status, 64);
    EXPECT_EQ(mac_.shell("launchctl print nonsense/1").status, 64);
    EXPECT_EQ(mac_.shell("launchctl bootout system").status, 64);
    EXPECT_EQ(mac_.shell("launchctl kill NONSENSE system/x").status, 64);
}

}  // namespace
