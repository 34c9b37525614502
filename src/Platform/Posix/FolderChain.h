#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>

#include "Platform/Posix/Descriptor.h"

namespace Platform::Posix {

/// What makes a folder the same folder, wherever it is moved.
struct Identity {
    dev_t device = 0;
    ino_t inode = 0;

    friend bool operator==(const Identity&, const Identity&) = default;
};

/// The identity of an open item. Returns 0 or errno.
[[nodiscard]] int identityOf(int descriptor, Identity& identity);

/// The open folders on the way from the top of a tree down to the folder at hand, for a way of any length in
/// constant memory and with a constant number of descriptors.
///
/// Only the lowest kHeld folders are held open. A higher one is reached again through ".." and is trusted
/// only when it is the folder that the way down went through: somebody may have moved a folder out of the
/// tree meanwhile. The identities of kRemembered levels are kept for that. When they are used up, they are
/// taken anew from the way up, which has to end at the top of the tree after exactly the right number of
/// steps: a folder from which it does is inside the tree.
class FolderChain {
  public:
    static constexpr std::size_t kHeld = 16;
    static constexpr std::size_t kRemembered = 1024;

    /// The number of folders on the way.
    [[nodiscard]] std::size_t depth() const { return depth_; }
    /// The lowest folder. There must be one.
    [[nodiscard]] int top() const { return held_[(depth_ - 1) % kHeld].get(); }
    /// Whether the folder above the lowest one is held open.
    [[nodiscard]] bool holdsParent() const { return depth_ >= 2 && lowestHeld_ <= depth_ - 2; }

    /// Goes down into `folder`, which was opened relative to top().
    void push(Descriptor folder);

    /// Goes up. Returns 0, also when the way is then empty; otherwise an errno value (ESTALE when a folder
    /// was moved away), after which the chain stands nowhere and is empty. When the folder above was not held
    /// open, sets `left` to the folder that was left.
    [[nodiscard]] int pop(Identity& left);

  private:
    [[nodiscard]] int reopenParent(Descriptor& parent);
    [[nodiscard]] int rememberAnew();
    void clear();

    std::array<Descriptor, kHeld> held_;
    std::array<Identity, kRemembered> remembered_;
    Identity root_;
    std::size_t depth_ = 0;
    /// Levels [lowestHeld_, depth_) are open; the identities of [lowestRemembered_, lowestHeld_) are known.
    std::size_t lowestHeld_ = 0;
    std::size_t lowestRemembered_ = 0;
};

}  // namespace Platform::Posix
