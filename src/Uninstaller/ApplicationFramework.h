#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Uninstall_Sentrel {

// The port to the application framework (AppKit): the few controls of the one window, and the application
// around them. Its one implementation that draws lies in AppKit/ and is loaded when a window is wanted; unit
// tests have a fake. Everything here is used on the main thread only, except Application::performOnMainQueue.
// Texts are UTF-8. Nothing is logged.

class TextField {
  public:
    virtual ~TextField() = default;

    [[nodiscard]] virtual std::string text() const = 0;
    virtual void setText(const std::string& text) = 0;
    virtual void setHidden(bool hidden) = 0;
};

class Button {
  public:
    virtual ~Button() = default;

    virtual void setTitle(const std::string& title) = 0;
    virtual void setEnabled(bool enabled) = 0;
    virtual void setHidden(bool hidden) = 0;
    /// Sets the effect of a press.
    virtual void setAction(std::function<void()> action) = 0;
};

/// A determinate progress bar from 0 to 100.
class ProgressIndicator {
  public:
    virtual ~ProgressIndicator() = default;

    virtual void setDoubleValue(double value) = 0;
    virtual void setHidden(bool hidden) = 0;
};

class MenuItem {
  public:
    virtual ~MenuItem() = default;
};

/// Base of every window controller.
class WindowController {
  public:
    virtual ~WindowController() = default;
};

class Window {
  public:
    virtual ~Window() = default;

    virtual void setTitle(const std::string& title) = 0;
    /// Null if the window has none. Owned by the program.
    [[nodiscard]] virtual WindowController* windowController() const = 0;
};

/// The running application (NSApplication).
class Application {
  public:
    virtual ~Application() = default;

    virtual void activateIgnoringOtherApps() = 0;
    /// Asks the program's applicationShouldTerminate and, if it agrees, ends the process with status 0.
    /// Returns if it does not.
    virtual void terminate() = 0;
    /// Runs the event loop until the application is stopped.
    virtual void run() = 0;
    /// Runs `block` on the main thread, even while an alert is open, after those that were handed over
    /// before; returns at once. May be called on any thread.
    virtual void performOnMainQueue(std::function<void()> block) = 0;
};

/// A modal alert with one button.
class Alert {
  public:
    virtual ~Alert() = default;
    /// Shows the alert and returns once it was answered.
    virtual void runModal() = 0;
};

/// The maker's QVSAlertFactory.
class AlertFactory {
  public:
    virtual ~AlertFactory() = default;
    /// Null if no alert can be made.
    [[nodiscard]] virtual std::unique_ptr<Alert> alertWithButtonTitle(const std::string& buttonTitle,
                                                                      const std::string& messageText,
                                                                      const std::string& informativeText) = 0;
};

/// The maker's QVSParentalControlAuthorization.
class ParentalControlAuthorization {
  public:
    virtual ~ParentalControlAuthorization() = default;
    /// True if the product's parental-control lock is off or the user unlocks it. May show a dialog and wait
    /// for the user.
    [[nodiscard]] virtual bool parentalControlAuthorized() = 0;
};

/// The controls of the interface. Those that the window controller holds strongly are shared; the others are
/// owned by the window alone. Any of them may be absent.
struct Outlets {
    std::weak_ptr<Window> window{};
    std::shared_ptr<TextField> label{};
    std::shared_ptr<Button> uninstallButton{};
    std::shared_ptr<Button> cancelButton{};
    std::shared_ptr<MenuItem> aboutMenuItem{};
    std::shared_ptr<MenuItem> hideMenuItem{};
    std::shared_ptr<MenuItem> quitMenuItem{};
    std::weak_ptr<ProgressIndicator> progressIndicator{};
    std::weak_ptr<TextField> progressDescriptionLabel{};
};

/// What the program tells the framework, and how the framework calls it back.
class ApplicationProgram {
  public:
    virtual ~ApplicationProgram() = default;

    /// An interface text that no operation of the program sets: "headline", "label" (a format with one %@ for
    /// the product's name), "uninstall", "cancel", "duration" (the description line before the first report),
    /// and for the menu "about", "hide", "quit" (complete, with the program's name).
    [[nodiscard]] virtual std::string interfaceText(const std::string& key) const = 0;
    /// Absolute path of a file in the bundle's Resources; empty if it does not exist.
    [[nodiscard]] virtual std::string resourcePath(const std::string& name,
                                                   const std::string& type) const = 0;
    /// Folders, absolute, that may hold the maker's frameworks, in the order to try.
    [[nodiscard]] virtual std::vector<std::string> frameworkFolders() const = 0;
    /// The short version and the build, for the About panel; empty when unknown.
    [[nodiscard]] virtual std::string version() const = 0;

    /// The interface was loaded (awakeFromNib). Returns the controller of the window.
    [[nodiscard]] virtual WindowController* interfaceDidLoad(Outlets outlets) = 0;
    virtual void applicationDidFinishLaunching() = 0;
    [[nodiscard]] virtual bool applicationShouldTerminate() = 0;
    [[nodiscard]] virtual bool windowShouldClose() = 0;
    virtual void uninstallAction() = 0;
    virtual void cancelAction() = 0;
};

/// The framework as a whole.
class ApplicationFramework {
  public:
    virtual ~ApplicationFramework() = default;

    /// The framework's main routine (NSApplicationMain): makes the application, loads the interface, reports
    /// to `program` and runs the event loop. Does not normally return: quitting ends the process.
    virtual void applicationMain(int argc, char* argv[], ApplicationProgram& program) = 0;
    /// The shared application object; null if there is none.
    [[nodiscard]] virtual Application* sharedApplication() = 0;
    [[nodiscard]] virtual AlertFactory& alertFactory() = 0;
    [[nodiscard]] virtual std::unique_ptr<ParentalControlAuthorization>
    makeParentalControlAuthorization() = 0;
};

/// The one symbol of the window's library: a function of this type, which returns the framework of the
/// process. If no window can be shown here, sets `error` and returns null.
using ApplicationFrameworkEntry = ApplicationFramework*(std::string* error);
inline constexpr const char* kApplicationFrameworkSymbol = "SentrelApplicationFramework";

}  // namespace Uninstall_Sentrel
