#include "Uninstaller/UninstallerWindowController.h"

#include <memory>

#include "Base/FatalError.h"
#include "NorvikCommon/DaemonConnector.h"
#include "Uninstaller/LocalizedText.h"

namespace Uninstall_Sentrel {

std::string kAntivirusProductName = "Sentrel";

namespace {

constexpr const char* kTable = "WebInstaller";

std::string productText(const std::string& key) {
    return formatted(localizedText(key, kTable, ""), kAntivirusProductName);
}

}  // namespace

void UninstallerWindowController::awakeFromNib() {
    terminateEnabled_ = true;
    if (Application* application = framework_.sharedApplication(); application != nullptr) {
        application->activateIgnoringOtherApps();
    }
    if (const std::shared_ptr<Window> window = outlets_.window.lock()) {
        window->setTitle(productText("367"));
    }
    if (outlets_.label != nullptr) {
        outlets_.label->setText(formatted(outlets_.label->text(), kAntivirusProductName));
    }
    if (ProgressIndicator* indicator = progressIndicator(); indicator != nullptr) {
        indicator->setDoubleValue(0);
    }
    setProgressHidden(true);
}

bool UninstallerWindowController::windowShouldClose() {
    if (!terminateEnabled_) {
        return false;
    }
    terminate();
    return true;
}

void UninstallerWindowController::uninstallAction() {
    const std::unique_ptr<ParentalControlAuthorization> parentalControl =
        framework_.makeParentalControlAuthorization();
    if (NorvikCommon::DaemonConnector::rootObject() != nullptr &&
        !(parentalControl != nullptr && parentalControl->parentalControlAuthorized())) {
        return;
    }
    terminateEnabled_ = false;
    if (outlets_.cancelButton != nullptr) {
        outlets_.cancelButton->setHidden(true);
    }
    if (outlets_.uninstallButton != nullptr) {
        outlets_.uninstallButton->setEnabled(false);
    }
    setProgressHidden(false);
    if (!uninstallBlock_) {
        Base::fatalError("The uninstall block is not set.");
    }
    // A copy: the block may replace the one it was called from.
    const std::function<void()> block = uninstallBlock_;
    block();
}

void UninstallerWindowController::cancelAction() {
    terminate();
}

void UninstallerWindowController::finishAction() {
    terminate();
}

void UninstallerWindowController::installationFinished() {
    if (outlets_.uninstallButton != nullptr) {
        outlets_.uninstallButton->setEnabled(true);
        outlets_.uninstallButton->setTitle(localizedText("d234c1075", kTable, ""));
        outlets_.uninstallButton->setAction([this] { finishAction(); });
    }
    if (outlets_.label != nullptr) {
        outlets_.label->setText(productText("368"));
    }
    if (TextField* description = progressDescriptionLabel(); description != nullptr) {
        description->setHidden(true);
    }
    terminateEnabled_ = true;
}

void UninstallerWindowController::terminate() {
    if (Application* application = framework_.sharedApplication(); application != nullptr) {
        application->terminate();
    }
}

void UninstallerWindowController::setProgressHidden(bool hidden) const {
    if (ProgressIndicator* indicator = progressIndicator(); indicator != nullptr) {
        indicator->setHidden(hidden);
    }
    if (TextField* description = progressDescriptionLabel(); description != nullptr) {
        description->setHidden(hidden);
    }
}

}  // namespace Uninstall_Sentrel
