#import <Foundation/Foundation.h>
#include <stdio.h>

/// Stands in for the maker's factory: its alerts are lines on standard output, and answered.
@interface QVSAlertFactory : NSObject {
    NSString* texts_;
}
+ (id)alertWithButtonTitle:(NSString*)buttonTitle
               messageText:(NSString*)messageText
           informativeText:(NSString*)informativeText;
- (NSInteger)runModal;
@end

@implementation QVSAlertFactory

+ (id)alertWithButtonTitle:(NSString*)buttonTitle
               messageText:(NSString*)messageText
           informativeText:(NSString*)informativeText {
    if ([buttonTitle isEqualToString:@"none"]) {
        return nil;
    }
    QVSAlertFactory* alert = [[[self alloc] init] autorelease];
    alert->texts_ =
        [[NSString alloc] initWithFormat:@"%@, %@, %@", buttonTitle, messageText, informativeText];
    return alert;
}

- (void)dealloc {
    [texts_ release];
    [super dealloc];
}

- (NSInteger)runModal {
    printf("maker's alert: %s\n", [texts_ UTF8String]);
    fflush(stdout);
    return 0;
}

@end
