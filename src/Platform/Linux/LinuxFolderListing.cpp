// The folder listing on Linux: getdents64(2) into a large buffer, which saves half of the calls that
// readdir(3) makes.
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Platform/Posix/FolderListing.h"

namespace Platform::Posix {

namespace {

/// The kernel's struct linux_dirent64.
struct DirectoryRecord {
    std::uint64_t inode;
    std::int64_t position;
    std::uint16_t length;
    unsigned char type;
};
constexpr std::size_t kNameOffset = offsetof(DirectoryRecord, type) + 1;

bool isSelfOrParent(const char* name) {
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

}  // namespace

struct FolderListing::State {
    int folder = -1;
    std::size_t position = 0;
    std::size_t end = 0;
    alignas(DirectoryRecord) std::array<char, 32768> buffer;
};

FolderListing::FolderListing() = default;
FolderListing::~FolderListing() = default;

void FolderListing::start(int folder) {
    if (!state_) {
        // Not zeroed: the kernel fills the buffer.
        state_ = std::unique_ptr<State>(new State);
    }
    state_->folder = folder;
    // Somebody may have read it already, with this listing or another one.
    (void)::lseek(folder, 0, SEEK_SET);
    state_->position = state_->end = 0;
}

int FolderListing::next(FolderEntry& entry) {
    State& state = *state_;
    for (;;) {
        if (state.position == state.end) {
            const long count =
                ::syscall(SYS_getdents64, state.folder, state.buffer.data(), state.buffer.size());
            if (count <= 0) {
                // A folder that was removed while it was open has no entries left.
                return count < 0 && errno != ENOENT ? -1 : 0;
            }
            state.position = 0;
            state.end = static_cast<std::size_t>(count);
        }
        const char* start = state.buffer.data() + state.position;
        DirectoryRecord record;
        std::memcpy(&record, start, kNameOffset);
        state.position += record.length;
        const char* name = start + kNameOffset;
        if (!isSelfOrParent(name)) {
            entry = FolderEntry{name, record.type, static_cast<ino_t>(record.inode)};
            return 1;
        }
    }
}

}  // namespace Platform::Posix
