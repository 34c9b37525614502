#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>

#include "Platform/Posix/Descriptor.h"

namespace Platform::Posix {

/// Identifies a folder wherever it is moved.
struct Identity {
    dev_t device = 0;
    ino_t inode = 0;

    friend bool operator==(const Identity&, const Identity&) = default;
};

/// The identity of an open item. Returns 0 or errno.
[[nodiscard]] int identityOf(int descriptor, Identity& identity);

/// The open folders on the way from the top of a tree down to the current folder, for a way of any length in
/// constant memory and with a constant number of descriptors.
///
/// Only the lowest kHeld folders are held open. A higher one is reached again through ".." and is trusted
/// only if it is the folder that the way down went through: somebody may have moved a folder out of the tree
/// meanwhile. For that check the identities of kRemembered levels are kept, and those of checkpoints: one
/// every kFirstStride levels, every twice as many when the table is full. When the remembered ones are used
/// up, they are collected again on the way up to the next checkpoint, which has to be reached after exactly
/// the right number of steps: a folder from which it is lies inside one that the way down went through. Each
/// level is climbed twice at most, as long as checkpoints are not further apart than kRemembered: down to
/// 262,144 levels.
class FolderChain {
  public:
    static constexpr std::size_t kHeld = 16;
    static constexpr std::size_t kRemembered = 1024;
    static constexpr std::size_t kCheckpoints = 256;
    static constexpr std::size_t kFirstStride = 64;

    /// The number of folders on the way.
    [[nodiscard]] std::size_t depth() const { return depth_; }
    /// The lowest folder. There must be one.
    [[nodiscard]] int top() const { return held_[(depth_ - 1) % kHeld].get(); }
    /// The highest level that is held open, 0 being the top; and the folder of a level that is.
    [[nodiscard]] std::size_t lowestHeld() const { return lowestHeld_; }
    [[nodiscard]] int held(std::size_t level) const { return held_[level % kHeld].get(); }
    /// Whether the folder above the lowest one is held open.
    [[nodiscard]] bool holdsParent() const { return depth_ >= 2 && lowestHeld_ <= depth_ - 2; }

    /// Goes down into `folder`, which was opened relative to top().
    void push(Descriptor folder);

    /// Goes up. Returns 0, even if the way is then empty; otherwise an errno value (ESTALE if a folder was
    /// moved away), after which the chain has no position and is empty. If the folder above was not held
    /// open, sets `left` to the folder that was left.
    [[nodiscard]] int pop(Identity& left);

  private:
    [[nodiscard]] int reopenParent(Descriptor& parent);
    [[nodiscard]] int rememberAnew();
    void remember(std::size_t level, const Identity& identity);
    void clear();

    std::array<Descriptor, kHeld> held_;
    std::array<Identity, kRemembered> remembered_;
    /// The identities of the levels 0, stride_, 2 * stride_, ... that are not held open.
    std::array<Identity, kCheckpoints> checkpoints_;
    std::size_t stride_ = kFirstStride;
    std::size_t depth_ = 0;
    /// Levels [lowestHeld_, depth_) are open; the identities of [lowestRemembered_, lowestHeld_) are known.
    std::size_t lowestHeld_ = 0;
    std::size_t lowestRemembered_ = 0;
};

}  // namespace Platform::Posix
