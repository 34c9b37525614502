#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "Base/URL.h"
#include "Platform/Error.h"

namespace Platform {

/// What an item of the file system is.
enum class ItemKind : std::uint8_t { file, folder, link, other };

/// Identifies an item however its path is spelled: its file system and its number there.
struct ItemIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend auto operator<=>(const ItemIdentity&, const ItemIdentity&) = default;
};

/// Facts about an item itself; for a link, about the link.
struct ItemFacts {
    ItemKind kind = ItemKind::file;
    /// The length of a file; for anything else, the file system's value.
    std::uint64_t bytes = 0;
    ItemIdentity identity;

    friend bool operator==(const ItemFacts&, const ItemFacts&) = default;
};

/// The contents of a tree.
struct TreeSize {
    std::uint64_t files = 0;
    std::uint64_t folders = 0;
    std::uint64_t links = 0;
    std::uint64_t others = 0;
    /// The lengths of the files; a file with two names in the tree counts twice.
    std::uint64_t bytes = 0;
    /// Folders and items that could not be read: the other numbers are too small then.
    std::uint64_t unread = 0;

    TreeSize& operator+=(const TreeSize& more);
    friend bool operator==(const TreeSize&, const TreeSize&) = default;
};

/// Queries that change nothing, not even a time of access. Nothing is logged.
class FileFacts {
  public:
    virtual ~FileFacts() = default;

    /// The item at this path. On failure returns nothing and sets `error`: the code is ENOENT or ENOTDIR if
    /// there is no such item, and any other if that cannot be told. Links on the way are followed.
    [[nodiscard]] virtual std::optional<ItemFacts> look(const Base::URL& item, Error& error) = 0;

    /// Counts an item and everything in it, with several threads, which have ended when it returns. A link
    /// counts as itself; items in `without` are left out with everything in them; an item that vanishes
    /// during the count is not counted. `counted` is called on this thread, now and then, with the count so
    /// far. Memory grows with the number of folders that are waiting.
    [[nodiscard]] virtual TreeSize measure(const Base::URL& item, const std::vector<ItemIdentity>& without,
                                           const std::function<void(const TreeSize&)>& counted) = 0;
};

}  // namespace Platform
