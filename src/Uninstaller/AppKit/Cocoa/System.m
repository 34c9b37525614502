#import "Uninstaller/AppKit/System.h"

#import <CoreGraphics/CoreGraphics.h>
#import <QuartzCore/CATransaction.h>

BOOL SNTDisplayIsAvailable(NSString** reason) {
    // Null in a process without a graphical session, such as one of a remote login.
    CFDictionaryRef session = CGSessionCopyCurrentDictionary();
    if (session == NULL) {
        *reason = @"There is no graphical session.";
        return NO;
    }
    CFRelease(session);
    return YES;
}

void SNTMakeApplication(void) {
    [NSApplication sharedApplication];
}

void SNTRunApplication(int argc, char* argv[]) {
    NSApplicationMain(argc, (const char**)argv);
}

void SNTShowMainMenu(NSMenu* menu) {
    [NSApp setMainMenu:menu];
}

void SNTShowChanges(NSWindow* window) {
    [window displayIfNeeded];
    // Views draw into layers, from macOS 10.14 on always. What they drew leaves the process at the end of the
    // main loop's turn only, which a thread that waits does not reach.
    [CATransaction flush];
}

NSRect SNTFrameForVisibleRect(NSView* view, NSRect visible) {
    return [view frameForAlignmentRect:visible];
}

NSSize SNTVisibleSizeThatFits(NSControl* control) {
    return [control intrinsicContentSize];
}

NSColor* SNTSecondaryTextColor(void) {
    return [NSColor secondaryLabelColor];
}

id SNTNewAlert(NSString* buttonTitle, NSString* messageText, NSString* informativeText) {
    NSAlert* alert = [[NSAlert alloc] init];
    [alert addButtonWithTitle:buttonTitle];
    [alert setMessageText:messageText];
    [alert setInformativeText:informativeText];
    return alert;
}

void SNTShowAboutPanel(NSString* applicationName, NSString* version, NSImage* icon) {
    NSMutableDictionary* options =
        [NSMutableDictionary dictionaryWithObjectsAndKeys:applicationName, @"ApplicationName", version,
                                                          @"ApplicationVersion", @"", @"Version", nil];
    if (icon != nil) {
        [options setObject:icon forKey:@"ApplicationIcon"];
    }
    [NSApp orderFrontStandardAboutPanelWithOptions:options];
}

void SNTCallOnOwnThread(void (*body)(void*), void* context) {
    body(context);
}
