#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "Platform/Posix/FolderCrew.h"
#include "Platform/Posix/FolderWalk.h"

namespace Platform::Posix {

/// A walk through a tree, or through the rest of one of its folders, that gives away parts of itself: the
/// rest of the highest folder on its way that has one, as soon as a thread of the crew is idle.
class TreeErrand : public Errand {
  public:
    [[nodiscard]] Meeting* carryOn(FolderCrew& crew) final;

  protected:
    /// The walk of a whole tree, which its constructor or whoever made it begins.
    explicit TreeErrand(std::string_view path) : TreeErrand(path, nullptr) {}
    /// A part of `whole`, which the crew begins.
    TreeErrand(std::string_view path, std::shared_ptr<Meeting> meeting)
        : Errand(std::move(meeting)), walk_(path) {}

    /// Processes an entry of the current folder, or steps into it.
    virtual void take(const FolderEntry& entry) = 0;
    /// The current folder cannot be listed to its end.
    virtual void failListing(int code) = 0;
    /// Steps out of the current folder; the other errands report whether they met failures in it.
    virtual void endFolder(bool failedElsewhere) = 0;
    /// The walk is over, or abandoned.
    virtual void end(FolderCrew& crew) = 0;
    /// A walk for the rest of a level, ready except for its folder; null if that is impossible.
    [[nodiscard]] virtual std::unique_ptr<TreeErrand> newPart(std::size_t level,
                                                              std::shared_ptr<Meeting> meeting) = 0;

    /// Whether the walk began with the rest of a folder, which another errand has to end.
    [[nodiscard]] bool isPart() const { return meeting() != nullptr; }
    /// Ends the walk before the tree does.
    void stop() { stopped_ = true; }

    FolderWalk walk_;

  private:
    struct Given {
        std::size_t level;
        std::shared_ptr<Meeting> meeting;
    };

    void offer(FolderCrew& crew);
    void giveLevel(std::size_t level, FolderCrew& crew);
    [[nodiscard]] Meeting* meetingHere() const;

    std::size_t entries_ = 0;
    std::size_t lastDepth_ = 0;
    bool stopped_ = false;
    /// The levels that were given away, in ascending order; without the top one of a part.
    std::vector<Given> given_;
};

}  // namespace Platform::Posix
