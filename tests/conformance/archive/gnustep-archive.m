// Reads and writes the product's archives with GNUstep's own keyed coders, as an independent party would.
//
//   gnustep-archive dump FILE                the objects as JSON
//   gnustep-archive rewrite IN OUT           read, then archived anew
//   gnustep-archive rewrite-mutable IN OUT   the same with mutable strings and arrays
//   gnustep-archive bench FILE COUNT         nanoseconds of processor time per decoding and per
//                                            encoding, the best of COUNT runs
//
// The product's classes are made from one table: their names, superclasses and coded keys.

#import <Foundation/Foundation.h>
#include <objc/runtime.h>
#include <string.h>
#include <time.h>

enum { kMaxKeys = 4, kMaxClasses = 32 };

// The coding of a key's value and its required type.
typedef enum { kEnd, kString, kURL, kObject, kURLs, kBooleans, kInlineBoolean } ValueType;

typedef struct {
    const char* name;
    const char* superclass;  // NULL: Coded, which stands for NSObject
    struct {
        const char* name;
        ValueType type;
    } keys[kMaxKeys];  // in the order in which they are written
} ClassForm;

#define INSTALL_COMMON(length, name) "_TtC13InstallCommon" #length #name
#define COMMAND INSTALL_COMMON(15, CommandConcrete)
#define JOB_COMMAND INSTALL_COMMON(17, LaunchdJobCommand)

static const ClassForm kForms[] = {
    {"FilesystemItemInfo", NULL, {{"name", kString}, {"location", kURL}}},
    {"BundleInfo", "FilesystemItemInfo", {{"name", kString}, {"location", kURL}, {"bundleId", kString}}},
    {"LaunchdInfo", NULL, {{"label", kString}, {"plist", kObject}}},
    {"ApplicationInfo", NULL, {{"bundle", kObject}, {"executable", kObject}}},
    {"DaemonInfo", NULL, {{"launchd", kObject}, {"executable", kObject}}},
    {"BundleDaemonInfo", NULL, {{"launchd", kObject}, {"app", kObject}}},
    {"KextInfo", NULL, {{"bundle", kObject}, {"ioClassName", kString}}},
    {COMMAND, NULL, {{"commandDescription", kString}}},
    {JOB_COMMAND,
     COMMAND,
     {{"agent", kObject}, {"isDaemon", kInlineBoolean}, {"commandDescription", kString}}},
    {INSTALL_COMMON(13, RemoveCommand),
     COMMAND,
     {{"source", kURLs}, {"destination", kBooleans}, {"commandDescription", kString}}},
    {INSTALL_COMMON(11, CopyCommand),
     COMMAND,
     {{"source", kURLs}, {"destination", kURLs}, {"commandDescription", kString}}},
    {INSTALL_COMMON(22, StartLaunchdJobCommand),
     JOB_COMMAND,
     {{"agent", kObject}, {"isDaemon", kInlineBoolean}, {"commandDescription", kString}}},
    {INSTALL_COMMON(21, StopLaunchdJobCommand),
     JOB_COMMAND,
     {{"agent", kObject}, {"isDaemon", kInlineBoolean}, {"commandDescription", kString}}},
    {INSTALL_COMMON(18, KillProcessCommand), COMMAND, {{"kext", kString}, {"commandDescription", kString}}},
    {INSTALL_COMMON(17, UnloadKextCommand), COMMAND, {{"kext", kObject}, {"commandDescription", kString}}},
    {INSTALL_COMMON(20, UpdateLaunchServices), COMMAND, {{"commandDescription", kString}}},
};
static const unsigned kFormCount = sizeof kForms / sizeof kForms[0];

static Class classes[kMaxClasses];
static NSString* keyNames[kMaxClasses][kMaxKeys];
static BOOL writesMutableForms = NO;

static void fail(NSString* text) {
    fprintf(stderr, "gnustep-archive: %s\n", [text UTF8String]);
    exit(1);
}

