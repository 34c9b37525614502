// The maker's parental-control lock, as far as the uninstaller uses it. A file of the simulated Mac holds the
// lock's state (macsim create --parental-control).

#import <crypt.h>
#import <string.h>

#import "dialogs/DialogParts.h"

static NSString* const kStateFile = @"/var/macsim/parental-control.plist";
static const CGFloat kWidth = 420;
static const CGFloat kMargin = 20;
static const CGFloat kTextLeft = 104;

@interface QVSParentalControlAuthorization : NSObject {
    NSDictionary* state_;
    NSPanel* panel_;
    NSTextField* password_;
    NSTextField* message_;
}
/// YES if the lock is off, or the user gives its password in a dialog, which accepts any number of wrong
/// answers. NO if the user cancels it, and at once if the lock cannot be lifted.
- (BOOL)parentalControlAuthorized;
@end

@implementation QVSParentalControlAuthorization

- (id)init {
    if ((self = [super init]) != nil) {
        state_ = [[NSDictionary alloc] initWithContentsOfFile:kStateFile];
    }
    return self;
}

- (void)dealloc {
    [state_ release];
    [panel_ release];
    [super dealloc];
}

- (void)makePanel {
    NSFont* bold = [NSFont boldSystemFontOfSize:13];
    NSFont* plain = [NSFont systemFontOfSize:12];
    CGFloat width = kWidth - kTextLeft - kMargin;
    CGFloat height = 190;
    panel_ = dialogNewPanel(NSMakeSize(kWidth, height), @"Parental control");
    dialogAddIcon(panel_, NSMakeRect(kMargin, kMargin, 64, 64), DialogIconLock);
    dialogAddText(panel_, NSMakeRect(kTextLeft, kMargin, width, 20), dialogText(DIALOG_LOCK_IS_ON), bold);
    dialogAddText(panel_, NSMakeRect(kTextLeft, kMargin + 26, width, 20), dialogText(DIALOG_ASKS_PASSWORD),
                  plain);
    NSRect field = NSMakeRect(kTextLeft + 110, kMargin + 58, width - 110, 24);
    dialogAddFieldName(panel_, field, kTextLeft, dialogText(DIALOG_PASSWORD));
    password_ = dialogAddField(panel_, field, YES);
    message_ = dialogAddText(panel_, NSMakeRect(kTextLeft, kMargin + 88, width, 20), @"",
                             [NSFont systemFontOfSize:11]);
    [message_ setAlignment:NSRightTextAlignment];
    [message_ setTextColor:[NSColor colorWithCalibratedRed:0.75 green:0.1 blue:0.1 alpha:1]];
    dialogAddAnswers(panel_, self, @selector(unlock:), @selector(cancel:));
}

- (BOOL)isPassword:(NSString*)password {
    id stored = [state_ objectForKey:@"PasswordHash"];
    if (![stored isKindOfClass:[NSString class]]) {
        return NO;
    }
    const char* hash = crypt([password UTF8String], [stored UTF8String]);
    return hash != NULL && strcmp(hash, [stored UTF8String]) == 0;
}

- (void)unlock:(id)sender {
    (void)sender;
    [panel_ makeFirstResponder:nil];
    if ([self isPassword:[password_ stringValue]]) {
        [NSApp stopModalWithCode:1];
    } else {
        dialogRefuse(panel_, password_, message_, dialogText(DIALOG_WRONG_PASSWORD));
    }
}

- (void)cancel:(id)sender {
    (void)sender;
    [NSApp stopModalWithCode:0];
}

- (BOOL)parentalControlAuthorized {
    NSString* state = [state_ objectForKey:@"State"];
    if ([state isEqual:@"refused"]) {
        return NO;
    }
    if (![state isEqual:@"on"]) {
        return YES;
    }
    if (panel_ == nil) {
        [self makePanel];
    }
    [password_ setStringValue:@""];
    [message_ setStringValue:@""];
    return dialogRun(panel_, password_) == 1;
}

@end
