#pragma once

#include <array>
#include <string>
#include <string_view>

#include "Platform/Posix/FolderChain.h"
#include "Platform/Posix/FolderListing.h"

namespace Platform::Posix {

/// Opens the entry `name` of `parent` when it is a real folder. Returns 0, or an errno value: ENOTDIR or
/// ELOOP for anything that is not a folder, links included.
[[nodiscard]] int openFolder(int parent, const char* name, Descriptor& folder);

/// A walk through a tree of folders: its own steps down and up, no recursion, constant memory for any width
/// and depth. Never steps through a link. Nothing is kept sorted; each folder's entries come in the file
/// system's order.
class FolderWalk {
  public:
    static constexpr std::size_t kHeld = FolderChain::kHeld;

    /// `path` is what the top folder is called in messages.
    explicit FolderWalk(std::string_view path) : path_(path) {}

    /// The number of folders on the way down, the top one included.
    [[nodiscard]] std::size_t depth() const { return chain_.depth(); }
    [[nodiscard]] int folder() const { return chain_.top(); }

    /// Steps into the top folder, then into a folder of folder() called `name`.
    void enterTop(Descriptor top);
    void enter(Descriptor folder, const char* name);

    /// The next entry of the folder at hand: 1, 0 at its end, -1 on failure (see errno).
    int next(FolderEntry& entry) { return listings_[(depth() - 1) % kHeld].next(entry); }

    /// Steps up; next() goes on behind the entry that was left. Returns 0 or an errno value, after which the
    /// walk is over (depth() is 0): the folders above could not be reached again for certain.
    [[nodiscard]] int leave();
    /// After leave(): the name in folder() of the folder that was left. Null when it is no longer there;
    /// next() is then at the end.
    [[nodiscard]] const char* leftName() const { return leftName_; }
    /// After leave(): whether the folder at hand was held open all the time.
    [[nodiscard]] bool stayedOpen() const { return stayedOpen_; }

    /// The path of the folder at hand, for messages. What exceeds kLongestPath is left out and shows as
    /// "/...".
    [[nodiscard]] std::string path() const;
    /// The path of one of its entries.
    [[nodiscard]] std::string pathOf(std::string_view name) const;

  private:
    static constexpr std::size_t kLongestPath = std::size_t{1} << 16;

    void push(Descriptor folder);
    void findAgain(const Identity& left);
    [[nodiscard]] bool findAgain(const Identity& left, bool trustListedInodes);

    FolderChain chain_;
    std::array<FolderListing, kHeld> listings_;
    /// For each held level, the name that next() returned last.
    std::array<const char*, kHeld> entered_{};
    const char* leftName_ = nullptr;
    bool stayedOpen_ = true;
    std::string path_;
    std::size_t levelsLeftOut_ = 0;
};

}  // namespace Platform::Posix
