// The maker's alerts, as far as the uninstaller uses them.

#import "dialogs/DialogParts.h"

static const CGFloat kWidth = 420;
static const CGFloat kMargin = 20;
static const CGFloat kTextLeft = 104;

/// A modal alert with one button, which the return and escape keys press.
@interface QVSAlert : NSObject {
    NSPanel* panel_;
}
- (id)initWithButtonTitle:(NSString*)buttonTitle
              messageText:(NSString*)messageText
          informativeText:(NSString*)informativeText;
/// Returns once the button was pressed.
- (NSInteger)runModal;
@end

@interface QVSAlertFactory : NSObject
+ (id)alertWithButtonTitle:(NSString*)buttonTitle
               messageText:(NSString*)messageText
           informativeText:(NSString*)informativeText;
@end

@implementation QVSAlert

- (id)initWithButtonTitle:(NSString*)buttonTitle
              messageText:(NSString*)messageText
          informativeText:(NSString*)informativeText {
    if ((self = [super init]) == nil) {
        return nil;
    }
    NSFont* bold = [NSFont boldSystemFontOfSize:13];
    NSFont* plain = [NSFont systemFontOfSize:11];
    CGFloat width = kWidth - kTextLeft - kMargin;
    CGFloat messageHeight = dialogTextHeight(messageText, bold, width);
    CGFloat informativeHeight = dialogTextHeight(informativeText, plain, width);
    CGFloat textHeight = messageHeight + (informativeHeight > 0 ? 8 + informativeHeight : 0);
    CGFloat height = kMargin + MAX(64, textHeight) + 20 + 26 + kMargin;
    panel_ = dialogNewPanel(NSMakeSize(kWidth, height), messageText);
    dialogAddIcon(panel_, NSMakeRect(kMargin, kMargin, 64, 64), DialogIconShield);
    dialogAddText(panel_, NSMakeRect(kTextLeft, kMargin, width, messageHeight), messageText, bold);
    dialogAddText(panel_, NSMakeRect(kTextLeft, kMargin + messageHeight + 8, width, informativeHeight),
                  informativeText, plain);
    CGFloat buttonWidth = dialogButtonWidth(buttonTitle);
    NSRect button = NSMakeRect(kWidth - kMargin - buttonWidth, height - kMargin - 26, buttonWidth, 26);
    dialogAddButton(panel_, button, buttonTitle, @"\r", self, @selector(buttonPressed:));
    return self;
}

- (void)dealloc {
    [panel_ release];
    [super dealloc];
}

- (void)buttonPressed:(id)sender {
    (void)sender;
    [NSApp stopModal];
}

- (NSInteger)runModal {
    return dialogRun(panel_, nil);
}

@end

@implementation QVSAlertFactory

+ (id)alertWithButtonTitle:(NSString*)buttonTitle
               messageText:(NSString*)messageText
           informativeText:(NSString*)informativeText {
    return
        [[[QVSAlert alloc] initWithButtonTitle:buttonTitle != nil ? buttonTitle : @""
                                   messageText:messageText != nil ? messageText : @""
                               informativeText:informativeText != nil ? informativeText : @""] autorelease];
}

@end
