#include "Platform/Linux/LinuxFileManager.h"

#include "Platform/Posix/LocalDomain.h"

namespace Platform::Linux {

Base::URL LinuxFileManager::localDirectory(SearchPathDirectory directory) {
    Base::URL url = Base::URL::fileURL(localDomain_ + std::string(Posix::localDomainPath(directory)));
    if (!itemExists(url)) {
        // The folder's URL is the answer in any case.
        (void)createDirectory(url, true);
    }
    return url;
}

}  // namespace Platform::Linux
