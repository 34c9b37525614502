#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSTheme.h>

/// The look of a present-day desktop for GNUstep's drawing: light windows, flat buttons with a blue default
/// button, a slim progress bar, a plain title bar and menu.
@interface SNTTheme : GSTheme {
    NSColorList* colors_;
}

/// Makes it the look of every window from now on. Call this once, after the shared application was made.
+ (void)install;

@end
