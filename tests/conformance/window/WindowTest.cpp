// The window's library, as its user meets it: on an X server, with keyboard and mouse.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "ProbeProcess.h"
#include "support/RunProgram.h"
#include "support/VirtualDisplay.h"

namespace WindowTests {
namespace {

struct Frame {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// Of the window; menu bar and alerts have the program's name.
constexpr const char* kTitle = "Remove Sentrel";
constexpr const char* kProgram = "Uninstall Sentrel";

std::vector<std::string> texts(const std::vector<std::string>& more = {}) {
    std::vector<std::string> settings{
        std::string("title=") + kTitle,
        "headline=Sentrel Uninstaller",
        "label=Sentrel and everything that belongs to it will be removed from this Mac.",
        "uninstall=Uninstall",
        "cancel=Cancel",
        "duration=This can take up to a minute.",
        "about=About Uninstall Sentrel",
        "hide=Hide Uninstall Sentrel",
        "quit=Quit Uninstall Sentrel",
        "version=6.4 (640)",
        std::string("resources=") + ICON_FOLDER};
    settings.insert(settings.end(), more.begin(), more.end());
    return settings;
}

class Window : public testing::Test {
  protected:
    /// The visible window of this name, waited for; a width of 0 when it does not come.
    Frame frame(const std::string& title) {
        std::string geometry;
        // A search fails when any window goes meanwhile.
        static_cast<void>(TestSupport::comesTrue([&] {
            geometry = display_.xdotool(
                {"search", "--onlyvisible", "--name", "^" + title + "$", "getwindowgeometry", "--shell"});
            return !geometry.empty();
        }));
        std::istringstream lines(geometry);
        Frame result;
        for (std::string line; std::getline(lines, line);) {
            const std::size_t equals = line.find('=');
            const std::string key = line.substr(0, equals);
            int* value = key == "X"        ? &result.x
                         : key == "Y"      ? &result.y
                         : key == "WIDTH"  ? &result.width
                         : key == "HEIGHT" ? &result.height
                                           : nullptr;
            if (value != nullptr) {
                *value = std::stoi(line.substr(equals + 1));
            }
        }
        return result;
    }

    void click(int x, int y) { display_.click(x, y); }

    /// Presses a key once the program has the keyboard. Without a window manager the menu bar gets it for the
    /// window.
    void press(const std::string& key) {
        EXPECT_TRUE(display_.waitForWindow(kProgram));
        display_.press(key);
    }

    /// Waits until another window than `window` has the keyboard.
    bool losesKeyboard(const std::string& window) {
        return TestSupport::comesTrue([&] {
            const std::string focused = display_.xdotool({"getwindowfocus"});
            return !focused.empty() && focused != window;
        });
    }

    /// Waits until the window's frame is such that `condition` holds; the last frame seen.
    template <typename Condition>
    Frame frameWhen(const Condition& condition) {
        Frame seen;
        static_cast<void>(TestSupport::comesTrue([&] {
            seen = frame(kTitle);
            return condition(seen);
        }));
        return seen;
    }

    /// Waits until the color at a place of the screen is such that `condition` holds; the last one seen, as
    /// ImageMagick writes it.
    template <typename Condition>
    std::string colorWhen(int x, int y, const Condition& condition) {
        const std::string place = "1x1+" + std::to_string(x) + "+" + std::to_string(y);
        std::string seen;
        static_cast<void>(TestSupport::comesTrue([&] {
            seen = TestSupport::runProgram({"import", "-display", display_.name(), "-window", "root", "-crop",
                                            place, "-depth", "8", "txt:-"})
                       .out;
            return condition(seen);
        }));
        return seen;
    }

    /// Whether earlier requests have been carried out by now and `line` has not appeared meanwhile.
    static bool staysSilentAbout(ProbeProcess& probe, const std::string& line) {
        probe.tell("post 1");
        return probe.hears("block 1") &&
               std::find(probe.heard().begin(), probe.heard().end(), line) == probe.heard().end();
    }

    TestSupport::VirtualDisplay display_;
};

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
    click(window.x + window.width - 40, window.y + window.height - 34);
    EXPECT_TRUE(probe.hears("uninstall"));
    click(window.x + window.width - 150, window.y + window.height - 34);
    EXPECT_TRUE(probe.hears("cancel"));
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

TEST_F(Window, CloseBoxAsksAndStaysWhenRefused) {
    ProbeProcess probe(display_.name(), texts());
    ASSERT_TRUE(probe.hears("launched"));
    probe.tell("may-close no");
    const Frame window = frame(kTitle);
    click(window.x + window.width - 16, window.y + 16);
    EXPECT_TRUE(probe.hears("should-close"));
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
    click(menu.x + menu.width / 2, menu.y + menu.height - 13);
    EXPECT_TRUE(probe.hears("should-terminate"));
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

TEST_F(Window, WithoutFrameworksNoLockIsAsked) {
    ProbeProcess probe(display_.name(), texts({"frameworks=/nowhere"}));
    ASSERT_TRUE(probe.hears("launched"));
    probe.tell("authorize");
    EXPECT_TRUE(probe.hears("authorized"));
}

TEST_F(Window, UsesTheMakersFrameworksAndPassesOverABrokenOne) {
    const std::filesystem::path broken =
        std::filesystem::path(testing::TempDir()) / ("broken-frameworks-" + std::to_string(getpid()));
    for (const std::string name : {"NorvikCustomUI", "NorvikGuiCommon"}) {
        const std::filesystem::path framework = broken / (name + ".framework");
        const std::filesystem::path current = framework / "Versions" / "Current";
        std::filesystem::create_directories(current / "Resources");
        std::ofstream(current / name) << "no code";
        std::ofstream(current / "Resources" / "Info-gnustep.plist")
            << "{ NSExecutable = \"" << name << "\"; }";
        std::filesystem::create_symlink(current / name, framework / name);
        std::filesystem::create_symlink(current / "Resources", framework / "Resources");
    }
    ProbeProcess probe(display_.name(), texts({"frameworks=" + broken.string(),
                                               std::string("frameworks=") + MAKER_FRAMEWORKS}));
    ASSERT_TRUE(probe.hears("launched"));
    probe.tell("authorize");
    EXPECT_TRUE(probe.hears("not authorized"));
    probe.tell("alert OK|Message|Informative");
    EXPECT_TRUE(probe.hears("maker's alert: OK, Message, Informative"));
    EXPECT_TRUE(probe.hears("answered"));
    probe.tell("alert none|Message|Informative");
    EXPECT_TRUE(probe.hears("no alert"));
    std::filesystem::remove_all(broken);
}

TEST_F(Window, ALockThatCannotBeMadeStaysLocked) {
    for (const char* fault : {"absent", "raises"}) {
        ASSERT_EQ(setenv("MAKER_LOCK", fault, 1), 0);
        ProbeProcess probe(display_.name(), texts({std::string("frameworks=") + MAKER_FRAMEWORKS}));
        unsetenv("MAKER_LOCK");
        ASSERT_TRUE(probe.hears("launched"));
        probe.tell("authorize");
        const bool isLocked = probe.hears("not authorized");
        EXPECT_TRUE(isLocked) << fault << ": " << (isLocked ? 0 : probe.status());
    }
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
