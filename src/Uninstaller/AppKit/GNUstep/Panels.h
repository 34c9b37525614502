#import <AppKit/AppKit.h>

/// A modal alert with one button, which Return and Escape press, for GNUstep, whose own alert looks foreign
/// beside the window. The panel grows with its texts.
@interface SNTAlertPanel : NSObject {
    NSPanel* panel_;
}

/// `informativeText` may be empty.
- (id)initWithButtonTitle:(NSString*)buttonTitle
              messageText:(NSString*)messageText
          informativeText:(NSString*)informativeText;

/// Shows the alert and returns once its button was pressed.
- (NSInteger)runModal;

@end

/// The About panel: the icon, the application's name and its version. One for the life of the process.
@interface SNTAboutPanel : NSObject {
    NSPanel* panel_;
}

- (id)initWithName:(NSString*)name version:(NSString*)version icon:(NSImage*)icon;
- (void)show;

@end
