// The window and an alert, made, looked at and closed. Nothing is pressed, and nothing is behind the buttons.

#import <Foundation/Foundation.h>

#include <array>
#include <cstdlib>
#include <cstring>

#include "Check.h"
#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/SystemPorts.h"
#include "Report.h"
#include "Uninstaller/ApplicationFramework.h"

namespace Selftest {

namespace {

using namespace Uninstall_Sentrel;

/// Of the application that is built beside this program.
Base::URL bundle() {
    const std::string own = Platform::Darwin::text([[NSBundle mainBundle] executablePath]);
    return Base::URL::fileURL(own).deletingLastPathComponent().appendingPathComponent(
        "Uninstall Sentrel.app");
}

/// Ends the modal session of an alert as its button would.
void abortModal() {
    const id application = [NSClassFromString(@"NSApplication") performSelector:@selector(sharedApplication)];
    [application performSelector:@selector(abortModal)];
}

/// Shows the window for a moment, an alert for another, and ends the process with its outcome.
class Showing final : public ApplicationProgram, public WindowController {
  public:
    explicit Showing(ApplicationFramework& framework) : framework_(framework) {}

    [[nodiscard]] std::string interfaceText(const std::string& key) const override {
        return key == "label" ? "%@ will not be removed: this is a test." : "Test: " + key;
    }
    [[nodiscard]] std::string resourcePath(const std::string& name, const std::string& type) const override {
        const auto opened = Platform::SystemPorts::current().bundles->open(bundle());
        const std::optional<Base::URL> found = opened ? opened->resource(name, type) : std::nullopt;
        return found ? found->path() : std::string();
    }
    [[nodiscard]] std::vector<std::string> frameworkFolders() const override { return {}; }
    [[nodiscard]] std::string version() const override { return "0"; }

    [[nodiscard]] WindowController* interfaceDidLoad(Outlets outlets) override {
        outlets_ = std::move(outlets);
        return this;
    }
    void applicationDidFinishLaunching() override {
        framework_.sharedApplication()->performOnMainQueue([this] { show(); });
    }
    [[nodiscard]] bool applicationShouldTerminate() override { return true; }
    [[nodiscard]] bool windowShouldClose() override { return true; }
    void uninstallAction() override {}
    void cancelAction() override {}

  private:
    [[nodiscard]] std::string fault() const {
        const std::shared_ptr<Window> window = outlets_.window.lock();
        if (window == nullptr || window->windowController() != this) {
            return "there is no window, or another controller's";
        }
        if (outlets_.label == nullptr || outlets_.uninstallButton == nullptr ||
            outlets_.cancelButton == nullptr || outlets_.progressIndicator.expired() ||
            outlets_.progressDescriptionLabel.expired()) {
            return "a control of the window is missing";
        }
        outlets_.label->setText("Text");
        if (outlets_.label->text() != "Text") {
            return "the label does not keep its text";
        }
        return {};
    }

    void show() {
        if (const std::string why = fault(); !why.empty()) {
            end(failed(why));
            return;
        }
        outlets_.progressIndicator.lock()->setDoubleValue(50.0);
        const std::unique_ptr<Alert> alert =
            framework_.alertFactory().alertWithButtonTitle("OK", "Test", "This alert closes by itself.");
        if (alert == nullptr) {
            end(failed("no alert can be made"));
            return;
        }
        // Runs while the alert is open: that it closes shows that such blocks do.
        framework_.sharedApplication()->performOnMainQueue([] { abortModal(); });
        alert->runModal();
        end(passed("window and alert shown and closed"));
    }

    void end(const Outcome& outcome) {
        printOutcome(outcome);
        framework_.sharedApplication()->terminate();
        std::_Exit(1);
    }

    ApplicationFramework& framework_;
    Outlets outlets_;
};

ApplicationFramework* loadFramework(std::string& error) {
    void* address = nullptr;
    const Base::URL library = bundle().appendingPathComponent("Contents/Frameworks/UninstallerWindow.dylib");
    if (const auto failure = Platform::SystemPorts::current().codeModules->load(
            library, kApplicationFrameworkSymbol, address)) {
        error = failure->description;
        return nullptr;
    }
    ApplicationFrameworkEntry* entry = nullptr;
    std::memcpy(&entry, &address, sizeof entry);
    return entry(&error);
}

Outcome checkWindow() {
    if (!Platform::SystemPorts::current().files->itemExists(bundle())) {
        return skipped("there is no Uninstall Sentrel.app beside this program");
    }
    std::string error;
    ApplicationFramework* const framework = loadFramework(error);
    if (framework == nullptr) {
        return error == "There is no graphical session." ? skipped(error) : failed(error);
    }
    static auto* const showing = new Showing(*framework);
    std::array<char, 1> name{};
    std::array<char*, 2> arguments{name.data(), nullptr};
    framework->applicationMain(1, arguments.data(), *showing);
    framework->sharedApplication()->run();
    return failed("the application ended without showing anything");
}

}  // namespace

Checks windowChecks() {
    return {{"window.shown", checkWindow}};
}

}  // namespace Selftest
