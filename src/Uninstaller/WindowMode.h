#pragma once

#include <memory>

#include "Uninstaller/AppDelegate.h"
#include "Uninstaller/ApplicationFramework.h"
#include "Uninstaller/UninstallerWindowController.h"

namespace Uninstall_Sentrel {

/// The program as the application framework sees it: makes the delegate and, once the interface was loaded,
/// the window's controller, and passes the framework's calls on to them.
class WindowProgram final : public ApplicationProgram {
  public:
    explicit WindowProgram(ApplicationFramework& framework);

    [[nodiscard]] std::string interfaceText(const std::string& key) const override;
    [[nodiscard]] std::string resourcePath(const std::string& name, const std::string& type) const override;
    /// The program's own Contents/Frameworks, then the installed product's.
    [[nodiscard]] std::vector<std::string> frameworkFolders() const override;
    [[nodiscard]] std::string version() const override;
    [[nodiscard]] WindowController* interfaceDidLoad(Outlets outlets) override;
    void applicationDidFinishLaunching() override;
    [[nodiscard]] bool applicationShouldTerminate() override;
    [[nodiscard]] bool windowShouldClose() override;
    void uninstallAction() override;
    void cancelAction() override;

  private:
    ApplicationFramework& framework_;
    std::shared_ptr<AppDelegate> delegate_;
    std::unique_ptr<UninstallerWindowController> controller_;
};

/// Hands control to the framework's main routine and, should that return, to the shared application's run
/// loop. If there is no application then, that is a programming error that ends the process.
void runApplication(ApplicationFramework& framework, int argc, char* argv[]);

/// Window mode as a whole: loads Contents/Frameworks/UninstallerWindow.dylib of the main bundle, so that
/// silent mode pays nothing for it, and runs the application. If the library cannot be loaded or there is no
/// display, one line on standard error says so and the function returns.
void runWindowApplication(int argc, char* argv[]);

}  // namespace Uninstall_Sentrel
