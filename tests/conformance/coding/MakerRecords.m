#import <Foundation/Foundation.h>

/// Stands in for the maker's record classes, which have the plain names of the program's own: a framework of
/// the product may bring them into the process. Nothing can be decoded with them.
@interface MakerRecords : NSObject <NSCoding> {
    int fields_[16];
}
@end

@implementation MakerRecords

- (id)initWithCoder:(NSCoder*)coder {
    (void)coder;
    [self release];
    return nil;
}

- (void)encodeWithCoder:(NSCoder*)coder {
    (void)coder;
}

@end

@interface FilesystemItemInfo : MakerRecords
@end
@implementation FilesystemItemInfo
@end

@interface BundleInfo : MakerRecords
@end
@implementation BundleInfo
@end

@interface LaunchdInfo : MakerRecords
@end
@implementation LaunchdInfo
@end

@interface ApplicationInfo : MakerRecords
@end
@implementation ApplicationInfo
@end

@interface DaemonInfo : MakerRecords
@end
@implementation DaemonInfo
@end

@interface BundleDaemonInfo : MakerRecords
@end
@implementation BundleDaemonInfo
@end

@interface KextInfo : MakerRecords
@end
@implementation KextInfo
@end
