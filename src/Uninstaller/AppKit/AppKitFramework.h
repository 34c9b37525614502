#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "Uninstaller/AppKit/Controls.h"
#include "Uninstaller/ApplicationFramework.h"

namespace Uninstall_Sentrel {

/// The shared NSApplication.
class AppKitApplication : public Application {
  public:
    void activateIgnoringOtherApps() override;
    void terminate() override;
    void run() override;
    void performOnMainQueue(std::function<void()> block) override;
};

/// The port's implementation on AppKit. One per process; it stays until the process ends.
class AppKitFramework : public ApplicationFramework, private AlertFactory {
  public:
    void applicationMain(int argc, char* argv[], ApplicationProgram& program) override;
    Application* sharedApplication() override;
    AlertFactory& alertFactory() override;
    std::unique_ptr<ParentalControlAuthorization> makeParentalControlAuthorization() override;

  private:
    std::unique_ptr<Alert> alertWithButtonTitle(const std::string& buttonTitle,
                                                const std::string& messageText,
                                                const std::string& informativeText) override;
    void makeInterface(ApplicationProgram& program);
    [[nodiscard]] NSArray* frameworkFolders() const;

    AppKitApplication application_{};
    ApplicationProgram* program_ = nullptr;
    std::unique_ptr<InterfaceControls> controls_{};
};

}  // namespace Uninstall_Sentrel
