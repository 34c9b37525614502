// A display of the host in a simulated Mac.

#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/SimulatedMac.h"
#include "support/VirtualDisplay.h"

namespace {

using TestSupport::ProgramResult;
using TestSupport::runProgram;
using TestSupport::SimulatedMac;
using TestSupport::VirtualDisplay;
using Words = std::vector<std::string>;

class MacsimDisplay : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(mac_.create().status, 0); }

    /// Runs a line of shell as alice with that display; `environment` is macsim's own.
    ProgramResult run(const std::string& display, const std::string& line, const Words& environment = {}) {
        Words words{"env"};
        words.insert(words.end(), environment.begin(), environment.end());
        words.insert(words.end(), {SimulatedMac::macsim(), "run", mac_.path(), "--as", "alice", "--display",
                                   display, "--", "sh", "-c", line});
        return runProgram(words);
    }

    SimulatedMac mac_;
};

TEST_F(MacsimDisplay, IsTheOnlyWayOut) {
    const VirtualDisplay one;
    const VirtualDisplay other;
    const ProgramResult result =
        run(one.name(),
            "echo $DISPLAY; ls /tmp/.X11-unix; xdotool getmouselocation >/dev/null && echo usable; "
            "DISPLAY=" +
                other.name() +
                " xdotool getmouselocation 2>/dev/null || echo closed; "
                "grep -c : /proc/net/dev; python3 -c 'import socket; "
                "s=socket.socket(socket.AF_UNIX); s.connect(\"\\0/tmp/.X11-unix/X" +
                other.name().substr(1) + "\")' 2>/dev/null || echo private");
    EXPECT_EQ(result.out, one.name() + "\nX" + one.name().substr(1) + "\nusable\nclosed\n1\nprivate\n");
}

TEST_F(MacsimDisplay, IsNotThereUnlessAskedFor) {
    const VirtualDisplay display;
    const ProgramResult result =
        runProgram({"env", "DISPLAY=" + display.name(), SimulatedMac::macsim(), "run", mac_.path(), "--",
                    "sh", "-c", "echo [$DISPLAY]; ls -A /tmp"});
    EXPECT_EQ(result.out, "[]\n");
}

TEST_F(MacsimDisplay, CanBeTheOneOfTheEnvironment) {
    const VirtualDisplay display;
    EXPECT_EQ(run("host", "echo $DISPLAY", {"DISPLAY=" + display.name() + ".0"}).out, display.name() + "\n");
    const ProgramResult none = run("host", "true", {"-u", "DISPLAY"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "macsim: there is no DISPLAY in the environment\n");
}

TEST_F(MacsimDisplay, HasToBeThere) {
    const ProgramResult absent = run(":64999", "true");
    EXPECT_EQ(absent.status, 1);
    EXPECT_EQ(absent.err, "macsim: there is no display :64999\n");
    for (const char* nonsense : {":", "nonsense", ":1x", "localhost:10.0", ":../X0", "/tmp", ":123456"}) {
        const ProgramResult refused = run(nonsense, "true");
        EXPECT_EQ(refused.status, 2) << nonsense;
        EXPECT_EQ(refused.err,
                  std::string("macsim: '") + nonsense + "' is not a display of this machine (like :0)\n");
    }
}

TEST_F(MacsimDisplay, ComesWithItsCookieForTheUserAlone) {
    const std::string authority = mac_.scratch() + "/authority";
    // The entry of a local display: family 256, host "elsewhere", number "", MIT-MAGIC-COOKIE-1.
    const std::string kind = "MIT-MAGIC-COOKIE-1";
    const auto counted = [](const std::string& text) {
        return std::string(1, '\0') + static_cast<char>(text.size()) + text;
    };
    std::ofstream(authority, std::ios::binary) << std::string("\1\0", 2) << counted("elsewhere")
                                               << counted("") << counted(kind) << counted("0123456789abcdef");
    const VirtualDisplay display(authority);
    const std::string use = "xdotool getmouselocation >/dev/null 2>&1 && echo usable || echo closed; ";
    EXPECT_EQ(run(display.name(), use, {"XAUTHORITY=" + authority}).out, "usable\n");
    EXPECT_EQ(run(display.name(), "stat -c '%U %a' $XAUTHORITY", {"XAUTHORITY=" + authority}).out,
              "alice 600\n");
    EXPECT_EQ(run(display.name(), use, {"XAUTHORITY=/nonexistent"}).out, "closed\n");
    ASSERT_EQ(mac_.shell("true").status, 0);
    EXPECT_FALSE(mac_.exists("/var/macsim/Xauthority")) << "it is gone with the next run";
}

TEST_F(MacsimDisplay, StandsABrokenAuthorityFile) {
    const VirtualDisplay display;
    const std::string authority = mac_.scratch() + "/authority";
    for (const std::string& bytes : {std::string(1, '\1'), std::string("\1\0\xff\xff", 4),
                                     std::string(100, '\0'), std::string("\1\0\0\1x\0\0\0\5short", 13)}) {
        std::ofstream(authority, std::ios::binary) << bytes;
        EXPECT_EQ(run(display.name(), "echo up", {"XAUTHORITY=" + authority}).out, "up\n");
    }
}

TEST_F(MacsimDisplay, FindsTheHostsFontsAndLeavesNoCacheOfThem) {
    const VirtualDisplay display;
    EXPECT_NE(run(display.name(), "fc-match -f '%{file}' 'DejaVu Sans'").out.find("/DejaVuSans.ttf"),
              std::string::npos);
    EXPECT_FALSE(mac_.exists("/Users/alice/.cache"));
}

}  // namespace
