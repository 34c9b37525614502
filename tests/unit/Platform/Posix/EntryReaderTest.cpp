#include "Platform/Posix/EntryReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>

#include "Platform/Posix/Descriptor.h"
#include "Platform/Posix/EntryBuffer.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Posix::Descriptor;
using Platform::Posix::EntryReader;

TEST(EntryReader, StartsAgainBeforeTheFirstEntry) {
    const Scratch scratch;
    makeFile(scratch.path("file"));
    const Descriptor folder(::open(scratch.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    alignas(Platform::Posix::EntryRecord) std::array<char, Platform::Posix::EntryBuffer::kSize> room;
    EntryReader reader;
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(reader.start(folder.get()), 0);
        EXPECT_GT(reader.read(room.data(), room.size()), 0);
        EXPECT_EQ(reader.read(room.data(), room.size()), 0) << "the end";
    }
}

TEST(EntryReader, DoesNotStartAtWhatHasNoEntries) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const Descriptor first(ends[0]);
    const Descriptor second(ends[1]);
    EntryReader reader;
    EXPECT_NE(reader.start(first.get()), 0);
}

TEST(EntryReader, FindsNoEntriesInAFolderThatWasRemovedMeanwhile) {
    const Scratch scratch;
    const std::string path = scratch.path("folder");
    makeFolder(path);
    const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    EntryReader reader;
    ASSERT_EQ(reader.start(folder.get()), 0);
    ASSERT_EQ(::rmdir(path.c_str()), 0);
    alignas(Platform::Posix::EntryRecord) std::array<char, Platform::Posix::EntryBuffer::kSize> room;
    EXPECT_EQ(reader.read(room.data(), room.size()), 0);
}

}  // namespace
}  // namespace PlatformTests
