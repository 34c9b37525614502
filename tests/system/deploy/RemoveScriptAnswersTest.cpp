// deploy/remove-sentrel.sh against wrong answers, hostile names, signals, time limits, and by other shells.

#include <gtest/gtest.h>

#include "RemovalMac.h"

namespace DeployTests {

namespace {

using Lines = std::vector<std::string>;

/// A sentrel-inspect that says `facts` (in printf's form) with `status`.
void putInspect(const RemovalMac& mac, const std::string& facts, int status) {
    mac.put("/opt/inspect", "#!/bin/sh\nprintf '" + facts + "'\nexit " + std::to_string(status) + "\n", 0755);
}

TEST(AnswersOfSentrelInspect, ThatMakeNoSenseAreNoAnswer) {
    RemovalMac mac(kEmpty);
    const std::vector<std::pair<std::string, int>> rows{
        {"", 0},
        {"verdict\\tnothing\\n", 3},
        {"verdict\\tinstalled\\n", 0},
        {"verdict\\tnothing\\nverdict\\tnothing\\n", 0},
        {"Nothing of Sentrel is on this Mac.\\n", 0},
        {"", 127},
        {"verdict\\tunknown\\ncould-not-look\\ta \"place\"\\n", 1},
    };
    for (const auto& [facts, status] : rows) {
        putInspect(mac, facts, status);
        expectOutcome(mac.shell(kScript + " --inspect /opt/inspect"), 1, "unknown", false);
    }
    EXPECT_EQ(lineOf(mac.shell(kScript + " --inspect /opt/inspect")).at("message"),
              "Not everything could be looked at: a \"place\"");
    EXPECT_EQ(mac.launchctlChanges(), Lines());
}

// The script does not trust the word leftover: it touches nothing but the product's own places, labels and
// processes.
TEST(AnswersOfSentrelInspect, TakeNothingAwayThatIsNotTheProducts) {
    RemovalMac mac(kEmpty);
    const Lines targets{"folder\\t/etc",
                        "folder\\t/",
                        "folder\\t/Library",
                        "folder\\t/Applications/Norvik/../../etc",
                        "folder\\t/Applications/Norvik/..",
                        "folder\\t/Applications//",
                        "folder\\t/Applications/Norvik/",
                        "folder\\t/Applications/NorvikOther",
                        "folder\\t/Users/Shared",
                        "folder\\t/Users/Shared/Norvik /etc",
                        "folder\\t/Applications/Norvik/$(touch /tmp/run)",
                        "file\\t/Applications/Norvik/`touch /tmp/run`",
                        "file\\t/Applications/Norvik/x;touch /tmp/run",
                        "file\\t/Library/LaunchDaemons/com.apple.x.plist",
                        "file\\t/Library/LaunchDaemons/com.norvik.x/com.norvik.plist",
                        "file\\t-rf /etc",
                        "file\\tetc",
                        "tree\\t/Users/Shared/Norvik",
                        "job\\tsystem/com.apple.x",
                        "job\\tsystem",
                        "job\\tsystem/com.norvik.",
                        "job\\tsystem/com.norvik.x y",
                        "job\\tuser/501/com.norvik.x",
                        "job\\tgui/501x/com.norvik.x",
                        "job\\tgui/com.norvik.x",
                        "job\\tcom.norvik.x",
                        "process\\t1",
                        "process\\t0",
                        "process\\t-1",
                        "process\\t-TERM 1",
                        "process\\t",
                        "extension\\tcom.apple.x",
                        "extension\\t-x com.norvik.x"};
    std::string facts = "verdict\\tleftovers\\nitem\\tfolder\\t/x\\n";
    for (const std::string& target : targets) {
        facts += joined({"leftover\\t", target, "\\n"});
    }
    putInspect(mac, facts, 4);
    mac.put("/usr/sbin/kextunload", "#!/bin/sh\ntouch /tmp/run\n", 0755);
    for (const char* file : {"/etc/keep", "/Applications/Norvik/keep", "/Applications/NorvikOther/keep",
                             "/Library/LaunchDaemons/com.apple.x.plist", "/Users/Shared/Norvik/keep"}) {
        mac.put(file, "");
    }
    const auto result = mac.shell(kScript + " --inspect /opt/inspect --log /var/log/removal.log");
    expectOutcome(result, 10, "leftovers", false);
    const std::string log = mac.contents("/var/log/removal.log");
    EXPECT_EQ(log.find("Z removed: "), std::string::npos) << log;
    EXPECT_EQ(countOf(" not removed: ", log), targets.size()) << log;
    EXPECT_EQ(mac.launchctlChanges(), Lines());
    for (const char* file : {"/etc/keep", "/Applications/Norvik/keep", "/Applications/NorvikOther/keep",
                             "/Library/LaunchDaemons/com.apple.x.plist", "/Users/Shared/Norvik/keep"}) {
        EXPECT_TRUE(mac.exists(file)) << file;
    }
    EXPECT_FALSE(mac.exists("/tmp/run"));
}

// Administrators without root's rights may write to /Applications: between the look and the removal, they can
// exchange the product's folder for a link.
TEST(AnswersOfSentrelInspect, LeadNowhereThroughALinkThatWasPutThereSince) {
    RemovalMac mac(kEmpty);
    mac.put("/Users/alice/private/SNT/file", "");
    mac.put("/Users/alice/private/View Logs.app", "");
    ASSERT_EQ(mac.shell("ln -s /Users/alice/private /Applications/NORVIK").status, 0);
    putInspect(mac,
               "verdict\\tleftovers\\nleftover\\tfolder\\t/Applications/NORVIK/SNT\\n"
               "leftover\\tfile\\t/Applications/NORVIK/View Logs.app\\n",
               4);
    const auto result = mac.shell(kScript + " --inspect /opt/inspect --time-limit 60 --log /var/log/removal");
    EXPECT_EQ(lineOf(result).at("cleaned"), 0);
    EXPECT_TRUE(mac.exists("/Users/alice/private/SNT/file"));
    EXPECT_TRUE(mac.exists("/Users/alice/private/View Logs.app"));
    const std::string log = mac.shell("cat /var/log/removal").out;
    EXPECT_NE(log.find(" not removed: folder /Applications/NORVIK/SNT\n"), std::string::npos) << log;
}

TEST(AnswersOfSentrelInspect, AreAskedForAgainWhenNothingCouldBeTakenAway) {
    RemovalMac mac(kEmpty);
    // The process has ended between the look and the kill.
    mac.put("/opt/inspect",
            "#!/bin/sh\n"
            "if mkdir /tmp/looked 2>/dev/null; then\n"
            "    printf 'verdict\\tleftovers\\nleftover\\tprocess\\t4194303\\n'\n"
            "    exit 4\n"
            "fi\n"
            "printf 'verdict\\trestart\\njob\\tsystem/com.norvik.x\\n'\n"
            "exit 5\n",
            0755);
    const auto result = mac.shell(kScript + " --inspect /opt/inspect");
    EXPECT_EQ(lineOf(result).at("cleaned"), 0);
    EXPECT_EQ(lineOf(result).at("result"), "restart");
    EXPECT_EQ(result.status, 11);
}

TEST(AnswersOfSentrelInspect, AreAskedForOnlyWhenKilledProcessesAreGone) {
    RemovalMac mac(kEmpty);
    // A killed process stays in the table until its parent has taken note of it.
    mac.put("/opt/inspect",
            "#!/bin/sh\n"
            "pid=$(cat /tmp/pid)\n"
            "if kill -0 \"$pid\" 2>/dev/null; then\n"
            "    printf 'verdict\\tleftovers\\nleftover\\tprocess\\t%s\\n' \"$pid\"\n"
            "    [ ! -e /tmp/looked ] || echo again >> /tmp/looked-too-early\n"
            "    touch /tmp/looked\n"
            "    exit 4\n"
            "fi\n"
            "printf 'verdict\\tnothing\\n'\n",
            0755);
    mac.put("/opt/parent.py",
            "import os, subprocess, time\n"
            "child = subprocess.Popen(['sleep', '1000'])\n"
            "open('/tmp/pid', 'w').write(str(child.pid))\n"
            "while not os.path.exists('/tmp/looked'):\n"
            "    time.sleep(0.05)\n"
            "time.sleep(1)\n"
            "child.wait()\n");
    const auto result = mac.shell("python3 /opt/parent.py & while [ ! -s /tmp/pid ]; do sleep 0.05; done; " +
                                  kScript + " --inspect /opt/inspect");
    EXPECT_EQ(lineOf(result).at("result"), "removed") << result.out;
    EXPECT_FALSE(mac.exists("/tmp/looked-too-early"));
}

// The reverse: what the catalogue has is known to the script, too.
TEST(AnswersOfSentrelInspect, NameNoPlaceThatTheScriptDoesNotKnow) {
    RemovalMac mac(kEmpty);
    const auto commands = nlohmann::json::parse(
        TestSupport::runProgram({INSPECT_PROGRAM, "commands", "uninstall-all", "--json"}).out, nullptr,
        false);
    const Lines helpers{"/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper",
                        "/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper.package",
                        "/Library/LaunchDaemons/com.norvik.SupportPrivilegedHelper.plist"};
    std::string facts = "verdict\\tleftovers\\n";
    std::size_t places = 0;
    const auto add = [&](const std::string& place) {
        ++places;
        facts += joined({"leftover\\tfolder\\t", place, "\\n"});
        mac.put(place + "/x/file", "");
    };
    for (const auto& command : commands) {
        if (command.at("class") == "RemoveCommand") {
            for (const auto& item : command.at("items")) {
                add(item.at("path").get<std::string>());
            }
        }
    }
    for (const std::string& helper : helpers) {
        add(helper);
    }
    EXPECT_GT(places, 60U);
    putInspect(mac, facts, 4);
    const auto result = mac.shell(kScript + " --inspect /opt/inspect --time-limit 60");
    // The same leftovers are named three times.
    EXPECT_EQ(lineOf(result).at("cleaned"), 3 * places);
    EXPECT_EQ(mac.verdictFromOutside(), "result: nothing, 0 found, exit status 0\n");
}

TEST(HostileNames, AreNoCommandsAndLeaveNoLine) {
    RemovalMac mac(kEmpty);
    // Alice may write there, and her process is one of the product's by its place.
    mac.putCopy("/Users/Shared/Norvik/$(touch x)`touch x`;touch x\n\"\t'\x1b[2J\nleftover\tfolder\t",
                "/usr/bin/sleep");
    const auto result = mac.shell(RemovalMac::startOf("/Users/Shared/Norvik/*") + "cd /tmp; " + kScript +
                                  " --log /var/log/removal.log");
    expectOutcome(result, 0, "removed", true);
    EXPECT_EQ(lineOf(result).at("cleaned"), 2);
    EXPECT_FALSE(mac.exists("/tmp/x"));
    EXPECT_EQ(mac.processes(), Lines());
    const std::string log = mac.contents("/var/log/removal.log");
    EXPECT_EQ(log.find('\x1b'), std::string::npos) << log;
    EXPECT_NE(log.find("touch x\\x0a"), std::string::npos) << log;
}

TEST(InterruptedRemoval, SaysSoAndLeavesNoProcess) {
    RemovalMac mac({"--installed", "antivir", "--users", "alice:501"}, false);
    mac.put("/opt/uninstaller", "#!/bin/sh\necho $$ >/tmp/started\nexec sleep 1000\n", 0755);
    const auto result =
        mac.shell("mkfifo /tmp/started; " + kScript +
                  " --uninstaller /opt/uninstaller & s=$!\n"
                  "read p </tmp/started; kill $s; wait $s; r=$?\n"
                  "kill -0 $p 2>/dev/null && echo it runs >&2; rm /tmp/started; ls /tmp >&2; exit $r");
    expectOutcome(result, 1, "interrupted", false);
}

TEST(RemovalAtItsTimeLimit, EndsAnUninstallerThatDoesNotEnd) {
    RemovalMac mac({"--installed", "antivir", "--users", "alice:501"}, false);
    mac.put("/opt/uninstaller", "#!/bin/sh\ntrap '' TERM\necho $$ >/tmp/pid\nexec sleep 1000\n", 0755);
    const auto result = mac.shell(kScript +
                                  " --uninstaller /opt/uninstaller --time-limit 2; r=$?\n"
                                  "! [ -s /tmp/pid ] || ! kill -0 $(cat /tmp/pid) || echo it runs; exit $r");
    EXPECT_EQ(result.status, 14) << result.out;
    EXPECT_NE(result.out.find("\"result\":\"running\""), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find("it runs"), std::string::npos) << result.out;
}

// What the uninstaller says on standard error decides whether a second attempt makes sense.
TEST(WordsOfTheUninstaller, DecideWhatBecomesOfTheRun) {
    struct Row {
        const char* words;
        int status;
        int attempts;
        const char* message;
    };
    const Row rows[] = {
        {"Helper authorization and blessing failed. Quitting...", 13, 1,
         "The uninstaller got no authorization."},
        {"SMJobBless error: x\nHelper authorization and blessing failed. Quitting...", 10, 2,
         "Sentrel is still installed: launchd refused to install a helper."},
        {"Failed to install Swift runtime support. Quitting...", 10, 2,
         "Sentrel is still installed: the runtime support package could not be installed."},
        {"Antivirus cannot be uninstalled", 12, 1, "The installed version is newer than the uninstaller."},
        {"", 10, 2, "Sentrel is still installed: the helper did not go through its list."},
    };
    RemovalMac mac({"--installed", "antivir", "--users", "alice:501"}, false);
    mac.put("/opt/uninstaller", "#!/bin/sh\n[ \"$*\" = --silent ] && cat /opt/words >&2\n", 0755);
    for (const Row& row : rows) {
        mac.put("/opt/words", row.words);
        const auto result = mac.shell(kScript + " --uninstaller /opt/uninstaller");
        const auto line = lineOf(result);
        EXPECT_EQ(result.status, row.status) << row.words;
        EXPECT_EQ(line.at("attempts"), row.attempts) << row.words;
        EXPECT_EQ(line.at("message"), row.message);
        EXPECT_EQ(line.at("changed"), false);
    }
}

TEST(SecondAttempt, IsMadeWhereTheFirstOneCameToNothing) {
    RemovalMac mac({"--installed", "antivir", "--users", "alice:501"});
    mac.put("/opt/uninstaller",
            "#!/bin/sh\n[ -e /opt/once ] || { : >/opt/once; exit 0; }\nexec '" + kKit +
                "/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel' \"$@\"\n",
            0755);
    const auto result = mac.shell(kScript + " --uninstaller /opt/uninstaller");
    expectOutcome(result, 0, "removed", true);
    EXPECT_EQ(lineOf(result).at("attempts"), 2);
}

class RemovalByAShell : public testing::TestWithParam<const char*> {};

TEST_P(RemovalByAShell, WorksAsByAnyOther) {
    RemovalMac mac({"--installed", "antivir", "--users", "alice:501"});
    const std::string run = std::string(GetParam()) + " " + kScript;
    expectOutcome(mac.shell(run + " --plan"), 0, "planned", true);
    mac.put("/Users/Shared/Norvik/file", "");
    expectOutcome(mac.underFaults({"immutable=/Users/Shared/Norvik/file"}, run), 10, "leftovers", true);
    expectOutcome(mac.shell(run + " --log /tmp/new"), 0, "removed", true);
    expectOutcome(mac.shell(run), 0, "nothing", false);
    EXPECT_EQ(mac.shell(run + " --log /tmp/new").status, 2);
    EXPECT_EQ(mac.shell(run + " --pln").err, "remove-sentrel.sh: unknown argument \"--pln\"; see --help\n");
}

INSTANTIATE_TEST_SUITE_P(Shells, RemovalByAShell,
                         testing::Values("/bin/dash", "/bin/bash --posix", "/bin/zsh --emulate sh"),
                         [](const auto& info) {
                             const std::string shell = info.param;
                             return shell.substr(5, shell.find(' ') - 5);
                         });

}  // namespace

}  // namespace DeployTests
