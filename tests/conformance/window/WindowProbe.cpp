// A program with a window and nothing behind it: it loads the window's library, says on standard output, one
// line each, what the library tells it, and does what it reads line by line on standard input.
//
//   WindowProbe LIBRARY [KEY=VALUE ...]
//
// KEY is a key of the interface's texts, or "title", "version", "resources" (the folder of the icon),
// "frameworks" (a folder; may be given several times).

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Uninstaller/ApplicationFramework.h"

namespace {

using namespace Uninstall_Sentrel;

void say(const std::string& line) {
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

class Probe : public ApplicationProgram, private WindowController {
  public:
    Probe(ApplicationFramework& framework, const std::vector<std::string>& settings) : framework_(framework) {
        for (const std::string& setting : settings) {
            const std::size_t equals = setting.find('=');
            settings_.emplace(setting.substr(0, equals), setting.substr(equals + 1));
        }
    }

    std::string interfaceText(const std::string& key) const override { return setting(key); }
    std::string resourcePath(const std::string& name, const std::string& type) const override {
        const std::string path = setting("resources") + "/" + name + "." + type;
        return access(path.c_str(), R_OK) == 0 ? path : std::string();
    }
    std::vector<std::string> frameworkFolders() const override {
        std::vector<std::string> folders;
        const auto [begin, end] = settings_.equal_range("frameworks");
        for (auto folder = begin; folder != end; ++folder) {
            folders.push_back(folder->second);
        }
        return folders;
    }
    std::string version() const override { return setting("version"); }

    WindowController* interfaceDidLoad(Outlets outlets) override {
        outlets_ = std::move(outlets);
        const std::shared_ptr<Window> window = outlets_.window.lock();
        say(window == nullptr ? "loaded without a window" : "loaded");
        window->setTitle(setting("title"));
        showProgress(false);
        return this;
    }

    void applicationDidFinishLaunching() override {
        const WindowController* controller = outlets_.window.lock()->windowController();
        say(controller == this ? "launched" : "launched with another controller");
        std::thread([this] { obey(); }).detach();
    }

    bool applicationShouldTerminate() override {
        say("should-terminate");
        return mayTerminate_;
    }

    bool windowShouldClose() override {
        say("should-close");
        return mayClose_;
    }

    void uninstallAction() override { say("uninstall"); }
    void cancelAction() override { say("cancel"); }

  private:
    std::string setting(const std::string& key) const {
        const auto found = settings_.find(key);
        return found == settings_.end() ? std::string() : found->second;
    }

    void showProgress(bool shown) {
        outlets_.progressIndicator.lock()->setHidden(!shown);
        outlets_.progressDescriptionLabel.lock()->setHidden(!shown);
    }

    /// On a separate thread, which AppKit does not know.
    void obey() {
        std::string line;
        while (std::getline(std::cin, line)) {
            std::istringstream words(line);
            std::string command;
            words >> command >> std::ws;
            std::string operand;
            std::getline(words, operand);
            if (command == "post") {
                post(std::stoi(operand));
            } else {
                framework_.sharedApplication()->performOnMainQueue(
                    [this, command, operand] { perform(command, operand); });
            }
        }
    }

    void post(int count) {
        for (int number = 1; number <= count; ++number) {
            framework_.sharedApplication()->performOnMainQueue(
                [number] { say("block " + std::to_string(number)); });
        }
    }

    void perform(const std::string& command, const std::string& operand) {
        using Operation = void (Probe::*)(const std::string&);
        static const std::map<std::string, Operation> operations{
            {"alert", &Probe::alert},
            {"authorize", &Probe::authorize},
            {"description", &Probe::setDescription},
            {"finish", &Probe::finish},
            {"label", &Probe::setLabel},
            {"may-close", &Probe::setMayClose},
            {"may-terminate", &Probe::setMayTerminate},
            {"no-description", &Probe::hideDescription},
            {"progress", &Probe::setProgress},
            {"rename", &Probe::setButtonTitle},
            {"run", &Probe::run},
            {"run-for-ever", &Probe::runForEver},
            {"terminate", &Probe::terminate},
            {"title", &Probe::setTitle},
        };
        (this->*operations.at(command))(operand);
    }

    void alert(const std::string& texts) {
        std::istringstream parts(texts);
        std::string button;
        std::string message;
        std::string informative;
        std::getline(parts, button, '|');
        std::getline(parts, message, '|');
        std::getline(parts, informative, '|');
        const std::unique_ptr<Alert> alert =
            framework_.alertFactory().alertWithButtonTitle(button, message, informative);
        if (alert == nullptr) {
            say("no alert");
            return;
        }
        say("alert");
        alert->runModal();
        say("answered");
    }

    void authorize(const std::string&) {
        const bool authorized = framework_.makeParentalControlAuthorization()->parentalControlAuthorized();
        say(authorized ? "authorized" : "not authorized");
    }

    void run(const std::string&) {
        outlets_.cancelButton->setHidden(true);
        outlets_.uninstallButton->setEnabled(false);
        showProgress(true);
        say("running");
    }

    void hideDescription(const std::string&) { outlets_.progressDescriptionLabel.lock()->setHidden(true); }

    /// Never goes back to the event loop.
    void runForEver(const std::string& operand) {
        run(operand);
        for (;;) {
            pause();
        }
    }

    void finish(const std::string& title) {
        outlets_.uninstallButton->setEnabled(true);
        outlets_.uninstallButton->setTitle(title);
        outlets_.uninstallButton->setAction([] { say("finish"); });
        outlets_.progressDescriptionLabel.lock()->setHidden(true);
        say("finished");
    }

    void setButtonTitle(const std::string& title) { outlets_.uninstallButton->setTitle(title); }
    void setDescription(const std::string& text) { outlets_.progressDescriptionLabel.lock()->setText(text); }
    void setLabel(const std::string& text) {
        outlets_.label->setText(text);
        say("label " + outlets_.label->text());
    }
    void setMayClose(const std::string& answer) { mayClose_ = answer == "yes"; }
    void setMayTerminate(const std::string& answer) { mayTerminate_ = answer == "yes"; }
    void setProgress(const std::string& value) {
        outlets_.progressIndicator.lock()->setDoubleValue(std::stod(value));
    }
    void setTitle(const std::string& text) { outlets_.window.lock()->setTitle(text); }
    void terminate(const std::string&) {
        framework_.sharedApplication()->terminate();
        say("still here");
    }

    ApplicationFramework& framework_;
    std::multimap<std::string, std::string> settings_{};
    Outlets outlets_{};
    bool mayTerminate_ = true;
    bool mayClose_ = true;
};

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 2) {
        std::fputs("usage: WindowProbe LIBRARY [KEY=VALUE ...]\n", stderr);
        return 2;
    }
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    void* symbol = library == nullptr ? nullptr : dlsym(library, kApplicationFrameworkSymbol);
    if (symbol == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 3;
    }
    std::string error;
    ApplicationFramework* framework = reinterpret_cast<ApplicationFrameworkEntry*>(symbol)(&error);
    if (framework == nullptr) {
        say("unavailable: " + error);
        return 0;
    }
    Probe probe(*framework, std::vector<std::string>(argv + 2, argv + argc));
    framework->applicationMain(argc, argv, probe);
    say("came back");
    return 4;
}
