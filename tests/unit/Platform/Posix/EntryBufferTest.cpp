#include "Platform/Posix/EntryBuffer.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace PlatformTests {
namespace {

using Platform::Posix::EntryBuffer;
using Platform::Posix::EntryRecord;
using Platform::Posix::FolderEntry;
using Platform::Posix::kEntryNameOffset;

using Entries = std::vector<std::pair<std::string_view, unsigned char>>;

void fill(EntryBuffer& buffer, const Entries& entries) {
    std::size_t size = 0;
    for (const auto& [name, type] : entries) {
        constexpr std::size_t kAlignment = alignof(EntryRecord);
        EntryRecord record{};
        record.length = static_cast<std::uint16_t>((kEntryNameOffset + name.size() + kAlignment) /
                                                   kAlignment * kAlignment);
        record.type = type;
        std::memcpy(buffer.room() + size, &record, kEntryNameOffset);
        const std::string terminated(name);
        std::memcpy(buffer.room() + size + kEntryNameOffset, terminated.c_str(), terminated.size() + 1);
        size += record.length;
    }
    buffer.filled(size);
}

std::vector<std::string> rest(EntryBuffer& buffer) {
    std::vector<std::string> names;
    FolderEntry entry;
    while (buffer.take(entry)) {
        names.emplace_back(entry.name);
    }
    return names;
}

TEST(EntryBuffer, HoldsAFolderWhileAnEntryIsLeftThatMayBeOne) {
    EntryBuffer buffer;
    EXPECT_FALSE((fill(buffer, {}), buffer.holdsFolder()));
    EXPECT_FALSE((fill(buffer, {{".", DT_DIR}, {"..", DT_DIR}}), buffer.holdsFolder()));
    EXPECT_FALSE((fill(buffer, {{"file", DT_REG}, {"link", DT_LNK}}), buffer.holdsFolder()));
    EXPECT_TRUE((fill(buffer, {{"file", DT_REG}, {"untold", DT_UNKNOWN}}), buffer.holdsFolder()));
    fill(buffer, {{"folder", DT_DIR}, {"file", DT_REG}});
    EXPECT_TRUE(buffer.holdsFolder());
    FolderEntry taken;
    ASSERT_TRUE(buffer.take(taken));
    EXPECT_FALSE(buffer.holdsFolder());
    EXPECT_EQ(rest(buffer), std::vector<std::string>{"file"}) << "a look takes nothing";
}

TEST(EntryBuffer, CountsWhatIsLeft) {
    EntryBuffer buffer;
    fill(buffer, {{"..", DT_DIR}, {"a", DT_REG}, {"b", DT_REG}});
    EXPECT_TRUE(buffer.holds(0));
    EXPECT_TRUE(buffer.holds(2));
    EXPECT_FALSE(buffer.holds(3));
    EXPECT_EQ(rest(buffer), (std::vector<std::string>{"a", "b"})) << "counting takes nothing";
    EXPECT_FALSE(buffer.holds(1));
}

TEST(EntryBuffer, MovesTheFirstHalfOfWhatIsLeft) {
    EntryBuffer buffer;
    EntryBuffer other;
    fill(buffer, {{"taken", DT_REG}, {"a", DT_REG}, {"b", DT_REG}, {"c", DT_REG}, {"d", DT_REG}});
    FolderEntry taken;
    ASSERT_TRUE(buffer.take(taken));
    buffer.moveFirstHalf(other);
    EXPECT_EQ(rest(other), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(rest(buffer), (std::vector<std::string>{"c", "d"}));
}

}  // namespace
}  // namespace PlatformTests
