#import <AppKit/AppKit.h>

// What AppKit on macOS and on GNUstep do in different ways; Cocoa/ and GNUstep/ each have an implementation.
// Main thread only, except SNTCallOnOwnThread.

#ifdef __cplusplus
extern "C" {
#endif

/// Whether windows can be shown here. If not, `reason` is set to a sentence. Call this before touching
/// AppKit.
BOOL SNTDisplayIsAvailable(NSString** reason);

/// Makes the shared application and gives its windows their look. Call this once.
void SNTMakeApplication(void);

/// Runs the application until it quits, which ends the process.
void SNTRunApplication(int argc, char* argv[]);

/// Has the main menu shown in this system's place for it, once the window stands.
void SNTShowMainMenu(NSMenu* menu);

/// Brings to the screen what has changed in `window`, which may be nil, before this thread waits for
/// something.
void SNTShowChanges(NSWindow* window);

/// The frame that puts the visible part of `view` (without shadows and other borders) at `visible`.
NSRect SNTFrameForVisibleRect(NSView* view, NSRect visible);

/// The size of the visible part of a control that is just large enough for its contents.
NSSize SNTVisibleSizeThatFits(NSControl* control);

/// The colour of less prominent text.
NSColor* SNTSecondaryTextColor(void);

/// A modal alert in the system's look, shown by its operation runModal; its owner releases it.
id SNTNewAlert(NSString* buttonTitle, NSString* messageText, NSString* informativeText);

/// Shows the About panel.
void SNTShowAboutPanel(NSString* applicationName, NSString* version, NSImage* icon);

/// Calls body(context) on the calling thread, which may be one that Foundation does not know.
void SNTCallOnOwnThread(void (*body)(void*), void* context);

#ifdef __cplusplus
}
#endif
