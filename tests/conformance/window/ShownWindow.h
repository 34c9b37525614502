#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "ProbeProcess.h"
#include "support/RunProgram.h"
#include "support/VirtualDisplay.h"

/// The window on a screen that only the test sees, driven by a probe.
namespace WindowTests {

struct Frame {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// Of the window; menu bar and alerts have the program's name.
inline constexpr const char* kTitle = "Remove Sentrel";
inline constexpr const char* kProgram = "Uninstall Sentrel";

inline std::vector<std::string> texts(const std::vector<std::string>& more = {}) {
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

}  // namespace WindowTests
