#include "Platform/Darwin/DarwinStandardFolders.h"

#include "Platform/Darwin/FoundationBridge.h"

namespace Platform::Darwin {

namespace {

NSSearchPathDirectory foundationDirectory(StandardFolder purpose) {
    switch (purpose) {
        case StandardFolder::applications:
            return NSApplicationDirectory;
        case StandardFolder::applicationSupport:
            return NSApplicationSupportDirectory;
        case StandardFolder::users:
            return NSUserDirectory;
    }
    return NSApplicationDirectory;
}

}  // namespace

Base::URL DarwinStandardFolders::folder(StandardFolder purpose) {
    const Pool pool;
    NSURL* const url = [[NSFileManager defaultManager] URLForDirectory:foundationDirectory(purpose)
                                                              inDomain:NSLocalDomainMask
                                                     appropriateForURL:nil
                                                                create:YES
                                                                 error:nullptr];
    return fileURL(url).value_or(names_.folder(purpose));
}

}  // namespace Platform::Darwin
