#include "system/window/WindowedMac.h"

#include <chrono>
#include <filesystem>
#include <thread>

#include <nlohmann/json.hpp>

#include "support/WholeFile.h"

namespace SystemTests {

namespace {

constexpr const char* kSpy = "/Users/alice/InterfaceSpy.so";
constexpr const char* kReport = "/tmp/interface.json";
constexpr const char* kAdministratorDialog = "SecurityAgent";
constexpr const char* kParentalControlDialog = "Parental control";

Interface::Control control(const nlohmann::json& facts) {
    Interface::Control control;
    control.kind = facts.value("kind", "");
    control.text = facts.value("text", "");
    control.isHidden = facts.value("hidden", 0) != 0;
    control.isEnabled = facts.value("enabled", 1) != 0;
    control.isDefault = facts.value("key", "") == "\r";
    control.value = facts.value("value", 0.0);
    const std::vector<double> frame = facts.value("frame", std::vector<double>{0, 0, 0, 0});
    control.x = frame.at(0) + frame.at(2) / 2;
    control.y = frame.at(1) + frame.at(3) / 2;
    return control;
}

Interface::Window window(const nlohmann::json& facts) {
    Interface::Window window;
    window.title = facts.value("title", "");
    for (const nlohmann::json& each : facts.value("controls", nlohmann::json::array())) {
        window.controls.push_back(control(each));
    }
    if (facts.contains("closeBox")) {
        const std::vector<double> frame = facts["closeBox"];
        window.closeBox = {frame.at(0) + frame.at(2) / 2, frame.at(1) + frame.at(3) / 2};
    }
    return window;
}

std::vector<std::string> withUser(std::vector<std::string> options, const std::string& language) {
    options.insert(options.end(), {"--users", "alice:501", "--language", language});
    return options;
}

const Interface::Control* find(const Interface::Window& window, const std::string& kind,
                               const std::optional<std::string>& text) {
    for (const Interface::Control& each : window.controls) {
        if (each.kind == kind && !each.isHidden && (!text || each.text == *text)) {
            return &each;
        }
    }
    return nullptr;
}

}  // namespace

std::vector<const Interface::Control*> Interface::Window::buttons() const {
    std::vector<const Control*> found;
    for (const Control& each : controls) {
        if (each.kind == "button" && !each.isHidden) {
            found.push_back(&each);
        }
    }
    return found;
}

const Interface::Control* Interface::Window::button(const std::string& buttonTitle) const {
    return find(*this, "button", buttonTitle);
}

const Interface::Control* Interface::Window::text(const std::string& wanted) const {
    return find(*this, "text", wanted);
}

const Interface::Control* Interface::Window::progress() const {
    return find(*this, "progress", std::nullopt);
}

const Interface::Window* Interface::main() const {
    for (const Window& each : windows) {
        for (const Control& control : each.controls) {
            if (control.kind == "progress") {
                return &each;
            }
        }
    }
    return nullptr;
}

bool Interface::isReady() const {
    const Window* window = main();
    return window != nullptr && window->progress() == nullptr && window->buttons().size() == 2 &&
           window->buttons().at(0)->isEnabled && window->buttons().at(1)->isEnabled;
}

bool Interface::isRunning() const {
    const Window* window = main();
    return window != nullptr && window->progress() != nullptr && window->buttons().size() == 1 &&
           !window->buttons().at(0)->isEnabled;
}

bool Interface::isFinished() const {
    const Window* window = main();
    return window != nullptr && window->progress() != nullptr && window->buttons().size() == 1 &&
           window->buttons().at(0)->isEnabled;
}

const Interface::Window* Interface::windowWithText(const std::string& text) const {
    for (const Window& each : windows) {
        if (each.text(text) != nullptr) {
            return &each;
        }
    }
    return nullptr;
}

WindowedMac::WindowedMac(const std::vector<std::string>& createOptions,
                         const std::vector<std::string>& faults, const std::string& language)
    : mac_(withUser(createOptions, language)), faults_(faults) {
    if (!mac_.exists(kInstalledUninstaller)) {
        mac_.putUninstaller("/Users/alice/Downloads");
    }
    mac_.putCopy(kSpy, std::string(SENTREL_FIXTURES) + "/InterfaceSpy.so");
}

void WindowedMac::start() {
    std::vector<std::string> command{TestSupport::SimulatedMac::macsim(),
                                     "run",
                                     mac_.path(),
                                     "--as",
                                     "alice",
                                     "--display",
                                     display_.name()};
    for (const std::string& fault : faults_) {
        command.insert(command.end(), {"--fault", fault});
    }
    command.insert(
        command.end(),
        {"--", "/usr/bin/env", std::string("LD_PRELOAD=") + kSpy, std::string("INTERFACE_SPY=") + kReport,
         mac_.exists(kInstalledUninstaller) ? kInstalledUninstaller : kDownloadedUninstaller});
    program_ = std::make_unique<TestSupport::BackgroundProgram>(command, mac_.scratch() + "/terminal.txt");
}

Interface WindowedMac::now() const {
    Interface shown;
    const auto report = nlohmann::json::parse(mac_.contents(kReport), nullptr, false);
    if (report.is_object()) {
        for (const nlohmann::json& each : report.value("windows", nlohmann::json::array())) {
            shown.windows.push_back(window(each));
        }
    }
    return shown;
}

std::optional<Interface> WindowedMac::waitFor(const std::function<bool(const Interface&)>& condition,
                                              std::chrono::seconds limit) const {
    Interface shown;
    const bool isSeen = TestSupport::comesTrue(
        [&] {
            shown = now();
            return condition(shown);
        },
        limit);
    return isSeen ? std::optional(shown) : std::nullopt;
}

bool WindowedMac::pressUninstall() const {
    const std::optional<Interface> shown = waitFor([](const Interface& now) { return now.isReady(); });
    if (!shown) {
        return false;
    }
    for (const Interface::Control* button : shown->main()->buttons()) {
        if (button->isDefault) {
            return clickUntil(*button, [this](auto limit) { return waitForAnswer(limit); });
        }
    }
    return false;
}

bool WindowedMac::hasEnded() const {
    return program_->wait(std::chrono::seconds(0)) != -1;
}

bool WindowedMac::waitForAnswer(std::chrono::seconds limit) const {
    return TestSupport::comesTrue(
        [this] {
            const Interface shown = now();
            return hasEnded() || !shown.isReady() || shown.windows.size() > 1 ||
                   display_.shows(kParentalControlDialog) || display_.shows(kAdministratorDialog);
        },
        limit);
}

bool WindowedMac::giveAdministratorPassword(const std::string& password,
                                            const std::string& screenshot) const {
    if (!display_.waitForWindow(kAdministratorDialog)) {
        return false;
    }
    if (!screenshot.empty() && !writeScreenshot(screenshot)) {
        return false;
    }
    display_.type(password);
    display_.press("Return");
    return true;
}

bool WindowedMac::cancelAdministratorDialog() const {
    if (!display_.waitForWindow(kAdministratorDialog)) {
        return false;
    }
    display_.press("Escape");
    return true;
}

bool WindowedMac::answerAlert(const std::string& message, const std::string& screenshot) const {
    const std::optional<Interface> shown =
        waitFor([&message](const Interface& now) { return now.windowWithText(message) != nullptr; });
    if (!shown || (!screenshot.empty() && !writeScreenshot(screenshot))) {
        return false;
    }
    const std::vector<const Interface::Control*> buttons = shown->windowWithText(message)->buttons();
    if (buttons.size() != 1) {
        return false;
    }
    return clickUntil(*buttons.front(), [&](auto limit) {
        return TestSupport::comesTrue([&] { return hasEnded() || now().windowWithText(message) == nullptr; },
                                      limit);
    });
}

std::string WindowedMac::terminal() const {
    return TestSupport::contentsOf(mac_.scratch() + "/terminal.txt");
}

bool WindowedMac::writeScreenshot(const std::string& name) const {
    std::filesystem::create_directories(SENTREL_SCREENSHOTS);
    // What a control drew last may still be on its way to the screen.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    return display_.writeScreenshot(std::string(SENTREL_SCREENSHOTS) + "/" + name + ".png");
}

}  // namespace SystemTests
