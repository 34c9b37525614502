#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "ArchiveBuilder.h"
#include "HostileArchives.h"
#include "Samples.h"

// What a stranger might send to a root process.

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kTrailerSize = 32;

using HostileArchiveTests::isRefused;

// `bytes` with a big-endian number at `offset` from the trailer's start.
Bytes withTrailerField(Bytes bytes, std::size_t offset, std::size_t width, std::uint64_t value) {
    const std::string text = PlistBuilder::bigEndian(value, width);
    std::copy(text.begin(), text.end(), bytes.end() - kTrailerSize + static_cast<std::ptrdiff_t>(offset));
    return bytes;
}

using HostileArchiveTests::smallArchive;

TEST(HostileArchive, CutAtEveryLengthIsRefused) {
    const Bytes whole = Samples::archive(Samples::oneOfEach());
    for (std::size_t length = 0; length < whole.size(); ++length) {
        // A separate buffer, so that reading past its end is noticed.
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_TRUE(isRefused(outcome(cut))) << length;
    }
}

TEST(HostileArchive, WithOneByteChangedIsReadOrRefused) {
    const Bytes whole = Samples::archive(Samples::oneOfEach());
    std::size_t read = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const std::uint8_t flip : {0x01, 0x80, 0xFF, 0x10, 0x0F}) {
            Bytes changed = whole;
            changed[at] ^= flip;
            const std::string result = outcome(changed);
            read += result.starts_with("refused: ") ? 0 : 1;
            EXPECT_FALSE(result.empty());
        }
    }
    EXPECT_GT(read, 0U) << "a letter in a description may change";
    EXPECT_LT(read, whole.size() * 5) << "not everything may change";
}

TEST(HostileArchive, OfAnotherFormatIsRefused) {
    for (const std::string text : {"", "bplist00", "bplist01", "<?xml version=\"1.0\"?><plist/>"}) {
        EXPECT_EQ(outcome(Bytes(text.begin(), text.end())),
                  "refused: not a readable binary property list: missing bplist00 signature, or impossible "
                  "file size");
    }
}

TEST(HostileArchive, WithImpossibleWidthsIsRefused) {
    for (const std::uint64_t width : {0U, 9U, 255U}) {
        for (const std::size_t field : {6U, 7U}) {
            EXPECT_EQ(outcome(withTrailerField(smallArchive(), field, 1, width)),
                      "refused: not a readable binary property list: its trailer names an impossible width");
        }
    }
}

TEST(HostileArchive, WithAHugeObjectCountIsRefused) {
    for (const std::uint64_t count :
         {UINT64_MAX, UINT64_MAX / 4 + 2, std::uint64_t{1} << 32, std::uint64_t{1000}, std::uint64_t{0}}) {
        EXPECT_EQ(outcome(withTrailerField(smallArchive(), 8, 8, count)),
                  "refused: not a readable binary property list: its offset table does not fit the file");
    }
}

TEST(HostileArchive, WithATableOutsideIsRefused) {
    for (const std::uint64_t table :
         {UINT64_MAX, std::uint64_t{0}, std::uint64_t{7}, std::uint64_t{1} << 40}) {
        EXPECT_EQ(outcome(withTrailerField(smallArchive(), 24, 8, table)),
                  "refused: not a readable binary property list: its offset table does not fit the file");
    }
}

TEST(HostileArchive, WithATopObjectOutsideIsRefused) {
    for (const std::uint64_t top : {UINT64_MAX, std::uint64_t{1} << 32, std::uint64_t{1000}}) {
        EXPECT_EQ(outcome(withTrailerField(smallArchive(), 16, 8, top)),
                  "refused: not a readable binary property list: its top object does not exist");
    }
}

TEST(HostileArchive, WithMoreObjectsThanBytesIsRefused) {
    // 60,000 offsets, all of one tiny object.
    std::string bytes = "bplist00\x09";
    for (int i = 0; i < 60000; ++i) {
        bytes += '\x08';
    }
    bytes += std::string(6, '\0') + "\x01\x01" + PlistBuilder::bigEndian(60000, 8) +
             PlistBuilder::bigEndian(0, 8) + PlistBuilder::bigEndian(9, 8);
    EXPECT_EQ(outcome(Bytes(bytes.begin(), bytes.end())),
              "refused: not a readable binary property list: it has more objects than bytes");
}

