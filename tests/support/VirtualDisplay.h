#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "support/Patience.h"

namespace TestSupport {

/// A separate X display that nobody sees, with a keyboard and a mouse in front of it; gone at the end.
/// Operations that fail fail the test.
class VirtualDisplay {
  public:
    /// Only holders of a cookie in the X authority file `authority` may use it, if that is not empty.
    explicit VirtualDisplay(const std::string& authority = "");
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;
    ~VirtualDisplay();

    /// ":N".
    [[nodiscard]] const std::string& name() const { return name_; }

    /// Ends it, as a crash would.
    void kill();

    /// Waits until the window of that title has the keyboard.
    [[nodiscard]] bool waitForWindow(const std::string& title, std::chrono::seconds limit = kPatience) const;
    /// Waits until no window of that title is on the screen.
    [[nodiscard]] bool waitUntilGone(const std::string& title, std::chrono::seconds limit = kPatience) const;
    /// Whether a window of that title is on the screen.
    [[nodiscard]] bool shows(const std::string& title) const;
    /// Its height in pixels; 0 if there is none.
    [[nodiscard]] int windowHeight(const std::string& title) const;
    /// Runs xdotool with these arguments: what it says; empty when it fails.
    std::string xdotool(const std::vector<std::string>& arguments) const;
    void type(const std::string& text) const;
    /// Keys as xdotool names them: "Return", "Escape", "alt+q".
    void press(const std::string& keys) const;
    /// Moves the mouse to a place counted from the upper left corner and clicks, as slowly as a hand: a
    /// button that goes up as it goes down is missed when the machine is busy.
    void click(double x, double y) const;
    using Outcome = std::function<bool(std::chrono::seconds limit)>;
    /// Clicks there as often as repeatUntil does: even a slow click can be missed.
    [[nodiscard]] bool clickUntil(double x, double y, const Outcome& outcome) const;
    /// Writes the windows, without menu bar and empty surroundings, as a PNG file. False when nothing was
    /// written.
    [[nodiscard]] bool writeScreenshot(const std::string& file) const;

  private:
    void end(int signal);

    pid_t server_ = -1;
    std::string name_;
    std::string authority_;
};

}  // namespace TestSupport