static BOOL isListOf(id value, Class element) {
    if (![value isKindOfClass:[NSArray class]]) {
        return NO;
    }
    NSEnumerator* each = [value objectEnumerator];
    id item;
    while ((item = [each nextObject]) != nil) {
        if (![item isKindOfClass:element]) {
            return NO;
        }
    }
    return YES;
}

// Base of all classes of the table.
@interface Coded : NSObject <NSCoding> {
    id values_[kMaxKeys];
    BOOL flags_[kMaxKeys];
}
- (id)jsonForm;
@end

static unsigned formIndexOf(id object) {
    Class class = [object class];
    for (unsigned i = 0; i < kFormCount; ++i) {
        if (classes[i] == class) {
            return i;
        }
    }
    fail([NSString stringWithFormat:@"the class %@ is not in the table", NSStringFromClass(class)]);
    return 0;
}

static BOOL isOfType(id value, ValueType type) {
    switch (type) {
        case kString:
            return [value isKindOfClass:[NSString class]];
        case kURL:
            return [value isKindOfClass:[NSURL class]];
        case kObject:
            return [value isKindOfClass:[Coded class]];
        case kURLs:
            return isListOf(value, [NSURL class]);
        case kBooleans:
            return isListOf(value, [NSNumber class]);
        default:
            return NO;
    }
}

static id jsonValue(id value) {
    if (value == nil) {
        return [NSNull null];
    }
    if ([value isKindOfClass:[NSURL class]]) {
        return [value path];
    }
    if ([value isKindOfClass:[NSNumber class]]) {
        return [NSNumber numberWithBool:[value boolValue]];
    }
    if ([value isKindOfClass:[NSArray class]]) {
        NSMutableArray* list = [NSMutableArray array];
        NSEnumerator* each = [value objectEnumerator];
        id item;
        while ((item = [each nextObject]) != nil) {
            [list addObject:jsonValue(item)];
        }
        return list;
    }
    return [value isKindOfClass:[Coded class]] ? [value jsonForm] : value;
}

@implementation Coded

- (id)initWithCoder:(NSCoder*)coder {
    const unsigned form = formIndexOf(self);
    for (unsigned i = 0; i < kMaxKeys && kForms[form].keys[i].type != kEnd; ++i) {
        const ValueType type = kForms[form].keys[i].type;
        NSString* key = keyNames[form][i];
        if (type == kInlineBoolean) {
            flags_[i] = [coder decodeBoolForKey:key];
            continue;
        }
        values_[i] = [[coder decodeObjectForKey:key] retain];
        if (values_[i] != nil && !isOfType(values_[i], type)) {
            fail([NSString
                stringWithFormat:@"key %@ of %s holds %@", key, kForms[form].name, [values_[i] class]]);
        }
    }
    return self;
}

- (void)encodeWithCoder:(NSCoder*)coder {
    const unsigned form = formIndexOf(self);
    for (unsigned i = 0; i < kMaxKeys && kForms[form].keys[i].type != kEnd; ++i) {
        if (kForms[form].keys[i].type == kInlineBoolean) {
            [coder encodeBool:flags_[i] forKey:keyNames[form][i]];
        } else if (writesMutableForms && [values_[i] conformsToProtocol:@protocol(NSMutableCopying)]) {
            [coder encodeObject:[[values_[i] mutableCopy] autorelease] forKey:keyNames[form][i]];
        } else {
            [coder encodeObject:values_[i] forKey:keyNames[form][i]];
        }
    }
}

- (void)dealloc {
    for (unsigned i = 0; i < kMaxKeys; ++i) {
        [values_[i] release];
    }
    [super dealloc];
}

- (id)jsonForm {
    const unsigned form = formIndexOf(self);
    NSMutableDictionary* json = [NSMutableDictionary dictionary];
    [json setObject:[NSString stringWithUTF8String:kForms[form].name] forKey:@"class"];
    for (unsigned i = 0; i < kMaxKeys && kForms[form].keys[i].type != kEnd; ++i) {
        const BOOL isInline = kForms[form].keys[i].type == kInlineBoolean;
        [json setObject:isInline ? [NSNumber numberWithBool:flags_[i]] : jsonValue(values_[i])
                 forKey:keyNames[form][i]];
    }
    return json;
}

