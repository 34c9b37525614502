#include "Platform/Posix/FolderListing.h"

#include <cerrno>
#include <utility>

#include "Platform/Posix/EntryBuffer.h"
#include "Platform/Posix/EntryReader.h"

namespace Platform::Posix {

struct FolderListing::State {
    void fill();

    EntryReader reader;
    /// Whether the reader has reached its end.
    bool ended = false;
    /// The result once the entries read ahead are used up: 0 or an errno value.
    int failure = 0;
    EntryBuffer entries;
};

/// Reads the next batch; nothing may be left of the last one.
void FolderListing::State::fill() {
    const ssize_t count = ended ? 0 : reader.read(entries.room(), EntryBuffer::kSize);
    if (count < 0) {
        failure = errno;
    }
    ended = count <= 0;
    entries.filled(count > 0 ? static_cast<std::size_t>(count) : 0);
}

FolderListing::FolderListing() = default;
FolderListing::FolderListing(FolderListing&& other) noexcept = default;
FolderListing& FolderListing::operator=(FolderListing&& other) noexcept = default;
FolderListing::~FolderListing() = default;

void FolderListing::start(int folder) {
    if (!state_) {
        // `new` without parentheses does not zero its buffer.
        state_.reset(new State);
    }
    state_->failure = state_->reader.start(folder);
    state_->ended = state_->failure != 0;
    state_->entries.filled(0);
}

int FolderListing::next(FolderEntry& entry) {
    if (!state_) {
        return 0;
    }
    while (!state_->entries.take(entry)) {
        if (state_->ended) {
            errno = std::exchange(state_->failure, 0);
            return errno == 0 ? 0 : -1;
        }
        state_->fill();
    }
    return 1;
}

bool FolderListing::holds(std::size_t count) {
    return hasRead() && state_->entries.holds(count);
}

bool FolderListing::holdsFolder() {
    return hasRead() && state_->entries.holdsFolder();
}

/// Reads the next batch if nothing is left of the last one.
bool FolderListing::hasRead() {
    if (state_ && !state_->ended && !state_->entries.holds(1)) {
        state_->fill();
    }
    return state_ != nullptr;
}

FolderListing FolderListing::takeFirstHalf() {
    FolderListing half;
    half.state_.reset(new State);
    half.state_->ended = true;
    state_->entries.moveFirstHalf(half.state_->entries);
    return half;
}

void FolderListing::continueThrough(int duplicate) {
    if (state_) {
        state_->reader.continueThrough(duplicate);
    }
}

}  // namespace Platform::Posix
