#import "Uninstaller/AppKit/System.h"

#import <signal.h>

#import "Uninstaller/AppKit/GNUstep/Display.h"
#import "Uninstaller/AppKit/GNUstep/Panels.h"
#import "Uninstaller/AppKit/GNUstep/Seclusion.h"
#import "Uninstaller/AppKit/GNUstep/Theme.h"

static int hasWindowManager = 0;

BOOL SNTDisplayIsAvailable(NSString** reason) {
    char name[256] = "";
    if (SNTProbeDisplay(&hasWindowManager, name, sizeof name)) {
        return YES;
    }
    *reason = name[0] == '\0' ? @"There is no display: DISPLAY is not set."
                              : [NSString stringWithFormat:@"The display %s does not answer.", name];
    return NO;
}

/// The first installed pair of faces, one for text and one for headlines.
static void chooseFonts(NSArray* installed) {
    static NSString* const candidates[][2] = {
        {@"Inter-Regular", @"Inter-SemiBold"},
        {@"OpenSans-Regular", @"OpenSans-SemiBold"},
        {@"NotoSans-Regular", @"NotoSans-SemiBold"},
        {@"DejaVuSans", @"DejaVuSans-Bold"},
    };
    for (size_t index = 0; index < sizeof candidates / sizeof candidates[0]; ++index) {
        NSString* regular = candidates[index][0];
        NSString* bold = candidates[index][1];
        if ([installed containsObject:regular] && [installed containsObject:bold]) {
            NSDictionary* fonts =
                [NSDictionary dictionaryWithObjectsAndKeys:regular, @"NSFont", bold, @"NSBoldFont", nil];
            [[NSUserDefaults standardUserDefaults] registerDefaults:fonts];
            return;
        }
    }
}

/// Names the fonts that substitute for characters that the chosen one lacks, those for Chinese and Japanese
/// first. By default GNUstep finds such a font by its family and then looks for a face of that name.
static void chooseSubstitutes(NSArray* installed) {
    static NSString* const candidates[] = {@"NotoSansCJKjp-Regular", @"NotoSansCJK-Regular",
                                           @"DroidSansFallback", @"WenQuanYiMicroHei", @"IPAGothic"};
    NSMutableArray* names = [NSMutableArray array];
    for (size_t index = 0; index < sizeof candidates / sizeof candidates[0]; ++index) {
        if ([installed containsObject:candidates[index]]) {
            [names addObject:candidates[index]];
        }
    }
    [names addObjectsFromArray:installed];
    [NSFont setPreferredFontNames:names];
}

void SNTMakeApplication(void) {
    SNTSecludeProcess();
    // Without a window manager nobody else draws title bars, and a hidden application could not be brought
    // back.
    NSNumber* managed = [NSNumber numberWithBool:hasWindowManager != 0];
    [[NSUserDefaults standardUserDefaults]
        registerDefaults:[NSDictionary
                             dictionaryWithObjectsAndKeys:managed, @"GSBackHandlesWindowDecorations",
                                                          @"NSMacintoshInterfaceStyle",
                                                          @"NSMenuInterfaceStyle",
                                                          [NSNumber numberWithBool:YES], @"GSSuppressAppIcon",
                                                          // Natural distances between letters.
                                                          [NSNumber numberWithInt:0x11], @"GSFontHinting",
                                                          @"\u2318", @"GSCommandKeyString", nil]];
    // The X backend has these signals end the application from inside their handlers, where Xlib's locks may
    // be held.
    struct sigaction terminated;
    struct sigaction interrupted;
    sigaction(SIGTERM, NULL, &terminated);
    sigaction(SIGINT, NULL, &interrupted);
    [NSApplication sharedApplication];
    sigaction(SIGTERM, &terminated, NULL);
    sigaction(SIGINT, &interrupted, NULL);
    SNTEndWithDisplay();
    NSArray* installed = [[NSFontManager sharedFontManager] availableFonts];
    chooseFonts(installed);
    chooseSubstitutes(installed);
    [SNTTheme install];
}

void SNTRunApplication(int argc, char* argv[]) {
    (void)argc;
    (void)argv;
    // NSApplicationMain complains about a program without a property list that names a principal class, and
    // otherwise does no more than this.
    [NSApp run];
}

void SNTShowMainMenu(NSMenu* menu) {
    // GNUstep looks for the application menu under this name.
    [[NSProcessInfo processInfo] setProcessName:[menu title]];
    [NSApp setMainMenu:menu];
}

void SNTShowChanges(NSWindow* window) {
    [window displayIfNeeded];
}

NSRect SNTFrameForVisibleRect(NSView* view, NSRect visible) {
    (void)view;
    return visible;
}

NSSize SNTVisibleSizeThatFits(NSControl* control) {
    return [[control cell] cellSize];
}

NSColor* SNTSecondaryTextColor(void) {
    return [NSColor secondaryLabelColor];
}

id SNTNewAlert(NSString* buttonTitle, NSString* messageText, NSString* informativeText) {
    return [[SNTAlertPanel alloc] initWithButtonTitle:buttonTitle
                                          messageText:messageText
                                      informativeText:informativeText];
}

void SNTShowAboutPanel(NSString* applicationName, NSString* version, NSImage* icon) {
    static SNTAboutPanel* panel = nil;
    if (panel == nil) {
        panel = [[SNTAboutPanel alloc] initWithName:applicationName version:version icon:icon];
    }
    [panel show];
}

void SNTCallOnOwnThread(void (*body)(void*), void* context) {
    BOOL registered = GSRegisterCurrentThread();
    body(context);
    if (registered) {
        GSUnregisterCurrentThread();
    }
}
