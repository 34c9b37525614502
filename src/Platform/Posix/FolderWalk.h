#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Posix/FolderChain.h"
#include "Platform/Posix/FolderListing.h"

namespace Platform::Posix {

/// Opens the entry `name` of `parent` if it is a real folder. Returns 0, or an errno value: ENOTDIR or ELOOP
/// for anything that is not a folder, links included.
[[nodiscard]] int openFolder(int parent, const char* name, Descriptor& folder);

/// The path of a folder, for messages. The part beyond kLongest is left out and shows as "/...".
class FolderPath {
  public:
    explicit FolderPath(std::string_view path) : text_(path) {}

    void append(std::string_view name);
    void removeLast();
    [[nodiscard]] std::string text() const { return levelsLeftOut_ > 0 ? text_ + "/..." : text_; }

  private:
    static constexpr std::size_t kLongest = std::size_t{1} << 16;

    std::string text_;
    std::size_t levelsLeftOut_ = 0;
};

/// A walk through a tree of folders: its own steps down and up, no recursion, constant memory for any width
/// and depth. Never steps through a link. Nothing is kept sorted; each folder's entries come in the file
/// system's order.
class FolderWalk {
  public:
    static constexpr std::size_t kHeld = FolderChain::kHeld;
    /// The most levels of its way that a walk can have given away.
    static constexpr std::size_t kMostGiven = 64;

    /// `path` is the top folder's name in messages.
    explicit FolderWalk(std::string_view path) : path_(path) {}

    /// The number of folders on the way down, the top one included.
    [[nodiscard]] std::size_t depth() const { return chain_.depth(); }
    [[nodiscard]] int folder() const { return chain_.top(); }

    /// Steps into the top folder, then into a folder of folder() called `name`.
    void enterTop(Descriptor top);
    void enter(Descriptor folder, const char* name);

    /// The next entry of the current folder: 1, 0 at its end, -1 on failure (see errno).
    int next(FolderEntry& entry) { return listing(depth() - 1).next(entry); }

    /// Steps up; next() goes on behind the entry that was left. Returns 0 or an errno value, after which the
    /// walk is over (depth() is 0): the folders above could not be identified again for certain.
    [[nodiscard]] int leave();
    /// After leave(): the name in folder() of the folder that was left. Null if it is no longer there; next()
    /// is then at the end.
    [[nodiscard]] const char* leftName() const { return leftName_; }
    /// After leave(): whether the current folder was held open all the time.
    [[nodiscard]] bool stayedOpen() const { return stayedOpen_; }

    /// The highest level, 0 being the top, above the current folder or that folder itself, whose rest is
    /// worth giving away; depth() if there is none. Only levels below the last one given are eligible: what
    /// is given later comes earlier in the tree's order.
    [[nodiscard]] std::size_t levelWorthGiving();
    /// Gives the rest of such a level (part of it for the current folder) to a walk that has not begun and
    /// whose top is then that folder; this walk finds no more entries there. False if impossible.
    [[nodiscard]] bool give(std::size_t level, FolderWalk& other);

    /// The path of the current folder, for messages.
    [[nodiscard]] std::string path() const { return path_.text(); }
    /// The path of one of its entries.
    [[nodiscard]] std::string pathOf(std::string_view name) const;

  private:
    /// A level whose rest was given away, and the entries of it that were kept. They need no descriptor.
    struct Given {
        std::size_t level;
        FolderListing kept;
    };

    [[nodiscard]] bool hasGiven(std::size_t level) const {
        return !given_.empty() && given_.back().level == level;
    }
    FolderListing& listing(std::size_t level) {
        return hasGiven(level) ? given_.back().kept : listings_[level % kHeld];
    }
    void push(Descriptor folder);
    void findAgain(const Identity& left);
    [[nodiscard]] bool findAgain(const Identity& left, bool trustListedInodes);

    FolderChain chain_;
    std::array<FolderListing, kHeld> listings_;
    /// For each held level, the name of the folder that was entered last.
    std::array<std::string, kHeld> entered_;
    /// In ascending order.
    std::vector<Given> given_;
    const char* leftName_ = nullptr;
    bool stayedOpen_ = true;
    FolderPath path_;
};

}  // namespace Platform::Posix
