// The folder listing of systems that offer no better call than readdir(3).
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Platform/Posix/FolderListing.h"

namespace Platform::Posix {

struct FolderListing::State {
    ~State() { close(); }

    void close() {
        if (stream != nullptr) {
            ::closedir(stream);
            stream = nullptr;
        }
    }

    DIR* stream = nullptr;
    int failure = 0;
};

FolderListing::FolderListing() = default;
FolderListing::~FolderListing() = default;

void FolderListing::start(int folder) {
    if (!state_) {
        state_ = std::make_unique<State>();
    }
    state_->close();
    state_->failure = 0;
    // A description of its own: the stream closes its descriptor and has its own position.
    const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (own >= 0) {
        state_->stream = ::fdopendir(own);
    }
    if (state_->stream == nullptr) {
        state_->failure = errno;
        if (own >= 0) {
            ::close(own);
        }
    }
}

int FolderListing::next(FolderEntry& entry) {
    if (state_->stream == nullptr) {
        errno = state_->failure;
        return -1;
    }
    for (;;) {
        errno = 0;
        const dirent* found = ::readdir(state_->stream);
        if (found == nullptr) {
            return errno == 0 ? 0 : -1;
        }
        if (std::strcmp(found->d_name, ".") != 0 && std::strcmp(found->d_name, "..") != 0) {
            entry = FolderEntry{found->d_name, found->d_type, found->d_ino};
            return 1;
        }
    }
}

}  // namespace Platform::Posix
