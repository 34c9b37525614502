#include "Platform/Posix/TreeErrand.h"

#include <cerrno>

namespace Platform::Posix {

Meeting* TreeErrand::carryOn(FolderCrew& crew) {
    while (walk_.depth() > 0 && !stopped_ && !isAbandoned()) {
        offer(crew);
        FolderEntry entry;
        if (const int result = walk_.next(entry); result > 0) {
            take(entry);
            continue;
        } else if (result < 0) {
            failListing(errno);
        }
        Meeting* const meeting = meetingHere();
        if (meeting != nullptr && !meeting->isOver()) {
            return meeting;
        }
        const bool failedElsewhere = meeting != nullptr && meeting->hasFailure();
        if (meeting != nullptr) {
            given_.pop_back();
        }
        endFolder(failedElsewhere);
    }
    end(crew);
    return nullptr;
}

/// Gives something away if a thread waits for it: called in each new folder, and once every so many entries.
void TreeErrand::offer(FolderCrew& crew) {
    constexpr std::size_t kEvery = 16;
    const bool wentDown = walk_.depth() > lastDepth_;
    lastDepth_ = walk_.depth();
    if (++entries_ % kEvery != 0 && !wentDown) {
        return;
    }
    crew.met(entries_);
    if (!crew.wantsWork()) {
        return;
    }
    if (const std::size_t level = walk_.levelWorthGiving(); level < walk_.depth() && crew.promise()) {
        giveLevel(level, crew);
    }
}

void TreeErrand::giveLevel(std::size_t level, FolderCrew& crew) {
    const bool ownTop = isPart() && level == 0;
    const std::shared_ptr<Meeting> meeting = ownTop ? this->meeting() : std::make_shared<Meeting>();
    std::unique_ptr<TreeErrand> part = newPart(level, meeting);
    if (part == nullptr || !walk_.give(level, part->walk_)) {
        crew.takeBack();
        return;
    }
    if (!ownTop) {
        given_.push_back(Given{level, meeting});
    }
    crew.give(*this, std::move(part));
}

/// The meeting of those who were given parts of the current folder.
Meeting* TreeErrand::meetingHere() const {
    const bool isGiven = !given_.empty() && given_.back().level == walk_.depth() - 1;
    return isGiven ? given_.back().meeting.get() : nullptr;
}

}  // namespace Platform::Posix
