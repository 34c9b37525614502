#import "Uninstaller/AppKit/MakerClasses.h"

#import "Uninstaller/AppKit/System.h"

/// The known interface of the maker's classes.
@interface NSObject (SNTMakerClasses)
+ (id)alertWithButtonTitle:(NSString*)buttonTitle
               messageText:(NSString*)messageText
           informativeText:(NSString*)informativeText;
- (NSInteger)runModal;
- (BOOL)parentalControlAuthorized;
@end

/// Code that cannot be loaded may raise; it is passed over as if it were absent.
static BOOL loadBundle(NSString* path) {
    BOOL loaded = NO;
    @try {
        loaded = [[NSBundle bundleWithPath:path] load];
    } @catch (NSException* exception) {
        (void)exception;
    }
    return loaded;
}

static Class makerClass(NSString* className, NSString* framework, NSArray* folders) {
    NSString* name = [framework stringByAppendingPathExtension:@"framework"];
    for (NSUInteger index = 0; index < [folders count]; ++index) {
        NSString* path = [[folders objectAtIndex:index] stringByAppendingPathComponent:name];
        BOOL isFolder = NO;
        if ([[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isFolder] && isFolder &&
            loadBundle(path) && NSClassFromString(className) != Nil) {
            return NSClassFromString(className);
        }
    }
    return Nil;
}

id SNTCopyAlert(NSArray* folders, NSString* buttonTitle, NSString* messageText, NSString* informativeText) {
    Class factory = makerClass(@"QVSAlertFactory", @"NorvikCustomUI", folders);
    if (![factory respondsToSelector:@selector(alertWithButtonTitle:messageText:informativeText:)]) {
        return SNTNewAlert(buttonTitle, messageText, informativeText);
    }
    return [[factory alertWithButtonTitle:buttonTitle messageText:messageText
                          informativeText:informativeText] retain];
}

void SNTRunAlert(id alert) {
    [alert runModal];
}

BOOL SNTMakeParentalControlAuthorization(NSArray* folders, id* authorization) {
    Class lock = makerClass(@"QVSParentalControlAuthorization", @"NorvikGuiCommon", folders);
    *authorization = nil;
    if (![lock instancesRespondToSelector:@selector(parentalControlAuthorized)]) {
        return NO;
    }
    *authorization = [[lock alloc] init];
    return YES;
}

BOOL SNTParentalControlAuthorized(id authorization) {
    return [authorization parentalControlAuthorized];
}
