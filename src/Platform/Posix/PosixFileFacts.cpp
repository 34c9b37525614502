#include "Platform/Posix/PosixFileFacts.h"

#include <sys/stat.h>

#include <cerrno>

#include "Platform/Posix/FileError.h"
#include "Platform/Posix/TreeCount.h"

namespace Platform::Posix {

std::optional<ItemFacts> PosixFileFacts::look(const Base::URL& item, Error& error) {
    struct stat status {};
    if (::lstat(item.path().c_str(), &status) != 0) {
        error = fileError(item.path(), "looked at", errno);
        return std::nullopt;
    }
    return factsOf(status);
}

TreeSize PosixFileFacts::measure(const Base::URL& item, const std::vector<ItemIdentity>& without,
                                 const std::function<void(const TreeSize&)>& counted) {
    return countTree(item.path(), without, counted);
}

}  // namespace Platform::Posix
