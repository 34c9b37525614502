#pragma once

#import <Foundation/Foundation.h>

/// A coder that keeps the first error instead of raising, as the system's may be told to: from then on it
/// returns nil.
@interface ErrorKeepingUnarchiver : NSKeyedUnarchiver {
    NSError* error_;
}
- (void)failWithError:(NSError*)error;
- (NSError*)error;
@end

/// Stands for the connection and for the object that it exports, and records the calls to the latter.
@interface ListeningConnection : NSObject {
    NSMutableArray* refusals_;
}
- (id)exportedObject;
- (void)refuseMessage:(NSString*)why onConnection:(id)connection;
- (NSArray*)refusals;
@end

/// The coder of a connection.
@interface ConnectionUnarchiver : NSKeyedUnarchiver {
    ListeningConnection* connection_;
}
- (ListeningConnection*)connection;
@end

#ifdef __cplusplus
extern "C" {
#endif

/// The root object that `unarchiver` decodes; nil and a sentence in `fault` when it raises or keeps an error.
id SystemArchivesRoot(NSKeyedUnarchiver* unarchiver, NSSet* classes, NSString** fault);
/// An unarchiver of this class, autoreleased; nil if it does not accept `data` as an archive.
NSKeyedUnarchiver* SystemArchivesUnarchiver(Class unarchiverClass, NSData* data, NSString** fault);
NSData* SystemArchivesArchive(id root);

#ifdef __cplusplus
}
#endif
