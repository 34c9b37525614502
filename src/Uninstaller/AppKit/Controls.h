#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "Uninstaller/ApplicationFramework.h"

@class SNTUninstallerInterface;

namespace Uninstall_Sentrel {

/// The window and the controls of the port, over those of AppKit. They keep pointers only: window and menu
/// live as long as the process. Main thread only.
class InterfaceControls {
  public:
    InterfaceControls(SNTUninstallerInterface* interface, ApplicationProgram& program);

    [[nodiscard]] Outlets outlets() const;
    /// Sets what Window::windowController returns.
    void setWindowController(WindowController* controller);

  private:
    class WindowOutlet;
    std::shared_ptr<WindowOutlet> window_{};
    std::shared_ptr<ProgressIndicator> progressIndicator_{};
    std::shared_ptr<TextField> progressDescriptionLabel_{};
    std::shared_ptr<TextField> label_{};
    std::shared_ptr<Button> uninstallButton_{};
    std::shared_ptr<Button> cancelButton_{};
    std::shared_ptr<MenuItem> aboutMenuItem_{};
    std::shared_ptr<MenuItem> hideMenuItem_{};
    std::shared_ptr<MenuItem> quitMenuItem_{};
};

}  // namespace Uninstall_Sentrel
