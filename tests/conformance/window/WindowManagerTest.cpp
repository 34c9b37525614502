// The window under a real window manager, which draws its title bar and decides which window has the
// keyboard.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "ProbeProcess.h"
#include "support/BackgroundProgram.h"
#include "support/VirtualDisplay.h"

namespace WindowTests {
namespace {

constexpr const char* kTitle = "Remove Sentrel";
constexpr const char* kProgram = "Uninstall Sentrel";
/// Of the window without the manager's frame.
constexpr int kWidth = 500;

/// A display whose window manager is ready.
class WindowUnderAManager : public testing::Test {
  protected:
    void SetUp() override {
        std::string scratch = (std::filesystem::temp_directory_path() / "window-manager.XXXXXX").string();
        ASSERT_NE(::mkdtemp(scratch.data()), nullptr);
        scratch_ = scratch;
        // It runs the command when it manages the display.
        manager_ = std::make_unique<TestSupport::BackgroundProgram>(
            std::vector<std::string>{"env", "DISPLAY=" + display_.name(), "HOME=" + scratch_, "openbox",
                                     "--sm-disable", "--startup", "touch " + scratch_ + "/ready"},
            scratch_ + "/log");
        ASSERT_TRUE(TestSupport::comesTrue([this] { return std::filesystem::exists(scratch_ + "/ready"); }));
        probe_ = std::make_unique<ProbeProcess>(
            display_.name(),
            std::vector<std::string>{std::string("title=") + kTitle, "headline=Sentrel Uninstaller",
                                     "label=Sentrel will be removed.", "uninstall=Uninstall", "cancel=Cancel",
                                     "about=About", "hide=Hide", "quit=Quit", "version=6.4",
                                     std::string("resources=") + ICON_FOLDER});
        ASSERT_TRUE(probe_->hears("launched"));
        // The menu bar has the keyboard for the window; from a manager that was busy, the window itself has
        // it. If neither does, a click helps, as it would anybody.
        const auto hasTheKeyboard = [this](auto limit) {
            return TestSupport::comesTrue(
                [this] {
                    const std::string owner = display_.xdotool({"getwindowfocus", "getwindowname"});
                    return owner == std::string(kProgram) + "\n" || owner == std::string(kTitle) + "\n";
                },
                limit);
        };
        ASSERT_TRUE(hasTheKeyboard(std::chrono::seconds(10)) ||
                    TestSupport::repeatUntil([this] { clickWindow(kWidth / 2, 20); }, hasTheKeyboard));
    }
    void TearDown() override {
        probe_.reset();
        manager_.reset();
        std::filesystem::remove_all(scratch_);
    }

    /// Presses a key as often as repeatUntil does: while the keyboard changes hands, one can be lost.
    bool pressLeadsTo(const char* key, const char* answer) {
        return TestSupport::repeatUntil([this, key] { display_.press(key); },
                                        [this, answer](auto limit) { return probe_->hears(answer, limit); });
    }

    /// Clicks the close box that the manager draws, at the right end of its bar above the window, as often as
    /// repeatUntil does: a manager that is busy can miss a click.
    bool closeBoxLeadsTo(const TestSupport::VirtualDisplay::Outcome& outcome) {
        return TestSupport::repeatUntil([this] { clickWindow(kWidth - 10, -10); }, outcome);
    }

    /// Clicks at a place counted from the upper left corner of the window, if it is there.
    void clickWindow(int x, int y) {
        std::string window =
            display_.xdotool({"search", "--onlyvisible", "--name", std::string("^") + kTitle + "$"});
        window = window.substr(0, window.find('\n'));
        if (!window.empty()) {
            display_.xdotool({"mousemove", "--window", window, std::to_string(x), std::to_string(y), "sleep",
                              "0.2", "mousedown", "1", "sleep", "0.15", "mouseup", "1"});
        }
    }

    TestSupport::VirtualDisplay display_;
    std::string scratch_;
    std::unique_ptr<TestSupport::BackgroundProgram> manager_;
    std::unique_ptr<ProbeProcess> probe_;
};

TEST_F(WindowUnderAManager, ReturnPressesUninstall) {
    EXPECT_TRUE(pressLeadsTo("Return", "uninstall"));
}

TEST_F(WindowUnderAManager, EscapePressesCancel) {
    EXPECT_TRUE(pressLeadsTo("Escape", "cancel"));
}

TEST_F(WindowUnderAManager, TheManagersCloseBoxAsksAndTheWindowStaysWhenRefused) {
    probe_->tell("may-close no");
    ASSERT_TRUE(closeBoxLeadsTo([this](auto limit) { return probe_->hears("should-close", limit); }));
    EXPECT_GT(display_.windowHeight(kTitle), 0);
    probe_->tell("may-close yes");
    EXPECT_TRUE(closeBoxLeadsTo([this](auto limit) { return display_.waitUntilGone(kTitle, limit); }));
}

}  // namespace
}  // namespace WindowTests
