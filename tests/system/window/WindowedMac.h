#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/BackgroundProgram.h"
#include "support/ProductMac.h"
#include "support/VirtualDisplay.h"

namespace SystemTests {

/// The uninstaller where `WindowedMac::start` finds it when the product is not there.
inline const std::string kDownloadedUninstaller =
    "/Users/alice/Downloads/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel";

/// What the uninstaller's interface shows at one moment.
struct Interface {
    struct Control {
        std::string kind;  ///< "button", "text" or "progress"
        std::string text;
        bool isHidden = false;
        bool isEnabled = true;
        bool isDefault = false;  ///< Return presses it
        double value = 0;
        double x = 0;  ///< its middle, from the upper left corner of the screen
        double y = 0;
    };
    struct Window {
        std::string title;
        std::vector<Control> controls;
        std::optional<std::pair<double, double>> closeBox;

        /// The visible buttons, in the order of the views.
        [[nodiscard]] std::vector<const Control*> buttons() const;
        /// The visible button with this title; null if there is none.
        [[nodiscard]] const Control* button(const std::string& buttonTitle) const;
        /// The visible text that is exactly this; null if there is none.
        [[nodiscard]] const Control* text(const std::string& wanted) const;
        /// The progress bar; null while it is hidden.
        [[nodiscard]] const Control* progress() const;
    };
    std::vector<Window> windows;

    /// The uninstaller's window (the one with a progress bar, hidden or not); null when it is not there.
    [[nodiscard]] const Window* main() const;
    /// Its states: Uninstall and Cancel, no progress; one button that is disabled, and progress; one that
    /// works, and progress.
    [[nodiscard]] bool isReady() const;
    [[nodiscard]] bool isRunning() const;
    [[nodiscard]] bool isFinished() const;
    /// The first window that has a visible text which is exactly this: an alert by its message.
    [[nodiscard]] const Window* windowWithText(const std::string& text) const;
};

/// A simulated Mac with a screen, in which an ordinary user runs the uninstaller with its window.
class WindowedMac {
  public:
    /// `createOptions` are macsim's, `faults` those of the run, `language` the user's.
    explicit WindowedMac(const std::vector<std::string>& createOptions,
                         const std::vector<std::string>& faults = {}, const std::string& language = "en");

    /// Starts the uninstaller; in a Mac without the product, a downloaded copy.
    void start();
    /// Waits until the interface is such that `condition` holds, and returns it; nothing if it does not
    /// within `limit`.
    [[nodiscard]] std::optional<Interface> waitFor(const std::function<bool(const Interface&)>& condition,
                                                   std::chrono::seconds limit = TestSupport::kPatience) const;
    /// The current contents of the window.
    [[nodiscard]] Interface now() const;
    void click(const Interface::Control& control) const { display_.click(control.x, control.y); }
    /// Clicks it again until `outcome` comes, as VirtualDisplay::clickUntil.
    [[nodiscard]] bool clickUntil(const Interface::Control& control,
                                  const TestSupport::VirtualDisplay::Outcome& outcome) const {
        return display_.clickUntil(control.x, control.y, outcome);
    }
    /// Waits for the ready window and presses its Uninstall button until it is answered: by a dialog, an
    /// alert, another state of the window or the program's end. False when the window or the answer does not
    /// come.
    [[nodiscard]] bool pressUninstall() const;
    /// Waits for the administrator dialog, writes a screenshot if it has a name for it, and answers with this
    /// password, or with Escape. False if there is no dialog.
    [[nodiscard]] bool giveAdministratorPassword(const std::string& password,
                                                 const std::string& screenshot = "") const;
    [[nodiscard]] bool cancelAdministratorDialog() const;
    /// Waits for an alert with this message, writes a screenshot if it has a name for it, and presses its one
    /// button until the alert goes or the program ends. False if there is no such alert, it does not have
    /// exactly one button, or stays.
    [[nodiscard]] bool answerAlert(const std::string& message, const std::string& screenshot = "") const;
    /// The uninstaller's exit status, waited for; -1 when it still runs.
    int exitStatus(std::chrono::seconds limit = TestSupport::kPatience) {
        return program_ ? program_->wait(limit) : -1;
    }

    [[nodiscard]] ProductMac& mac() { return mac_; }
    [[nodiscard]] const TestSupport::VirtualDisplay& display() const { return display_; }
    /// What macsim and the uninstaller wrote to the terminal.
    [[nodiscard]] std::string terminal() const;
    /// Writes build/screenshots/`name`.png.
    [[nodiscard]] bool writeScreenshot(const std::string& name) const;

  private:
    [[nodiscard]] bool hasEnded() const;
    [[nodiscard]] bool waitForAnswer(std::chrono::seconds limit) const;

    ProductMac mac_;
    TestSupport::VirtualDisplay display_;
    std::vector<std::string> faults_;
    std::unique_ptr<TestSupport::BackgroundProgram> program_;
};

}  // namespace SystemTests
