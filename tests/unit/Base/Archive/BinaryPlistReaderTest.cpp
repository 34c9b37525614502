#include "Base/Archive/BinaryPlistReader.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "PlistFile.h"

// The container: every bound at its last good value and one beyond.

namespace {

using Base::BinaryPlistReader;
using Type = BinaryPlistReader::Type;
using Bytes = std::vector<std::uint8_t>;
using namespace std::string_literals;

constexpr const char* kSignatureOrSize = "missing bplist00 signature, or impossible file size";
constexpr const char* kWidth = "its trailer names an impossible width";
constexpr const char* kTable = "its offset table does not fit the file";
constexpr const char* kTop = "its top object does not exist";
constexpr const char* kTooMany = "it has more objects than bytes";
constexpr const char* kOverlap = "its objects overlap";

// The fault in `bytes`; "" if there is none.
std::string faultOf(std::span<const std::uint8_t> bytes) {
    std::string fault;
    return BinaryPlistReader::open(bytes, fault) ? "" : fault;
}

std::string faultOf(const PlistFile& file) {
    return faultOf(bytesOf(file));
}

// `bytes` with the number in 8 bytes at `field` of the trailer changed by `difference`.
Bytes withTrailer(Bytes bytes, std::size_t field, int difference) {
    std::uint8_t& last = bytes[bytes.size() - 32 + field + 7];
    last = static_cast<std::uint8_t>(last + difference);
    return bytes;
}

TEST(BinaryPlistReader, TakesASignatureAndATrailerAtLeast) {
    const std::string smallest = "bplist00" + std::string(32, '\0');
    EXPECT_EQ(faultOf(Bytes(smallest.begin(), smallest.end())), kWidth);
    EXPECT_EQ(faultOf(Bytes(smallest.begin(), smallest.end() - 1)), kSignatureOrSize);
    EXPECT_EQ(faultOf(Bytes(smallest.begin() + 1, smallest.end())), kSignatureOrSize);
    EXPECT_EQ(faultOf(Bytes{}), kSignatureOrSize);
}

TEST(BinaryPlistReader, ComparesTheWholeSignature) {
    for (std::size_t at = 0; at < 8; ++at) {
        Bytes bytes = bytesOf(one("\x08"));
        ++bytes[at];
        EXPECT_EQ(faultOf(bytes), kSignatureOrSize) << at;
    }
}

TEST(BinaryPlistReader, TakesAsManyBytesAs32BitsCount) {
    constexpr std::size_t kMost = UINT32_MAX;
    void* const room = ::mmap(nullptr, kMost + 1, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(room, MAP_FAILED);
    auto* const bytes = static_cast<std::uint8_t*>(room);
    std::copy_n("bplist00", 8, bytes);
    EXPECT_EQ(faultOf({bytes, kMost}), kWidth);
    EXPECT_EQ(faultOf({bytes, kMost + 1}), kSignatureOrSize);
    ::munmap(room, kMost + 1);
}

TEST(BinaryPlistReader, TakesWidthsOfOneToEightBytes) {
    for (std::size_t width = 0; width <= 9; ++width) {
        PlistFile offsets = one("\x08");
        offsets.offsetSize = width;
        EXPECT_EQ(faultOf(offsets), width >= 1 && width <= 8 ? "" : kWidth) << width;
        PlistFile references = one("\x08");
        references.referenceSize = width;
        EXPECT_EQ(faultOf(references), width >= 1 && width <= 8 ? "" : kWidth) << width;
    }
}

TEST(BinaryPlistReader, TakesATableThatFillsTheFileExactly) {
    PlistFile file{"\x08\x09", {8, 9}};
    file.offsetSize = 2;
    const Bytes good = bytesOf(file);
    EXPECT_EQ(faultOf(good), "");
    for (const int difference : {-1, 1}) {
        EXPECT_EQ(faultOf(withTrailer(good, 8, difference)), kTable) << "the count";
        EXPECT_EQ(faultOf(withTrailer(good, 24, difference)), kTable) << "a table of no whole entries";
        EXPECT_EQ(faultOf(withTrailer(good, 24, 2 * difference)), kTable) << "one entry more or less";
    }
}

TEST(BinaryPlistReader, TakesATableBetweenTheSignatureAndTheTrailer) {
    const PlistFile none{"", {}};
    EXPECT_EQ(faultOf(none), kTop) << "a table without entries lies at the trailer";
    EXPECT_EQ(faultOf(withTrailer(bytesOf(none), 24, 1)), kTable) << "in the trailer";
    const PlistFile empty{"", {8}};
    EXPECT_EQ(faultOf(empty), kTooMany) << "a table right after the signature";
    // One byte earlier, the last byte of the signature would be its first entry.
    Bytes early = withTrailer(bytesOf(empty), 24, -1);
    early = withTrailer(early, 8, 1);
    EXPECT_EQ(faultOf(early), kTable);
}

TEST(BinaryPlistReader, TakesTheLastObjectAsItsTop) {
    PlistFile file{"\x08\x09", {8, 9}, 1};
    std::string fault;
    const Bytes bytes = bytesOf(file);
    const auto reader = BinaryPlistReader::open(bytes, fault);
    ASSERT_TRUE(reader) << fault;
    EXPECT_EQ(reader->top(), 1U);
    EXPECT_EQ(BinaryPlistReader::boolean(reader->object(reader->top())), true);
    file.top = 2;
    EXPECT_EQ(faultOf(file), kTop);
}

TEST(BinaryPlistReader, TakesAsManyObjectsAsBytes) {
    EXPECT_EQ(faultOf(PlistFile{"\x08\x08\x08", {8, 9, 10}}), "");
    EXPECT_EQ(faultOf(PlistFile{"\x08\x08", {8, 9, 9}}), kTooMany);
}

TEST(BinaryPlistReader, TakesOffsetsBetweenTheSignatureAndTheTable) {
    const std::string bools = "\x08\x08\x08";
    EXPECT_EQ(faultOf(PlistFile{bools, {8, 10}}), "");
    EXPECT_EQ(faultOf(PlistFile{bools, {7, 10}}), "the offset of object 0 is out of range");
    EXPECT_EQ(faultOf(PlistFile{bools, {8, 11}}), "the offset of object 1 is out of range");
    PlistFile wide{bools, {8, UINT64_MAX}};
    wide.offsetSize = 8;
    EXPECT_EQ(faultOf(wide), "the offset of object 1 is out of range");
    wide.offsets[1] = (std::uint64_t{1} << 32) + 8;
    EXPECT_EQ(faultOf(wide), "the offset of object 1 is out of range");
}

TEST(BinaryPlistReader, RefusesObjectsThatShareAByte) {
    // The text of object 0 is object 1.
    EXPECT_EQ(faultOf(PlistFile{"\x51\x08", {8, 9}}), kOverlap);
    EXPECT_EQ(faultOf(PlistFile{"\x51\x08\x08", {8, 9}}), "") << "bytes that are nobody's make up for it";
    EXPECT_EQ(faultOf(PlistFile{"\x51\x08\x08", {8, 9, 10}}), kOverlap);
}

TEST(BinaryPlistReader, RefusesReferencesBeyondTheLastObject) {
    for (const std::string container : {"\xA1\x01", "\xD1\x01\x01"}) {
        EXPECT_EQ(faultOf(PlistFile{container + "\x08", {8, 8 + container.size()}}), "");
    }
    for (const std::string container : {"\xA1\x02", "\xD1\x02\x01", "\xD1\x01\x02", "\xA2\x01\x02"}) {
        EXPECT_EQ(faultOf(PlistFile{container + "\x08", {8, 8 + container.size()}}),
                  "object 0 refers to an object that does not exist");
    }
    PlistFile wide{"\xA1" + PlistBuilder::bigEndian(std::uint64_t{1} << 32, 8), {8}};
    wide.referenceSize = 8;
    EXPECT_EQ(faultOf(wide), "object 0 refers to an object that does not exist");
}

// The type that a marker stands for, and the bytes that its object takes in a list with references of one
// byte. The table stands for the format's description; it shares nothing with the reader.
struct Form {
    unsigned marker;
    Type type;
    std::size_t size;
};

std::vector<Form> allForms() {
    std::vector<Form> forms{{0x00, Type::null, 1},    {0x08, Type::boolean, 1},  {0x09, Type::boolean, 1},
                            {0x10, Type::integer, 2}, {0x11, Type::integer, 3},  {0x12, Type::integer, 5},
                            {0x13, Type::integer, 9}, {0x14, Type::integer, 17}, {0x22, Type::real, 5},
                            {0x23, Type::real, 9},    {0x33, Type::date, 9}};
    for (unsigned n = 0; n < 8; ++n) {
        forms.push_back({0x80 + n, Type::uid, n + 2});
    }
    for (unsigned n = 0; n < 15; ++n) {
        forms.push_back({0x40 + n, Type::data, n + 1});
        forms.push_back({0x50 + n, Type::ascii, n + 1});
        forms.push_back({0x60 + n, Type::utf16, 2 * n + 1});
        forms.push_back({0xA0 + n, Type::array, n + 1});
        forms.push_back({0xD0 + n, Type::dictionary, 2 * n + 1});
    }
    return forms;
}

TEST(BinaryPlistReader, KnowsTheMarkersOfTheFormatAndNoOthers) {
    const std::vector<Form> forms = allForms();
    for (unsigned marker = 0; marker < 256; ++marker) {
        // 0xFF cannot begin an integer, so no count follows.
        const std::string object =
            static_cast<char>(marker) + std::string(1, marker % 16 == 15 ? '\xFF' : '\0');
        const bool isKnown = std::any_of(forms.begin(), forms.end(),
                                         [marker](const Form& form) { return form.marker == marker; });
        EXPECT_EQ(faultOf(one(object, std::string(64, '\0'))), isKnown ? "" : "object 0 is damaged")
            << marker;
    }
}

TEST(BinaryPlistReader, TakesAnObjectThatEndsAtTheTableAndNoneThatIsCut) {
    for (const Form& form : allForms()) {
        const std::string object = static_cast<char>(form.marker) + std::string(form.size - 1, '\0');
        const Bytes bytes = bytesOf(one(object));
        std::string fault;
        const auto reader = BinaryPlistReader::open(bytes, fault);
        ASSERT_TRUE(reader) << form.marker << fault;
        EXPECT_EQ(reader->object(0).type, form.type) << form.marker;
        if (form.size > 1) {
            EXPECT_EQ(faultOf(one(object.substr(0, form.size - 1))), "object 0 is damaged") << form.marker;
        }
    }
}

TEST(BinaryPlistReader, TakesCountsOfOneToEightBytes) {
    for (const unsigned exponent : {0U, 1U, 2U, 3U}) {
        const std::string count =
            static_cast<char>(0x10 + exponent) + PlistBuilder::bigEndian(3, std::size_t{1} << exponent);
        const Bytes bytes = bytesOf(one("\x5F" + count + "abc"));
        std::string fault;
        const auto reader = BinaryPlistReader::open(bytes, fault);
        ASSERT_TRUE(reader) << exponent << fault;
        EXPECT_EQ(BinaryPlistReader::asciiText(reader->object(0)), "abc") << exponent;
        EXPECT_EQ(faultOf(one("\x5F" + count + "ab")), "object 0 is damaged") << exponent;
        EXPECT_EQ(faultOf(one("\x5F" + count.substr(0, count.size() - 1))), "object 0 is damaged")
            << exponent;
    }
    EXPECT_EQ(faultOf(one("\x5F\x10\0"s)), "") << "a count that ends at the table";
    EXPECT_EQ(faultOf(one("\x5F")), "object 0 is damaged");
    EXPECT_EQ(faultOf(one("\x5F\x14" + std::string(16, '\0'))), "object 0 is damaged") << "16 bytes";
    EXPECT_EQ(faultOf(one("\x5F\x22" + std::string(8, '\0'))), "object 0 is damaged") << "a real";
    EXPECT_EQ(faultOf(one("\x5F\x51\0"s)), "object 0 is damaged") << "a text";
}

TEST(BinaryPlistReader, RefusesCountsWhoseSizeOverflows) {
    for (const unsigned marker : {0x4FU, 0x5FU, 0x6FU, 0xAFU, 0xDFU}) {
        for (const std::uint64_t count :
             {UINT64_MAX, std::uint64_t{1} << 63, std::uint64_t{1} << 62, (std::uint64_t{1} << 63) + 1}) {
            PlistFile file =
                one(static_cast<char>(marker) + ("\x13" + PlistBuilder::bigEndian(count, 8)), "abcdefgh");
            for (const std::size_t width : {1U, 2U, 4U, 8U}) {
                file.referenceSize = width;
                EXPECT_EQ(faultOf(file), "object 0 is damaged") << marker << ' ' << count << ' ' << width;
            }
        }
    }
}

}  // namespace
