#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace TestSupport {

/// A program that runs beside the test; ended with everything it started when the object goes.
class BackgroundProgram {
  public:
    /// Starts a program found in PATH in a process group of its own, without input; what it writes goes to
    /// `outputFile`.
    BackgroundProgram(const std::vector<std::string>& command, const std::string& outputFile);
    BackgroundProgram(const BackgroundProgram&) = delete;
    BackgroundProgram& operator=(const BackgroundProgram&) = delete;
    ~BackgroundProgram();

    /// Waits for the end at most so long. The exit status, 128 and the number of the signal, or -1 when the
    /// program still runs.
    int wait(int seconds);

  private:
    pid_t pid_ = -1;
    int status_ = -1;
};

/// An X server without a screen, on a display of its own, with a keyboard and a mouse to play with.
class Display {
  public:
    /// Starts the server in `scratch`, where its messages go too. `name` stays empty when it does not come
    /// up.
    explicit Display(const std::string& scratch);
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;
    ~Display();

    /// ":N".
    [[nodiscard]] const std::string& name() const { return name_; }
    /// Moves the mouse to a place counted from the upper left corner and clicks.
    void click(double x, double y) const;
    /// Presses keys as xdotool names them ("Return", "alt+q") in the window that has the focus.
    void press(const std::string& keys) const;
    void type(const std::string& text) const;
    /// Whether a window with this title (a regular expression) is on the screen, waited for at most so long.
    [[nodiscard]] bool shows(const std::string& title, int seconds) const;
    /// Gives the keyboard to the window with this title; there is no window manager that would.
    void focus(const std::string& title) const;
    /// Writes what is on the screen, without the empty surroundings, as a PNG file. False when nothing was
    /// written.
    [[nodiscard]] bool writeScreenshot(const std::string& file) const;

  private:
    void xdotool(const std::vector<std::string>& arguments) const;

    std::string name_;
    pid_t server_ = -1;
};

}  // namespace TestSupport
