#include "Platform/Darwin/DarwinFileManager.h"

#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/Posix/LocalDomain.h"

namespace Platform::Darwin {

namespace {

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
