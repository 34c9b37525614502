#include "Platform/Linux/LinuxFileManager.h"

#include "Platform/Linux/TreeCopy.h"
#include "Platform/Posix/FileError.h"
#include "Platform/Posix/LocalDomain.h"

namespace Platform::Linux {

std::optional<Error> LinuxFileManager::copyItem(const Base::URL& source, const Base::URL& destination) {
    Posix::OpenedParent from;
    Posix::OpenedParent to;
    int failure = Posix::openParent(source, from);
    if (failure == 0) {
        failure = Posix::openParent(destination, to);
    }
    if (failure != 0) {
        return copyError(source.path(), destination.path(), failure);
    }
    return copyTree(CopyPlace{from.folder.get(), from.name, source.path()},
                    CopyPlace{to.folder.get(), to.name, destination.path()});
}

Base::URL LinuxFileManager::localDirectory(SearchPathDirectory directory) {
    Base::URL url = Base::URL::fileURL(localDomain_ + std::string(Posix::localDomainPath(directory)));
    if (!itemExists(url)) {
        // The folder's URL is the answer in any case.
        (void)createDirectory(url, true);
    }
    return url;
}

}  // namespace Platform::Linux
