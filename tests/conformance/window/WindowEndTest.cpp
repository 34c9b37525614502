// The window's library, as its user meets it: on an X server, with keyboard and mouse.

#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>
#include <string>

#include "ProbeProcess.h"
#include "ShownWindow.h"
#include "support/VirtualDisplay.h"

namespace WindowTests {
namespace {

TEST_F(Window, CloseBoxAsksAndStaysWhenRefused) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    probe.tell("may-close no");
    const Frame window = frame(kTitle);
    EXPECT_TRUE(display_.clickUntil(window.x + window.width - 16, window.y + 16,
                                    [&](auto limit) { return probe.hears("should-close", limit); }));
    EXPECT_TRUE(staysSilentAbout(probe, "should-terminate"));
    EXPECT_EQ(frame(kTitle).width, window.width);
}

TEST_F(Window, QuitKeyAsksAndStaysWhenRefused) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    const Frame window = frame(kTitle);
    ASSERT_GT(window.width, 0);
    probe.tell("may-terminate no");
    ASSERT_TRUE(staysSilentAbout(probe, "should-terminate"));
    press("alt+q");
    EXPECT_TRUE(probe.hears("should-terminate"));
    EXPECT_EQ(frame(kTitle).width, window.width);
    probe.tell("may-terminate yes");
    ASSERT_TRUE(staysSilentAbout(probe, "came back"));
    press("alt+q");
    EXPECT_EQ(probe.status(), 0);
}

TEST_F(Window, QuitOfTheMenuEndsWithStatusZero) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    ASSERT_GT(frame(kTitle).width, 0);
    click(60, 14);
    // What GNUstep calls the window of a menu. Quit is the last item.
    const Frame menu = frame("Window");
    ASSERT_GT(menu.width, 0);
    const int middle = menu.x + menu.width / 2;
    EXPECT_TRUE(display_.clickUntil(middle, menu.y + menu.height - 13,
                                    [&](auto limit) { return probe.hears("should-terminate", limit); }));
    EXPECT_EQ(probe.status(), 0);
}

TEST_F(Window, TerminateReturnsWhenRefusedAndEndsWithStatusZeroWhenAgreed) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    probe.tell("may-terminate no");
    probe.tell("terminate");
    ASSERT_TRUE(probe.hears("should-terminate"));
    ASSERT_TRUE(probe.hears("still here"));
    probe.tell("may-terminate yes");
    probe.tell("terminate");
    EXPECT_EQ(probe.status(), 0);
}

TEST_F(Window, StartsNoProcesses) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    ASSERT_GT(frame(kTitle).width, 0);
    const std::string pid = std::to_string(probe.pid());
    std::ifstream file("/proc/" + pid + "/task/" + pid + "/children");
    ASSERT_TRUE(file.is_open());
    std::string children;
    std::getline(file, children);
    EXPECT_EQ(children, "");
}

TEST_F(Window, ASignalEndsItAtOnce) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    kill(probe.pid(), SIGTERM);
    EXPECT_EQ(probe.status(), 128 + SIGTERM);
}

TEST(WindowWhoseDisplayEnds, EndsWithAClearLine) {
    for (const char* state : {"label ready", "run", "alert OK|Message|Text"}) {
        TestSupport::VirtualDisplay display;
        ProbeProcess probe(display.name(), texts(), ProbeProcess::Streams::outputAndErrors);
        ASSERT_TRUE(probe.hears("launched")) << state;
        probe.tell(state);
        const std::string command = state;
        EXPECT_TRUE(probe.hears(command == "run" ? "running" : command.substr(0, command.find(" OK"))));
        display.kill();
        EXPECT_TRUE(probe.hears(
            "The window is gone because its display has ended. A removal that has begun goes on."))
            << state;
        EXPECT_EQ(probe.status(), 0) << state;
        EXPECT_FALSE(probe.hears("anything more")) << probe.heard().back();
    }
}

TEST(WindowWithoutDisplay, SaysSoWhenNoneIsNamed) {
    ProbeProcess probe("", texts());
    EXPECT_TRUE(probe.hears("unavailable: There is no display: DISPLAY is not set."));
    EXPECT_EQ(probe.status(), 0);
}

TEST(WindowWithoutDisplay, SaysSoWhenItDoesNotAnswer) {
    ProbeProcess probe(":4711", texts());
    EXPECT_TRUE(probe.hears("unavailable: The display :4711 does not answer."));
    EXPECT_EQ(probe.status(), 0);
}

}  // namespace
}  // namespace WindowTests
