#include "Uninstaller/AppKit/Controls.h"

#include <utility>

#include "Platform/Foundation/ExceptionGuard.h"
#include "Platform/Foundation/FoundationStrings.h"
#include "Uninstaller/AppKit/System.h"
#import "Uninstaller/AppKit/UninstallerInterface.h"

/// Target of a button.
@interface SNTButtonTarget : NSObject {
    // A std::function<void()>*: the runtime cannot describe the type.
    void* action_;
}
/// Takes over `action`, a std::function<void()>*.
- (void)setAction:(void*)action;
- (void)press:(id)sender;
@end

@implementation SNTButtonTarget

- (void)setAction:(void*)action {
    delete static_cast<std::function<void()>*>(action_);
    action_ = action;
}

- (void)press:(id)sender {
    (void)sender;
    // A copy: the action may give the button another one.
    const std::function<void()> action = *static_cast<std::function<void()>*>(action_);
    if (action) {
        action();
    }
}

@end

namespace Uninstall_Sentrel {

using Platform::Foundation::foundationString;
using Platform::Foundation::runGuarded;

namespace {

/// Work that follows on this thread may wait for the user elsewhere: by then the window shows the change.
void showNow(NSView* view) {
    SNTShowChanges([view window]);
}

class TextFieldOutlet : public TextField {
  public:
    TextFieldOutlet(NSTextField* field, SNTUninstallerInterface* interface)
        : field_(field), interface_(interface) {}

    std::string text() const override {
        std::string text;
        runGuarded([&] { text = Platform::Foundation::text([field_ stringValue]); });
        return text;
    }

    void setText(const std::string& text) override {
        runGuarded([&] {
            [field_ setStringValue:foundationString(text)];
            [interface_ layOut];
        });
    }

    void setHidden(bool hidden) override {
        runGuarded([&] {
            [field_ setHidden:hidden ? YES : NO];
            showNow(field_);
        });
    }

  private:
    NSTextField* field_;
    SNTUninstallerInterface* interface_;
};

class ButtonOutlet : public Button {
  public:
    ButtonOutlet(NSButton* button, SNTUninstallerInterface* interface, std::function<void()> action)
        : button_(button),
          interface_(interface),
          target_([[SNTButtonTarget alloc] init]),
          keyEquivalent_([[button keyEquivalent] copy]) {
        [target_ setAction:new std::function<void()>(std::move(action))];
        [button_ setTarget:target_];
        [button_ setAction:@selector(press:)];
    }

    void setTitle(const std::string& title) override {
        runGuarded([&] {
            [button_ setTitle:foundationString(title)];
            [interface_ layOut];
        });
    }

    void setEnabled(bool enabled) override {
        runGuarded([&] {
            [button_ setEnabled:enabled ? YES : NO];
            showNow(button_);
        });
    }

    void setHidden(bool hidden) override {
        runGuarded([&] {
            [button_ setHidden:hidden ? YES : NO];
            // GNUstep lets a key press a hidden button.
            [button_ setKeyEquivalent:hidden ? @"" : keyEquivalent_];
            showNow(button_);
        });
    }

    void setAction(std::function<void()> action) override {
        runGuarded([&] { [target_ setAction:new std::function<void()>(std::move(action))]; });
    }

  private:
    NSButton* button_;
    SNTUninstallerInterface* interface_;
    SNTButtonTarget* target_;
    NSString* keyEquivalent_;
};

/// The bar moves without a value from the time it is shown until it gets one, and the icon gets its check
/// mark when it is full.
class ProgressIndicatorOutlet : public ProgressIndicator {
  public:
    explicit ProgressIndicatorOutlet(SNTUninstallerInterface* interface) : interface_(interface) {}

    void setDoubleValue(double value) override {
        runGuarded([&] {
            NSProgressIndicator* indicator = [interface_ progressIndicator];
            setMoving(indicator, false);
            [indicator setDoubleValue:value];
            [[interface_ checkMark] setHidden:value >= [indicator maxValue] ? NO : YES];
        });
    }

    void setHidden(bool hidden) override {
        runGuarded([&] {
            NSProgressIndicator* indicator = [interface_ progressIndicator];
            setMoving(indicator, !hidden && [indicator doubleValue] <= [indicator minValue]);
            [indicator setHidden:hidden ? YES : NO];
            showNow(indicator);
        });
    }

  private:
    static void setMoving(NSProgressIndicator* indicator, bool moves) {
        [indicator setIndeterminate:moves ? YES : NO];
        if (moves) {
            [indicator startAnimation:nil];
        } else {
            [indicator stopAnimation:nil];
        }
    }

    SNTUninstallerInterface* interface_;
};

}  // namespace

class InterfaceControls::WindowOutlet : public Window {
  public:
    explicit WindowOutlet(NSWindow* window) : window_(window) {}

    void setTitle(const std::string& title) override {
        runGuarded([&] { [window_ setTitle:foundationString(title)]; });
    }

    WindowController* windowController() const override { return controller_; }
    void setWindowController(WindowController* controller) { controller_ = controller; }

  private:
    NSWindow* window_;
    WindowController* controller_ = nullptr;
};

InterfaceControls::InterfaceControls(SNTUninstallerInterface* interface, ApplicationProgram& program)
    : window_(std::make_shared<WindowOutlet>([interface window])),
      progressIndicator_(std::make_shared<ProgressIndicatorOutlet>(interface)),
      progressDescriptionLabel_(
          std::make_shared<TextFieldOutlet>([interface progressDescriptionLabel], interface)),
      label_(std::make_shared<TextFieldOutlet>([interface label], interface)),
      uninstallButton_(std::make_shared<ButtonOutlet>([interface uninstallButton], interface,
                                                      [&program] { program.uninstallAction(); })),
      cancelButton_(std::make_shared<ButtonOutlet>([interface cancelButton], interface,
                                                   [&program] { program.cancelAction(); })),
      aboutMenuItem_(std::make_shared<MenuItem>()),
      hideMenuItem_(std::make_shared<MenuItem>()),
      quitMenuItem_(std::make_shared<MenuItem>()) {}

Outlets InterfaceControls::outlets() const {
    return Outlets{.window = window_,
                   .label = label_,
                   .uninstallButton = uninstallButton_,
                   .cancelButton = cancelButton_,
                   .aboutMenuItem = aboutMenuItem_,
                   .hideMenuItem = hideMenuItem_,
                   .quitMenuItem = quitMenuItem_,
                   .progressIndicator = progressIndicator_,
                   .progressDescriptionLabel = progressDescriptionLabel_};
}

void InterfaceControls::setWindowController(WindowController* controller) {
    window_->setWindowController(controller);
}

}  // namespace Uninstall_Sentrel
