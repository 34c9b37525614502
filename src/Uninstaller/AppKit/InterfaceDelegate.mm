#import "Uninstaller/AppKit/InterfaceDelegate.h"

#include "Platform/Foundation/FoundationStrings.h"
#import "Uninstaller/AppKit/System.h"
#include "Uninstaller/ApplicationFramework.h"

using Uninstall_Sentrel::ApplicationProgram;

@implementation SNTInterfaceDelegate

- (id)initWithProgram:(ApplicationProgram*)program name:(NSString*)name icon:(NSImage*)icon {
    self = [super init];
    if (self != nil) {
        program_ = program;
        name_ = [name copy];
        icon_ = [icon retain];
    }
    return self;
}

- (void)dealloc {
    [name_ release];
    [icon_ release];
    [super dealloc];
}

- (ApplicationProgram*)program {
    return static_cast<ApplicationProgram*>(program_);
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    (void)notification;
    [self program]->applicationDidFinishLaunching();
}

- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)sender {
    (void)sender;
    return [self program]->applicationShouldTerminate() ? NSTerminateNow : NSTerminateCancel;
}

// macOS 12 and later warn when this is not answered. The program keeps no state of its window, so there is
// none that a stranger's archive could bring.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application {
    (void)application;
    return YES;
}

- (BOOL)windowShouldClose:(id)sender {
    (void)sender;
    return [self program]->windowShouldClose() ? YES : NO;
}

- (void)showAboutPanel:(id)sender {
    (void)sender;
    SNTShowAboutPanel(name_, Platform::Foundation::foundationString([self program]->version()), icon_);
}

@end
