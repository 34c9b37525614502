#include "Platform/Darwin/DarwinFileManager.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/Darwin/FoundationError.h"
#include "Platform/Posix/FileError.h"
#include "Platform/Posix/FolderChain.h"
#include "Platform/Posix/LocalDomain.h"
#include "Platform/Posix/NativeFiles.h"

/// Stops a copy at its first failure and keeps it: only here does Foundation say which entry it was.
@interface PlatformDarwinCopyFailure : NSObject <NSFileManagerDelegate> {
    NSError* error_;
    NSString* source_;
    NSString* destination_;
}
- (NSError*)error;
- (NSString*)source;
- (NSString*)destination;
@end

@implementation PlatformDarwinCopyFailure

- (BOOL)fileManager:(NSFileManager*)manager
    shouldProceedAfterError:(NSError*)error
          copyingItemAtPath:(NSString*)source
                     toPath:(NSString*)destination {
    (void)manager;
    if (error_ == nil) {
        error_ = [error retain];
        source_ = [source copy];
        destination_ = [destination copy];
    }
    return NO;
}

- (NSError*)error {
    return error_;
}

- (NSString*)source {
    return source_;
}

- (NSString*)destination {
    return destination_;
}

- (void)dealloc {
    [error_ release];
    [source_ release];
    [destination_ release];
    [super dealloc];
}

@end

namespace Platform::Darwin {

namespace {

Error copyError(const std::string& source, const std::string& destination, int code) {
    return Posix::fileError(source, "copied to \"" + destination + "\"", code);
}

/// Whether `folder` is the item `tree`, or lies in it. Returns 0 or an errno value.
int liesIn(Posix::Descriptor folder, const Posix::Identity& tree, bool& inside) {
    Posix::Identity previous;
    while (folder) {
        Posix::Identity identity;
        if (const int failure = Posix::identityOf(folder.get(), identity); failure != 0) {
            return failure;
        }
        inside = identity == tree;
        if (inside || identity == previous) {
            return 0;
        }
        previous = identity;
        folder = Posix::Descriptor(::openat(folder.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    return errno;
}

/// What Foundation leaves open, before it is asked. Returns 0 or an errno value.
int whyNotToCopy(const Base::URL& source, const Base::URL& destination) {
    struct stat status {};
    if (::lstat(source.path().c_str(), &status) != 0) {
        return errno;
    }
    const Posix::Identity tree{status.st_dev, status.st_ino};
    const bool isFolder = S_ISDIR(status.st_mode);
    if (::lstat(destination.path().c_str(), &status) == 0) {
        return EEXIST;
    }
    const std::string parent = destination.deletingLastPathComponent().path();
    Posix::Descriptor folder(Posix::openFolderForLookup(parent.c_str()));
    if (!folder) {
        return errno;
    }
    bool inside = false;
    const int failure = isFolder ? liesIn(std::move(folder), tree, inside) : 0;
    return inside ? EINVAL : failure;
}

NSSearchPathDirectory foundationDirectory(SearchPathDirectory directory) {
    switch (directory) {
        case SearchPathDirectory::applications:
            return NSApplicationDirectory;
        case SearchPathDirectory::applicationSupport:
            return NSApplicationSupportDirectory;
        case SearchPathDirectory::users:
            return NSUserDirectory;
    }
    return NSApplicationDirectory;
}

}  // namespace

std::optional<Error> DarwinFileManager::copyItem(const Base::URL& source, const Base::URL& destination) {
    const Pool pool;
    NSString* const from = foundationPath(source.path());
    NSString* const to = foundationPath(destination.path());
    const int reason = from != nil && to != nil ? whyNotToCopy(source, destination) : EILSEQ;
    if (reason != 0) {
        return copyError(source.path(), destination.path(), reason);
    }
    // One of its own: the shared file manager must not be given a delegate.
    const auto manager = Retained<NSFileManager*>::adopt([[NSFileManager alloc] init]);
    const auto failure =
        Retained<PlatformDarwinCopyFailure*>::adopt([[PlatformDarwinCopyFailure alloc] init]);
    [manager.get() setDelegate:failure.get()];
    NSError* error = nil;
    const bool copied = [manager.get() copyItemAtPath:from toPath:to error:&error] == YES;
    [manager.get() setDelegate:nil];
    if (copied) {
        return std::nullopt;
    }
    if ([failure.get() error] == nil) {
        return copyError(source.path(), destination.path(), errnoOf(error));
    }
    return copyError(text([failure.get() source]), text([failure.get() destination]),
                     errnoOf([failure.get() error]));
}

Base::URL DarwinFileManager::localDirectory(SearchPathDirectory directory) {
    const Pool pool;
    NSURL* const url = [[NSFileManager defaultManager] URLForDirectory:foundationDirectory(directory)
                                                              inDomain:NSLocalDomainMask
                                                     appropriateForURL:nil
                                                                create:YES
                                                                 error:nullptr];
    return fileURL(url).value_or(Base::URL::fileURL(Posix::localDomainPath(directory)));
}

}  // namespace Platform::Darwin
