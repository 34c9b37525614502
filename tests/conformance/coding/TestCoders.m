// A plain Objective-C file: C++ and Objective-C exceptions do not meet in one.
#import "TestCoders.h"

@implementation ErrorKeepingUnarchiver

- (void)failWithError:(NSError*)error {
    if (error_ == nil) {
        error_ = [error retain];
    }
}

- (NSError*)error {
    return error_;
}

- (id)decodeObjectForKey:(NSString*)key {
    return error_ == nil ? [super decodeObjectForKey:key] : nil;
}

- (void)dealloc {
    [error_ release];
    [super dealloc];
}

@end

@implementation ListeningConnection

- (id)init {
    self = [super init];
    if (self != nil) {
        refusals_ = [NSMutableArray new];
    }
    return self;
}

- (id)exportedObject {
    return self;
}

- (void)refuseMessage:(NSString*)why onConnection:(id)connection {
    if (connection == self) {
        [refusals_ addObject:why];
    }
}

- (NSArray*)refusals {
    return refusals_;
}

- (void)dealloc {
    [refusals_ release];
    [super dealloc];
}

@end

@implementation ConnectionUnarchiver

- (ListeningConnection*)connection {
    if (connection_ == nil) {
        connection_ = [ListeningConnection new];
    }
    return connection_;
}

- (void)dealloc {
    [connection_ release];
    [super dealloc];
}

@end

NSKeyedUnarchiver* SystemArchivesUnarchiver(Class unarchiverClass, NSData* data, NSString** fault) {
    NSKeyedUnarchiver* unarchiver = nil;
    @try {
        unarchiver = [[[unarchiverClass alloc] initForReadingWithData:data] autorelease];
        [unarchiver setRequiresSecureCoding:YES];
    } @catch (NSException* exception) {
        unarchiver = nil;
        *fault = [exception reason];
    }
    return unarchiver;
}

id SystemArchivesRoot(NSKeyedUnarchiver* unarchiver, NSSet* classes, NSString** fault) {
    id root = nil;
    @try {
        root = [unarchiver decodeObjectOfClasses:classes forKey:@"root"];
    } @catch (NSException* exception) {
        root = nil;
        *fault = [exception reason];
    }
    if ([unarchiver isKindOfClass:[ErrorKeepingUnarchiver class]] && [(id)unarchiver error] != nil) {
        root = nil;
        *fault = [[(id)unarchiver error] localizedDescription];
    }
    return root;
}

NSData* SystemArchivesArchive(id root) {
    NSMutableData* data = [NSMutableData data];
    NSKeyedArchiver* archiver = [[NSKeyedArchiver alloc] initForWritingWithMutableData:data];
    [archiver setRequiresSecureCoding:YES];
    [archiver encodeObject:root forKey:@"root"];
    [archiver finishEncoding];
    [archiver release];
    return data;
}
