#include "Uninstaller/AppDelegate.h"

#include <utility>

#include "Base/FatalError.h"
#include "InstallCommon/InstallationUtils.h"
#include "InstallCommon/IntallHelper.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "NorvikCommon/AuthorizationUtils.h"
#include "NorvikCommon/PrivilegedHelperUtils.h"
#include "Platform/SystemPorts.h"
#include "Uninstaller/LocalizedText.h"

namespace Uninstall_Sentrel {

namespace {

/// A full progress bar.
constexpr double kScale = 100.0;

bool isProductInstalled() {
    const std::unique_ptr<Platform::Bundle> mainBundle =
        Platform::SystemPorts::current().bundles->mainBundle();
    return InstallCommon::InstallationUtils::installationEnvironment().checkNorvikAntivirusInstallType(
               *mainBundle) != InstallCommon::InstallatedNorvikAntivirusType::notInstalled;
}

std::string localizedOK() {
    return localizedText("d129c1", "WebInstaller", "OK");
}

}  // namespace

InstallCommon::InstallationHelperClient& AppDelegate::installationClient() {
    if (installationClient_ == nullptr) {
        installationClient_ = std::make_shared<InstallCommon::InstallationHelperClient>();
    }
    return *installationClient_;
}

void AppDelegate::applicationDidFinishLaunching() {
    if (UninstallerWindowController* controller = windowController(); controller != nullptr) {
        controller->setUninstallBlock([self = shared_from_this()] { self->uninstall(); });
    }
}

bool AppDelegate::applicationShouldTerminate() {
    const UninstallerWindowController* controller = controllerOfTheWindow();
    return controller != nullptr && controller->terminateEnabled();
}

UninstallerWindowController* AppDelegate::windowController() {
    const std::shared_ptr<Window> window = window_.lock();
    return window == nullptr ? nullptr
                             : dynamic_cast<UninstallerWindowController*>(window->windowController());
}

UninstallerWindowController* AppDelegate::controllerOfTheWindow() {
    if (window_.expired()) {
        Base::fatalError("The window is gone.");
    }
    return windowController();
}

void AppDelegate::uninstall() {
    // An alert's request to quit may be refused or may return; the steps below happen anyway.
    if (!isProductInstalled()) {
        showNotInstalledAlertAndTerminateApp();
    }
    if (!installationClient().canUninstall()) {
        showInstalledNewVersionAlertAndTerminateApp();
    }
    if (prepareHelpers()) {
        startUninstallation();
    } else {
        showNotAuthorizedAlertAndTerminateApp();
    }
}

bool AppDelegate::prepareHelpers() {
    using InstallCommon::InstallHelper;
    using InstallCommon::SupportPrivilegedHelperClient;
    const std::unique_ptr<Platform::SFAuthorization> authorization =
        NorvikCommon::AuthorizationUtils::authorizationForRootAction(true);
    return authorization != nullptr &&
           NorvikCommon::BlessHelperWithLabel(std::string(InstallHelper::machServiceName), *authorization) &&
           SupportPrivilegedHelperClient::blessHelper(*authorization) &&
           SupportPrivilegedHelperClient::installSwiftSupportPackage();
}

void AppDelegate::startUninstallation() {
    // Reports arrive on the connection's thread, and the framework is asked on this one.
    Application* application = framework_.sharedApplication();
    if (application == nullptr) {
        Base::fatalError("There is no application.");
    }
    installationClient().setProgressNotificationBlock(
        [self = shared_from_this(), application, scale = kScale](
            const std::string& description, std::int32_t totalWeight, std::int32_t executedWeight) {
            application->performOnMainQueue([self, description, totalWeight, executedWeight, scale] {
                self->showProgress(description, totalWeight, executedWeight, scale);
            });
        });
    installationClient().uninstall();
}

void AppDelegate::showProgress(const std::string& description, std::int32_t totalWeight,
                               std::int32_t executedWeight, double scale) {
    if (const UninstallerWindowController* controller = controllerOfTheWindow(); controller != nullptr) {
        ProgressIndicator* indicator = controller->progressIndicator();
        if (indicator == nullptr) {
            Base::fatalError("The progress bar is gone.");
        }
        indicator->setDoubleValue(static_cast<double>(executedWeight) /
                                  (static_cast<double>(totalWeight) / scale));
    }
    if (const UninstallerWindowController* controller = controllerOfTheWindow(); controller != nullptr) {
        TextField* line = controller->progressDescriptionLabel();
        if (line == nullptr) {
            Base::fatalError("The description line is gone.");
        }
        line->setText(description);
    }
    if (executedWeight != totalWeight) {
        return;
    }
    if (UninstallerWindowController* controller = controllerOfTheWindow(); controller != nullptr) {
        controller->installationFinished();
    }
}

void AppDelegate::showNotInstalledAlertAndTerminateApp() {
    showAlertAndTerminateApp(localizedOK(),
                             formatted(localizedText("204", "macstrings", ""), kAntivirusProductName), "");
}

void AppDelegate::showInstalledNewVersionAlertAndTerminateApp() {
    // Intentionally English in every language, unlike the other two.
    showAlertAndTerminateApp("OK", "Please, use newer uninstaller in order to uninstall application.",
                             "This uninstaller has older version than installed app.");
}

void AppDelegate::showNotAuthorizedAlertAndTerminateApp() {
    showAlertAndTerminateApp(localizedOK(), "You are not authorized to run uninstallation.", "");
}

void AppDelegate::showAlertAndTerminateApp(const std::string& buttonTitle, const std::string& messageText,
                                           const std::string& informativeText) {
    if (const std::unique_ptr<Alert> alert =
            framework_.alertFactory().alertWithButtonTitle(buttonTitle, messageText, informativeText)) {
        alert->runModal();
    }
    if (UninstallerWindowController* controller = windowController(); controller != nullptr) {
        controller->setTerminateEnabled(true);
    }
    if (Application* application = framework_.sharedApplication(); application != nullptr) {
        application->terminate();
    }
}

}  // namespace Uninstall_Sentrel
