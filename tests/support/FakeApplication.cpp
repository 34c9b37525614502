#include "support/FakeApplication.h"

#include <utility>

namespace TestSupport {

namespace {

class FakeAlert final : public Uninstall_Sentrel::Alert {
  public:
    FakeAlert(CallList& calls, Call shown) : calls_(calls), shown_(std::move(shown)) {}
    void runModal() override { calls_.push_back(shown_); }

  private:
    CallList& calls_;
    Call shown_;
};

class FakeParentalControl final : public Uninstall_Sentrel::ParentalControlAuthorization {
  public:
    FakeParentalControl(CallList& calls, bool approves) : calls_(calls), approves_(approves) {}
    [[nodiscard]] bool parentalControlAuthorized() override {
        calls_.push_back({"parental control asked"});
        return approves_;
    }

  private:
    CallList& calls_;
    bool approves_;
};

}  // namespace

void FakeButton::press() const {
    if (isEnabled && !isHidden && action) {
        action();
    }
}

void FakeApplicationFramework::applicationMain(int argc, char* argv[],
                                               Uninstall_Sentrel::ApplicationProgram& program) {
    Call call("main");
    call.operands.assign(argv, argv + argc);
    calls_.push_back(std::move(call));
    if (session) {
        session(program);
    }
}

std::unique_ptr<Uninstall_Sentrel::ParentalControlAuthorization>
FakeApplicationFramework::makeParentalControlAuthorization() {
    calls_.push_back({"parental control made"});
    return std::make_unique<FakeParentalControl>(calls_, parentalControlApproves);
}

void FakeApplicationFramework::terminate() {
    calls_.push_back({"terminate"});
    if (!shouldTerminate || shouldTerminate()) {
        ++terminations;
    }
}

void FakeApplicationFramework::performOnMainQueue(std::function<void()> block) {
    mainQueue.push_back(std::move(block));
}

void FakeApplicationFramework::drainMainQueue() {
    while (!mainQueue.empty()) {
        const std::vector<std::function<void()>> blocks = std::exchange(mainQueue, {});
        for (const std::function<void()>& block : blocks) {
            block();
        }
    }
}

std::unique_ptr<Uninstall_Sentrel::Alert> FakeApplicationFramework::alertWithButtonTitle(
    const std::string& buttonTitle, const std::string& messageText, const std::string& informativeText) {
    if (!makesAlerts) {
        calls_.push_back({"no alert", buttonTitle, messageText, informativeText});
        return nullptr;
    }
    return std::make_unique<FakeAlert>(calls_, Call("alert", buttonTitle, messageText, informativeText));
}

Uninstall_Sentrel::Outlets FakeApplicationFramework::outlets() const {
    Uninstall_Sentrel::Outlets outlets;
    outlets.window = window;
    outlets.label = label;
    outlets.uninstallButton = uninstallButton;
    outlets.cancelButton = cancelButton;
    outlets.progressIndicator = progressIndicator;
    outlets.progressDescriptionLabel = progressDescription;
    return outlets;
}

}  // namespace TestSupport
