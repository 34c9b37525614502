#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/SimulatedMac.h"

namespace SystemTests {

/// Everything that can be seen of one item of a simulated Mac.
struct ItemFacts {
    char kind = '?';
    unsigned mode = 0;
    unsigned owner = 0;
    unsigned group = 0;
    /// Tells an item from another one that was put in its place.
    std::uint64_t inode = 0;
    std::int64_t changed = 0;
    /// A file's bytes, a link's target.
    std::string contents;

    friend bool operator==(const ItemFacts&, const ItemFacts&) = default;
};

/// In one line, with a digest of the contents.
std::ostream& operator<<(std::ostream& out, const ItemFacts& facts);

using MacInventory = std::map<std::string, ItemFacts>;

/// Every item of a Mac that does not run, by its path in the Mac.
[[nodiscard]] MacInventory inventoryOf(const TestSupport::SimulatedMac& mac);

/// The differences in words, one per line; empty if there are none. In the folders `refilled` the time of the
/// last change does not count: something was removed from them or put into them.
[[nodiscard]] std::vector<std::string> differences(const MacInventory& actual, const MacInventory& expected,
                                                   const std::set<std::string>& refilled);

/// Whether `path` is the item at `place` or lies below it.
[[nodiscard]] bool isAtOrBelow(const std::string& path, const std::string& place);
[[nodiscard]] bool isAtOrBelow(const std::string& path, const std::vector<std::string>& places);

}  // namespace SystemTests
