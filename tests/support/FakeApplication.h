#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Uninstaller/ApplicationFramework.h"
#include "support/FakeMac.h"

namespace TestSupport {

class FakeTextField final : public Uninstall_Sentrel::TextField {
  public:
    [[nodiscard]] std::string text() const override { return value; }
    void setText(const std::string& text) override { value = text; }
    void setHidden(bool hidden) override { isHidden = hidden; }

    std::string value;
    bool isHidden = false;
};

class FakeButton final : public Uninstall_Sentrel::Button {
  public:
    void setTitle(const std::string& newTitle) override { title = newTitle; }
    void setEnabled(bool enabled) override { isEnabled = enabled; }
    void setHidden(bool hidden) override { isHidden = hidden; }
    void setAction(std::function<void()> newAction) override { action = std::move(newAction); }
    /// What a click does: nothing to a button that is disabled or hidden.
    void press() const;

    std::string title;
    bool isEnabled = true;
    bool isHidden = false;
    std::function<void()> action;
};

class FakeProgressIndicator final : public Uninstall_Sentrel::ProgressIndicator {
  public:
    void setDoubleValue(double newValue) override {
        value = newValue;
        values.push_back(newValue);
    }
    void setHidden(bool hidden) override { isHidden = hidden; }

    double value = -1;
    /// All values, in the order in which they were set.
    std::vector<double> values;
    bool isHidden = false;
};

class FakeWindow final : public Uninstall_Sentrel::Window {
  public:
    void setTitle(const std::string& newTitle) override { title = newTitle; }
    [[nodiscard]] Uninstall_Sentrel::WindowController* windowController() const override {
        return controller;
    }

    std::string title;
    Uninstall_Sentrel::WindowController* controller = nullptr;
};

/// An application framework without a screen: requests to it go into the Mac's list of calls. Blocks for the
/// main queue wait until `drainMainQueue`.
class FakeApplicationFramework final : public Uninstall_Sentrel::ApplicationFramework,
                                       public Uninstall_Sentrel::Application,
                                       public Uninstall_Sentrel::AlertFactory {
  public:
    explicit FakeApplicationFramework(FakeMac& mac) : calls_(mac.calls) {}

    void applicationMain(int argc, char* argv[], Uninstall_Sentrel::ApplicationProgram& program) override;
    [[nodiscard]] Application* sharedApplication() override { return hasApplication ? this : nullptr; }
    [[nodiscard]] Uninstall_Sentrel::AlertFactory& alertFactory() override { return *this; }
    [[nodiscard]] std::unique_ptr<Uninstall_Sentrel::ParentalControlAuthorization>
    makeParentalControlAuthorization() override;

    void activateIgnoringOtherApps() override { calls_.push_back({"activate"}); }
    void terminate() override;
    void run() override { calls_.push_back({"run"}); }
    void performOnMainQueue(std::function<void()> block) override;
    [[nodiscard]] std::unique_ptr<Uninstall_Sentrel::Alert> alertWithButtonTitle(
        const std::string& buttonTitle, const std::string& messageText,
        const std::string& informativeText) override;

    /// Runs the blocks that wait for the main queue, in order.
    void drainMainQueue();
    /// The interface as it is loaded.
    [[nodiscard]] Uninstall_Sentrel::Outlets outlets() const;

    bool hasApplication = true;
    bool makesAlerts = true;
    bool parentalControlApproves = true;
    /// What quitting asks first; empty for nobody.
    std::function<bool()> shouldTerminate;
    /// How many requests to quit were granted.
    int terminations = 0;
    std::vector<std::function<void()>> mainQueue;
    /// What applicationMain does with the program, in place of an event loop.
    std::function<void(Uninstall_Sentrel::ApplicationProgram&)> session;

    std::shared_ptr<FakeWindow> window = std::make_shared<FakeWindow>();
    std::shared_ptr<FakeTextField> label = std::make_shared<FakeTextField>();
    std::shared_ptr<FakeButton> uninstallButton = std::make_shared<FakeButton>();
    std::shared_ptr<FakeButton> cancelButton = std::make_shared<FakeButton>();
    std::shared_ptr<FakeProgressIndicator> progressIndicator = std::make_shared<FakeProgressIndicator>();
    std::shared_ptr<FakeTextField> progressDescription = std::make_shared<FakeTextField>();

  private:
    CallList& calls_;
};

}  // namespace TestSupport
