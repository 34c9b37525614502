#pragma once

#include <functional>
#include <string>

#include "Uninstaller/ApplicationFramework.h"

namespace Uninstall_Sentrel {

/// The product's display name; fills the %@ of the localized texts. A program for another edition sets it
/// before the interface is loaded.
extern std::string kAntivirusProductName;

/// Owns the controls of the uninstaller's window, the state of its buttons, and whether the application may
/// quit. For the main thread; nothing is logged. A control that the interface lacks is passed over.
class UninstallerWindowController final : public WindowController {
  public:
    UninstallerWindowController(ApplicationFramework& framework, Outlets outlets)
        : framework_(framework), outlets_(std::move(outlets)) {}

    /// Call this once, after the interface was loaded: allows quitting, brings the application to the front,
    /// fills the texts ("367" of the table WebInstaller is the title; the label's own text is a format),
    /// hides the progress bar, which stands at 0, and the description line.
    void awakeFromNib();

    /// Whether the window may close now. Asks the application to quit if it may.
    [[nodiscard]] bool windowShouldClose();

    /// Uninstall was pressed. If the product's daemon runs and its parental control does not approve, nothing
    /// changes; otherwise the window goes into its running state (no Cancel, no quitting, progress shown) and
    /// the uninstall block is called. An unset block is a programming error that ends the process.
    void uninstallAction();
    /// Asks the application to quit.
    void cancelAction();
    /// The same, for the Uninstall button after completion.
    void finishAction();
    /// The window's last state: the Uninstall button becomes the finish button (title "d234c1075" of
    /// WebInstaller), the label announces the completion ("368"), the description line goes, the bar stays as
    /// it is, quitting is allowed.
    void installationFinished();

    [[nodiscard]] ProgressIndicator* progressIndicator() const {
        return outlets_.progressIndicator.lock().get();
    }
    [[nodiscard]] TextField* progressDescriptionLabel() const {
        return outlets_.progressDescriptionLabel.lock().get();
    }

    /// Whether the window may close and the application may quit.
    [[nodiscard]] bool terminateEnabled() const { return terminateEnabled_; }
    void setTerminateEnabled(bool enabled) { terminateEnabled_ = enabled; }
    /// The work to start when Uninstall is pressed.
    void setUninstallBlock(std::function<void()> block) { uninstallBlock_ = std::move(block); }

  private:
    void terminate();
    void setProgressHidden(bool hidden) const;

    ApplicationFramework& framework_;
    Outlets outlets_;
    bool terminateEnabled_ = false;
    std::function<void()> uninstallBlock_;
};

}  // namespace Uninstall_Sentrel
