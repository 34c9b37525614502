// The window's library, as its user meets it: on an X server, with keyboard and mouse.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ProbeProcess.h"
#include "ShownWindow.h"

namespace WindowTests {
namespace {

TEST_F(Window, AppearsWithItsTitleAndTellsTheProgram) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    EXPECT_EQ(probe.heard(), (std::vector<std::string>{"loaded", "launched"}));
    EXPECT_GE(frame(kTitle).width, 480);
}

TEST_F(Window, TakesAnotherTitle) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    probe.tell("title Désinstaller Sentrel");
    EXPECT_GE(frame("Désinstaller Sentrel").width, 480);
}

TEST_F(Window, ReturnPressesUninstall) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    ASSERT_GT(frame(kTitle).width, 0);
    press("Return");
    EXPECT_TRUE(probe.hears("uninstall"));
}

TEST_F(Window, EscapePressesCancel) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    ASSERT_GT(frame(kTitle).width, 0);
    press("Escape");
    EXPECT_TRUE(probe.hears("cancel"));
}

TEST_F(Window, ButtonsStandAtTheBottomRight) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    const Frame window = frame(kTitle);
    const int y = window.y + window.height - 34;
    EXPECT_TRUE(display_.clickUntil(window.x + window.width - 40, y,
                                    [&](auto limit) { return probe.hears("uninstall", limit); }));
    EXPECT_TRUE(display_.clickUntil(window.x + window.width - 150, y,
                                    [&](auto limit) { return probe.hears("cancel", limit); }));
}

TEST_F(Window, NeitherKeyPressesAHiddenOrDisabledButton) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    ASSERT_GT(frame(kTitle).width, 0);
    probe.tell("run");
    ASSERT_TRUE(probe.hears("running"));
    press("Escape");
    press("Return");
    display_.xdotool({"sleep", "0.3"});
    EXPECT_TRUE(staysSilentAbout(probe, "cancel"));
    EXPECT_TRUE(staysSilentAbout(probe, "uninstall"));
}

TEST_F(Window, ShowsTheRunningStateWhileTheProgramWaitsForSomethingElse) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    const Frame window = frame(kTitle);
    // In the Uninstall button, beside its title.
    const int x = window.x + window.width - 26;
    const int y = window.y + window.height - 34;
    const std::string before =
        colorWhen(x, y, [](const std::string& now) { return now.find("1768D8") != now.npos; });
    probe.tell("run-for-ever");
    ASSERT_TRUE(probe.hears("running"));
    EXPECT_NE(colorWhen(x, y, [&](const std::string& now) { return now != before; }), before);
}

TEST_F(Window, ReturnPressesTheButtonWithItsLaterAction) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    ASSERT_GT(frame(kTitle).width, 0);
    probe.tell("run");
    probe.tell("finish Done");
    ASSERT_TRUE(probe.hears("finished"));
    press("Return");
    EXPECT_TRUE(probe.hears("finish"));
    EXPECT_TRUE(staysSilentAbout(probe, "uninstall"));
}

TEST_F(Window, BlocksOfAnotherThreadRunInOrder) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    probe.tell("post 500");
    ASSERT_TRUE(probe.hears("block 500"));
    std::vector<std::string> expected{"loaded", "launched"};
    for (int number = 1; number <= 500; ++number) {
        expected.push_back("block " + std::to_string(number));
    }
    EXPECT_EQ(probe.heard(), expected);
}

TEST_F(Window, BlocksRunWhileAnAlertIsOpenAndReturnAnswersIt) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    ASSERT_TRUE(display_.waitForWindow(kProgram));
    const std::string menuBar = display_.xdotool({"getwindowfocus"});
    probe.tell("alert OK|Sentrel is not installed.|");
    ASSERT_TRUE(probe.hears("alert"));
    EXPECT_TRUE(staysSilentAbout(probe, "answered"));
    ASSERT_TRUE(losesKeyboard(menuBar));
    press("Return");
    EXPECT_TRUE(probe.hears("answered"));
    EXPECT_TRUE(staysSilentAbout(probe, "uninstall"));
}

TEST_F(Window, GrowsWithItsTextsAndNeverShrinks) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    const Frame before = frame(kTitle);
    std::string text = "Sentrel";
    for (int count = 0; count < 60; ++count) {
        text += " and more";
    }
    probe.tell("label " + text);
    ASSERT_TRUE(probe.hears("label " + text));
    // The program speaks before the screen has seen to it.
    const Frame taller = frameWhen([&](const Frame& now) { return now.height > before.height; });
    EXPECT_GT(taller.height, before.height);
    EXPECT_EQ(taller.y, before.y);
    probe.tell(
        "rename A title of a button that is a whole sentence long, which no language has, and a bit more");
    ASSERT_TRUE(staysSilentAbout(probe, "came back"));
    const Frame wider = frameWhen([&](const Frame& now) { return now.width > before.width; });
    EXPECT_GT(wider.width, before.width);
    probe.tell("label Sentrel");
    probe.tell("rename OK");
    ASSERT_TRUE(probe.hears("label Sentrel"));
    EXPECT_EQ(frame(kTitle).height, wider.height);
    EXPECT_EQ(frame(kTitle).width, wider.width);
}

}  // namespace
}  // namespace WindowTests