TEST(HostileArchive, WithAnOffsetOutsideIsRefused) {
    const Bytes good = smallArchive();
    const std::size_t table = good[good.size() - 2] << 8 | good[good.size() - 1];
    for (const std::uint32_t offset : {0U, 7U, static_cast<std::uint32_t>(table), 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        Bytes bad = good;
        const std::string text = PlistBuilder::bigEndian(offset, 4);
        std::copy(text.begin(), text.end(), bad.begin() + static_cast<std::ptrdiff_t>(table));
        EXPECT_EQ(outcome(bad),
                  "refused: not a readable binary property list: the offset of object 0 is out of range");
    }
}

// Each of these is the first object of an otherwise sound list.
TEST(HostileArchive, WithADamagedObjectIsRefused) {
    using namespace std::string_literals;
    for (const std::string& object : {"\x01"s,
                                      "\x0F"s,
                                      "\x15"s,
                                      "\x1F"s,
                                      "\x20"s,
                                      "\x24"s,
                                      "\x32"s,
                                      "\x70"s,
                                      "\x88"s,
                                      "\x8F"s,
                                      "\x90"s,
                                      "\xB0"s,
                                      "\xC0"s,
                                      "\xE0"s,
                                      "\xF0"s,
                                      "\x5F\x5F"s,
                                      "\x5F\x14"s,
                                      "\x5F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s,
                                      "\x6F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s,
                                      "\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s,
                                      "\xDF\x13\x3F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s,
                                      "\x4F\x13\x80\x00\x00\x00\x00\x00\x00\x00"s,
                                      "\x5F\x12\x00\x00\x10\x00"s,
                                      "\xDF\x12\xFF\xFF\xFF\xFF"s}) {
        PlistBuilder plist;
        plist.raw(object);
        EXPECT_EQ(
            outcome(plist.finish(plist.dictionary(std::vector<std::pair<std::string, PlistBuilder::Id>>{}))),
            "refused: not a readable binary property list: object 0 is damaged");
    }
}

TEST(HostileArchive, WithAnObjectCutByTheTableIsRefused) {
    for (const std::string object : {"\x13\x01", "\x23\x01", "\x33\x01", "\x81\x01", "\x5F", "\x5F\x11\x01",
                                     "\x52z", "\x61z", "\xA1z", "\xD1zzz", "\x43zz"}) {
        PlistBuilder plist;
        const auto top = plist.boolean(true);
        const auto last = plist.raw(object);
        EXPECT_EQ(outcome(plist.finish(top)), "refused: not a readable binary property list: object " +
                                                  std::to_string(last) + " is damaged");
    }
}

TEST(HostileArchive, WithAReferenceOutsideIsRefused) {
    ArchiveBuilder archive;
    archive.plist.array({5000});
    EXPECT_EQ(
        linkOutcome(archive, 0, 0),
        "refused: not a readable binary property list: object 1 refers to an object that does not exist");
    ArchiveBuilder key;
    key.plist.dictionary(std::vector<std::pair<PlistBuilder::Id, PlistBuilder::Id>>{{0xFFFF, 0}});
    EXPECT_TRUE(isRefused(linkOutcome(key, 0, 0)));
    ArchiveBuilder wide(8);
    wide.plist.array({0x100000000U});
    EXPECT_EQ(
        linkOutcome(wide, 0, 0),
        "refused: not a readable binary property list: object 1 refers to an object that does not exist");
}

// Many objects that are all the same long array: small to send, huge to read.
TEST(HostileArchive, WithOverlappingObjectsIsRefused) {
    constexpr std::size_t kCopies = 20000;
    std::string bytes = "bplist00";
    bytes += "\xAF\x11" + PlistBuilder::bigEndian(kCopies, 2);
    for (std::size_t i = 0; i < kCopies; ++i) {
        bytes += PlistBuilder::bigEndian(i, 2);
    }
    const std::size_t table = bytes.size();
    for (std::size_t i = 0; i < kCopies; ++i) {
        bytes += PlistBuilder::bigEndian(8, 2);
    }
    bytes += std::string(6, '\0') + "\x02\x02" + PlistBuilder::bigEndian(kCopies, 8) +
             PlistBuilder::bigEndian(0, 8) + PlistBuilder::bigEndian(table, 8);
    EXPECT_EQ(outcome(Bytes(bytes.begin(), bytes.end())),
              "refused: not a readable binary property list: its objects overlap");
}

}  // namespace
