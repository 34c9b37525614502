#include "Platform/Linux/Files/LinuxFileManager.h"

#include "Platform/Posix/LocalDomain.h"

namespace Platform::Linux {

Base::URL LinuxFileManager::localDirectory(SearchPathDirectory directory) {
    Base::URL url = Base::URL::fileURL(localDomain_ + std::string(Posix::localDomainPath(directory)));
    if (!itemExists(url)) {
        // The answer is the folder's URL, whatever happens here.
        (void)createDirectory(url, true);
    }
    return url;
}

}  // namespace Platform::Linux
