// A plain Objective-C file: C++ and Objective-C exceptions do not meet in one.
#import "Platform/Darwin/Coding/GuardedCoding.h"

#import "Platform/Darwin/ErrorText.h"

static NSString* reasonOf(NSException* exception) {
    NSString* reason = [exception reason];
    return reason != nil ? reason : [exception name];
}

// A coder that does not raise keeps its first error; one that knows no errors raises.
static void noteKeptError(NSCoder* coder, NSString** fault) {
    if (![coder respondsToSelector:@selector(error)]) {
        return;
    }
    NSError* error = [(id)coder error];
    if (error != nil) {
        *fault = PlatformDarwinErrorText(error);
    }
}

id PlatformDarwinDecodeObject(NSCoder* coder, NSSet* classes, NSString* key, NSString** fault) {
    id object = nil;
    @try {
        object = [coder decodeObjectOfClasses:classes forKey:key];
        noteKeptError(coder, fault);
    } @catch (NSException* exception) {
        object = nil;
        *fault = reasonOf(exception);
    }
    return object;
}

BOOL PlatformDarwinDecodeBool(NSCoder* coder, NSString* key, NSString** fault) {
    BOOL value = NO;
    @try {
        value = [coder decodeBoolForKey:key];
        noteKeptError(coder, fault);
    } @catch (NSException* exception) {
        value = NO;
        *fault = reasonOf(exception);
    }
    return value;
}
