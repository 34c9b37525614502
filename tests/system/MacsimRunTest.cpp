#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/SimulatedMac.h"

namespace {

using namespace std::chrono_literals;
using TestSupport::ProgramResult;
using TestSupport::runProgram;
using TestSupport::SimulatedMac;

class MacsimRun : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(mac_.create().status, 0); }

    void TearDown() override {
        if (background_ > 0) {
            ::kill(background_, SIGKILL);
            static_cast<void>(endOfBackground());
        }
    }

    /// Starts macsim run in the background and waits until its command has made /tmp/up.
    void startInBackground(const std::string& line) {
        std::vector<std::string> words{SimulatedMac::macsim(),  "run", mac_.path(), "--", "sh", "-c",
                                       "touch /tmp/up; " + line};
        std::vector<char*> pointers;
        for (std::string& word : words) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        EXPECT_EQ(::posix_spawn(&background_, pointers.front(), nullptr, nullptr, pointers.data(), environ),
                  0);
        EXPECT_TRUE(TestSupport::comesTrue([this] { return mac_.exists("/tmp/up"); }));
    }

    /// Waits until macsim has ended; its wait status, or -1 if there is none.
    int endOfBackground() {
        int status = -1;
        EXPECT_EQ(::waitpid(background_, &status, 0), background_);
        background_ = 0;
        return status;
    }

    SimulatedMac mac_;
    pid_t background_ = 0;
};

/// Processes of the host whose command line holds `text`.
int countOnHost(const std::string& text) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        // A process that ends while it is read makes the read fail; a stream takes note of that where
        // an iterator would throw.
        std::ostringstream words;
        words << std::ifstream(entry.path() / "cmdline", std::ios::binary).rdbuf();
        const std::string line = words.str();
        count += line.find(text) != std::string::npos && line.find("macsim") == std::string::npos ? 1 : 0;
    }
    return count;
}

TEST_F(MacsimRun, ExitsWithTheCommandsStatus) {
    EXPECT_EQ(mac_.shell("exit 7").status, 7);
    EXPECT_EQ(mac_.state().at("exitStatus"), 7);
    EXPECT_EQ(mac_.shell("kill -9 $$").status, 137);
    EXPECT_EQ(mac_.run({}, {"no-such-program"}).status, 127);
    EXPECT_EQ(mac_.run({}, {"/etc/passwd"}).status, 126);
}

TEST_F(MacsimRun, PassesOutputAndErrorThrough) {
    const ProgramResult result = mac_.shell("echo out; echo err >&2");
    EXPECT_EQ(result.out, "out\n");
    EXPECT_EQ(result.err, "err\n");
}

TEST_F(MacsimRun, LaunchdIsProcessOneInItsOwnNamespace) {
    const ProgramResult result = mac_.shell(
        "readlink /proc/1/exe; hostname; ls /proc/sys/kernel >/dev/null && ls -d /home /root 2>&1 | wc -l; "
        "cat /proc/net/dev | grep -c :");
    EXPECT_EQ(result.out, "/sbin/launchd\nMac\n2\n1\n");
}

TEST_F(MacsimRun, GivesTheUserAMacsEnvironment) {
    EXPECT_EQ(mac_.shell("echo $HOME $USER $PATH $(id -u)").out,
              "/var/root root /usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin 0\n");
    EXPECT_EQ(mac_.shell("echo $HOME $USER $(id -u) $(id -gn)", "bob").out, "/Users/bob bob 502 staff\n");
    EXPECT_EQ(mac_.run({}, {"true"}, "nobody-such").status, 2);
}

TEST_F(MacsimRun, UsersAreHeldToTheirRights) {
    EXPECT_NE(mac_.shell("ls /Users/bob", "alice").status, 0);
    EXPECT_NE(mac_.shell("touch /Library/x", "alice").status, 0);
    EXPECT_EQ(mac_.shell("touch ~/x /tmp/x /Users/Shared/x /dev/shm/x", "alice").status, 0);
}

TEST_F(MacsimRun, BorrowedFoldersCannotBeChanged) {
    EXPECT_NE(mac_.shell("touch /usr/bin/x").status, 0);
    EXPECT_NE(mac_.shell("rm -f /usr/bin/true").status, 0);
    EXPECT_TRUE(std::filesystem::exists("/usr/bin/true"));
}

