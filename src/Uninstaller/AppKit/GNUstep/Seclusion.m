// For environ and program_invocation_name.
#define _GNU_SOURCE

#import "Uninstaller/AppKit/GNUstep/Seclusion.h"

#import <AppKit/AppKit.h>
#import <errno.h>
#import <objc/runtime.h>
#import <unistd.h>

/// Replacements for some operations of GNUstep. Only the implementations are used, never an object.
@interface SNTSecluded : NSObject {
    int unused_;
}
@end

@implementation SNTSecluded

static NSNotificationCenter* localCenter(void) {
    static NSNotificationCenter* center = nil;
    if (center == nil) {
        center = [[NSNotificationCenter alloc] init];
    }
    return center;
}

/// Of NSDistributedNotificationCenter: one that does not reach beyond this process.
+ (NSNotificationCenter*)defaultCenter {
    return localCenter();
}

/// Of NSWorkspace: without the list of running applications that NSWorkspace keeps on disk.
- (NSNotificationCenter*)notificationCenter {
    return localCenter();
}

/// Of NSWorkspace: runs make_services.
- (void)findApplications {
}

/// Of GSServicesManager: registers the application under its name, and asks the user if that fails.
- (void)registerAsServiceProvider {
}

@end

static void replace(Class class, Class replacement, SEL selector) {
    Method replaced = class_getInstanceMethod(class, selector);
    if (replaced != NULL) {
        method_setImplementation(replaced,
                                 method_getImplementation(class_getInstanceMethod(replacement, selector)));
    }
}

/// A path that contains this word keeps the settings in memory only.
static void keepSettingsInMemory(void) {
    NSMutableDictionary* configuration = [[GNUstepConfig(nil) mutableCopy] autorelease];
    [configuration setObject:@"/:INTERNAL:" forKey:@"GNUSTEP_USER_DEFAULTS_DIR"];
    GNUstepConfig(configuration);
}

void SNTSecludeProcess(void) {
    char* arguments[] = {program_invocation_name, NULL};
    GSInitializeProcess(1, arguments, environ);

    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    keepSettingsInMemory();
    replace(object_getClass([NSDistributedNotificationCenter class]), object_getClass([SNTSecluded class]),
            @selector(defaultCenter));
    replace([NSWorkspace class], [SNTSecluded class], @selector(notificationCenter));
    replace([NSWorkspace class], [SNTSecluded class], @selector(findApplications));
    replace(NSClassFromString(@"GSServicesManager"), [SNTSecluded class],
            @selector(registerAsServiceProvider));
    [pool release];
}
