#pragma once

#include <memory>
#include <string>

#include "InstallCommon/XPC/InstallationHelperClient.h"
#include "Uninstaller/ApplicationFramework.h"
#include "Uninstaller/UninstallerWindowController.h"

namespace Uninstall_Sentrel {

/// The application's delegate: ties the window to the helper client, decides whether the application may
/// quit, and shows the alerts that end it. For the main thread. Owned by a shared pointer, which the window
/// controller's uninstall block shares.
class AppDelegate final : public std::enable_shared_from_this<AppDelegate> {
  public:
    explicit AppDelegate(ApplicationFramework& framework) : framework_(framework) {}

    /// The uninstaller's window; its controller is an UninstallerWindowController.
    void setWindow(std::weak_ptr<Window> window) { window_ = std::move(window); }

    /// Made on first access.
    [[nodiscard]] InstallCommon::InstallationHelperClient& installationClient();

    /// Gives the window controller its uninstall block. A window without such a controller stays as it is.
    void applicationDidFinishLaunching();

    /// True to quit now: the window's controller is an UninstallerWindowController that allows it. Without a
    /// window the process ends, as after any programming error.
    [[nodiscard]] bool applicationShouldTerminate();

  private:
    [[nodiscard]] UninstallerWindowController* windowController();
    /// The same for work that requires a window: ends the process if there is none.
    [[nodiscard]] UninstallerWindowController* controllerOfTheWindow();

    void uninstall();
    [[nodiscard]] bool prepareHelpers();
    void startUninstallation();
    void showProgress(const std::string& description, std::int32_t totalWeight, std::int32_t executedWeight,
                      double scale);

    void showNotInstalledAlertAndTerminateApp();
    void showInstalledNewVersionAlertAndTerminateApp();
    void showNotAuthorizedAlertAndTerminateApp();
    void showAlertAndTerminateApp(const std::string& buttonTitle, const std::string& messageText,
                                  const std::string& informativeText);

    ApplicationFramework& framework_;
    std::weak_ptr<Window> window_;
    std::shared_ptr<InstallCommon::InstallationHelperClient> installationClient_;
};

}  // namespace Uninstall_Sentrel
