#include "Uninstaller/AppKit/AppKitFramework.h"

#include <utility>

#include "Platform/Foundation/ExceptionGuard.h"
#include "Platform/Foundation/FoundationStrings.h"
#import "Uninstaller/AppKit/ApplicationMenu.h"
#import "Uninstaller/AppKit/InterfaceDelegate.h"
#include "Uninstaller/AppKit/MakerClasses.h"
#include "Uninstaller/AppKit/System.h"
#import "Uninstaller/AppKit/UninstallerInterface.h"

namespace Uninstall_Sentrel {

using Platform::Foundation::foundationString;
using Platform::Foundation::runGuarded;

namespace {

NSString* const kApplicationName = @"Uninstall Sentrel";

class MakerAlert : public Alert {
  public:
    explicit MakerAlert(id alert) : alert_(alert) {}
    MakerAlert(const MakerAlert&) = delete;
    MakerAlert& operator=(const MakerAlert&) = delete;
    ~MakerAlert() override {
        runGuarded([this] { [alert_ release]; });
    }

    void runModal() override {
        runGuarded([this] { SNTRunAlert(alert_); });
    }

  private:
    id alert_;
};

class MakerParentalControlAuthorization : public ParentalControlAuthorization {
  public:
    MakerParentalControlAuthorization(bool hasLock, id authorization)
        : hasLock_(hasLock), authorization_(authorization) {}
    MakerParentalControlAuthorization(const MakerParentalControlAuthorization&) = delete;
    MakerParentalControlAuthorization& operator=(const MakerParentalControlAuthorization&) = delete;
    ~MakerParentalControlAuthorization() override {
        runGuarded([this] { [authorization_ release]; });
    }

    bool parentalControlAuthorized() override {
        // A lock that cannot be made, or fails while it is asked, stays locked.
        BOOL authorized = NO;
        runGuarded([&] { authorized = SNTParentalControlAuthorized(authorization_); });
        return !hasLock_ || authorized;
    }

  private:
    bool hasLock_;
    id authorization_;
};

/// The icon in the available sizes; nil if there is none. Not read by file name: GNUstep would look for a
/// service that makes an image of a file that is not one.
NSImage* newIcon(const ApplicationProgram& program) {
    NSImage* icon = [[NSImage alloc] initWithSize:NSMakeSize(64, 64)];
    for (const char* name : {"AppIcon-64", "AppIcon-128", "AppIcon"}) {
        NSData* data = [NSData dataWithContentsOfFile:foundationString(program.resourcePath(name, "png"))];
        NSBitmapImageRep* representation = data == nil ? nil : [NSBitmapImageRep imageRepWithData:data];
        if (representation != nil) {
            [icon addRepresentation:representation];
        }
    }
    if ([[icon representations] count] == 0) {
        [icon release];
        icon = nil;
    }
    return icon;
}

NSString* text(const ApplicationProgram& program, const char* key) {
    return foundationString(program.interfaceText(key));
}

}  // namespace

void AppKitFramework::applicationMain(int argc, char* argv[], ApplicationProgram& program) {
    program_ = &program;
    if (runGuarded([&] { makeInterface(program); })) {
        runGuarded([&] { SNTRunApplication(argc, argv); });
    }
}

void AppKitFramework::makeInterface(ApplicationProgram& program) {
    NSImage* icon = newIcon(program);
    SNTInterfaceDelegate* delegate = [[SNTInterfaceDelegate alloc] initWithProgram:&program
                                                                              name:kApplicationName
                                                                              icon:icon];
    [NSApp setDelegate:delegate];
    [NSApp setApplicationIconImage:icon];
    SNTApplicationMenu* menu = [[SNTApplicationMenu alloc] initWithName:kApplicationName
                                                             aboutTitle:text(program, "about")
                                                              hideTitle:text(program, "hide")
                                                              quitTitle:text(program, "quit")
                                                            aboutTarget:delegate];

    SNTUninstallerInterface* interface = [[SNTUninstallerInterface alloc] initWithIcon:icon];
    [[interface window] setDelegate:delegate];
    [[interface headline] setStringValue:text(program, "headline")];
    [[interface label] setStringValue:text(program, "label")];
    [[interface progressDescriptionLabel] setStringValue:text(program, "duration")];
    [[interface uninstallButton] setTitle:text(program, "uninstall")];
    [[interface cancelButton] setTitle:text(program, "cancel")];
    [icon release];

    controls_ = std::make_unique<InterfaceControls>(interface, program);
    controls_->setWindowController(program.interfaceDidLoad(controls_->outlets()));
    SNTShowMainMenu([menu mainMenu]);
    [interface show];
    // A class gets its method table at its first use: classes that other threads use have it from here on.
    application_.performOnMainQueue([] {});
}

Application* AppKitFramework::sharedApplication() {
    return NSApp == nil ? nullptr : &application_;
}

AlertFactory& AppKitFramework::alertFactory() {
    return *this;
}

std::unique_ptr<ParentalControlAuthorization> AppKitFramework::makeParentalControlAuthorization() {
    BOOL hasLock = YES;
    id authorization = nil;
    runGuarded([&] { hasLock = SNTMakeParentalControlAuthorization(frameworkFolders(), &authorization); });
    return std::make_unique<MakerParentalControlAuthorization>(hasLock, authorization);
}

std::unique_ptr<Alert> AppKitFramework::alertWithButtonTitle(const std::string& buttonTitle,
                                                             const std::string& messageText,
                                                             const std::string& informativeText) {
    id alert = nil;
    runGuarded([&] {
        alert = SNTCopyAlert(frameworkFolders(), foundationString(buttonTitle), foundationString(messageText),
                             foundationString(informativeText));
    });
    return alert == nil ? nullptr : std::make_unique<MakerAlert>(alert);
}

NSArray* AppKitFramework::frameworkFolders() const {
    NSMutableArray* folders = [NSMutableArray array];
    if (program_ != nullptr) {
        for (const std::string& folder : program_->frameworkFolders()) {
            [folders addObject:foundationString(folder)];
        }
    }
    return folders;
}

}  // namespace Uninstall_Sentrel
