#include "Platform/Linux/Files/LinuxStandardFolders.h"

namespace Platform::Linux {

Base::URL LinuxStandardFolders::folder(StandardFolder purpose) {
    Base::URL url = Base::URL::fileURL(localDomain_ + names_.folder(purpose).path());
    if (!files_.itemExists(url)) {
        // The answer is the folder's URL, whatever happens here.
        (void)files_.createDirectory(url, true);
    }
    return url;
}

}  // namespace Platform::Linux