@end

static void makeClasses(void) {
    for (unsigned i = 0; i < kFormCount; ++i) {
        const char* superclass = kForms[i].superclass;
        Class base = superclass == NULL ? [Coded class] : objc_getClass(superclass);
        classes[i] = objc_allocateClassPair(base, kForms[i].name, 0);
        objc_registerClassPair(classes[i]);
        for (unsigned key = 0; key < kMaxKeys && kForms[i].keys[key].type != kEnd; ++key) {
            keyNames[i][key] = [[NSString alloc] initWithUTF8String:kForms[i].keys[key].name];
        }
    }
}

static NSArray* decoded(NSData* archive) {
    id list = [NSKeyedUnarchiver unarchiveObjectWithData:archive];
    if (!isListOf(list, [Coded class])) {
        fail(@"the archive does not hold a list of the product's objects");
    }
    return list;
}

static NSData* contentsOf(const char* file) {
    NSData* data = [NSData dataWithContentsOfFile:[NSString stringWithUTF8String:file]];
    if (data == nil) {
        fail([NSString stringWithFormat:@"cannot read %s", file]);
    }
    return data;
}

static void dump(const char* file) {
    NSData* json = [NSJSONSerialization dataWithJSONObject:jsonValue(decoded(contentsOf(file)))
                                                   options:0
                                                     error:NULL];
    if (json == nil) {
        fail(@"the objects have no JSON form");
    }
    fwrite([json bytes], 1, [json length], stdout);
    fputc('\n', stdout);
}

static void rewrite(const char* from, const char* to) {
    NSData* archive = [NSKeyedArchiver archivedDataWithRootObject:decoded(contentsOf(from))];
    if (![archive writeToFile:[NSString stringWithUTF8String:to] atomically:NO]) {
        fail([NSString stringWithFormat:@"cannot write %s", to]);
    }
}

// Of the processor's time, so that other programs on the machine do not count.
static double nanosecondsNow(void) {
    struct timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return (double)now.tv_sec * 1e9 + (double)now.tv_nsec;
}

static void bench(const char* file, int count) {
    NSData* archive = contentsOf(file);
    NSArray* objects = [decoded(archive) retain];
    double decoding = 1e18;
    double encoding = 1e18;
    for (int i = 0; i < count; ++i) {
        NSAutoreleasePool* pool = [NSAutoreleasePool new];
        const double begin = nanosecondsNow();
        decoded(archive);
        const double middle = nanosecondsNow();
        [NSKeyedArchiver archivedDataWithRootObject:objects];
        const double end = nanosecondsNow();
        [pool release];
        decoding = middle - begin < decoding ? middle - begin : decoding;
        encoding = end - middle < encoding ? end - middle : encoding;
    }
    printf("decode %.0f\nencode %.0f\n", decoding, encoding);
    [objects release];
}

static int run(int argc, char** argv) {
    makeClasses();
    if (argc == 3 && strcmp(argv[1], "dump") == 0) {
        dump(argv[2]);
    } else if (argc == 4 && (strcmp(argv[1], "rewrite") == 0 || strcmp(argv[1], "rewrite-mutable") == 0)) {
        writesMutableForms = strcmp(argv[1], "rewrite-mutable") == 0;
        rewrite(argv[2], argv[3]);
    } else if (argc == 4 && strcmp(argv[1], "bench") == 0 && atoi(argv[3]) > 0) {
        bench(argv[2], atoi(argv[3]));
    } else {
        fprintf(stderr, "usage: gnustep-archive dump FILE | rewrite IN OUT | rewrite-mutable IN OUT | bench "
                        "FILE COUNT\n");
        return 2;
    }
    return 0;
}

int main(int argc, char** argv) {
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    int status = 1;
    @try {
        status = run(argc, argv);
    } @catch (NSException* exception) {
        fprintf(stderr, "gnustep-archive: %s\n", [[exception description] UTF8String]);
    }
    [pool release];
    return status;
}