TEST_F(MacsimRun, LogsWhatProgramsSendWithTheProcessIdOfTheMac) {
    const ProgramResult result =
        mac_.shell("sh -c 'echo $$; exec logger -t \"Uninstall Sentrel\" --id=99 one line'");
    ASSERT_EQ(result.status, 0);
    const auto log = mac_.log();
    ASSERT_EQ(log.size(), 1U);
    const std::string pid = result.out.substr(0, result.out.size() - 1);
    EXPECT_TRUE(std::regex_match(
        log[0], std::regex(R"([A-Z][a-z]{2} [ 0-9]\d \d\d:\d\d:\d\d Mac Uninstall Sentrel\[)" + pid +
                           R"(\]: one line)")))
        << log[0];
    EXPECT_EQ(mac_.messages("Uninstall Sentrel"), std::vector<std::string>{"one line"});
}

TEST_F(MacsimRun, LogsTextsWithLineBreaksAsTheyAre) {
    ASSERT_EQ(mac_.shell("printf '<13>Nov 21 08:00:00 prog[1]: first\\nsecond: x;\\nthird' | "
                         "python3 -c 'import socket,sys; s=socket.socket(socket.AF_UNIX,socket.SOCK_DGRAM); "
                         "s.connect(\"/dev/log\"); s.send(sys.stdin.buffer.read())'")
                  .status,
              0);
    EXPECT_EQ(mac_.messages("prog"), std::vector<std::string>{"first\nsecond: x;\nthird"});
}

TEST_F(MacsimRun, LosesNoLineOfAFlood) {
    ASSERT_EQ(mac_.shell("seq 1 3000 | logger -t flood").status, 0);
    EXPECT_EQ(mac_.messages("flood").size(), 3000U);
    EXPECT_EQ(mac_.messages("flood").back(), "3000");
}

TEST_F(MacsimRun, RefusesASecondRunAtTheSameTime) {
    startInBackground("while [ ! -e /tmp/end ]; do sleep 0.02; done");
    const ProgramResult second = mac_.shell("true");
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.err, "macsim: " + mac_.path() + " is running already\n");
    EXPECT_EQ(runProgram({SimulatedMac::macsim(), "delete", mac_.path()}).status, 1);
    const ProgramResult state = runProgram({SimulatedMac::macsim(), "state", mac_.path()});
    EXPECT_EQ(state.status, 1);
    EXPECT_EQ(state.err, "macsim: " + mac_.path() + " is running; its state is recorded when the run ends\n");
    mac_.put("/tmp/end", "");
    EXPECT_EQ(endOfBackground(), 0);
}

TEST_F(MacsimRun, EverythingDiesWithMacsim) {
    for (const int signal : {SIGTERM, SIGKILL}) {
        // A length of sleep that nobody else on this machine has asked for.
        const std::string marker = "9" + std::to_string(::getpid()) + "00" + std::to_string(signal);
        std::filesystem::remove(mac_.path("/tmp/up"));
        startInBackground("setsid sleep " + marker + " & sleep " + marker);
        EXPECT_GT(countOnHost(marker), 0);
        ::kill(background_, signal);
        const int status = endOfBackground();
        EXPECT_TRUE(signal == SIGKILL ? WIFSIGNALED(status)
                                      : WIFEXITED(status) && WEXITSTATUS(status) == 128 + signal)
            << "status " << status << " after signal " << signal;
        EXPECT_TRUE(TestSupport::comesTrue([&] { return countOnHost(marker) == 0; }))
            << "after signal " << signal;
    }
    EXPECT_EQ(mac_.shell("exit 3").status, 3) << "the Mac boots again";
}

TEST_F(MacsimRun, IgnoresLinksThatLeadOutOfTheMac) {
    const std::string outside = mac_.scratch() + "/outside";
    std::ofstream(outside) << "untouched";
    ASSERT_EQ(mac_.shell("rm -f /var/macsim/state.json; ln -s " + outside +
                         " /var/macsim/state.json; ln -s " + mac_.scratch() + " /Users/Shared/Norvik")
                  .status,
              0);
    ASSERT_EQ(mac_.run({}, {"true"}).status, 0);
    std::ifstream file(outside);
    std::string text;
    std::getline(file, text);
    EXPECT_EQ(text, "untouched");
    EXPECT_EQ(mac_.state().at("productPaths"), std::vector<std::string>{"/Users/Shared/Norvik"});
}

}  // namespace
