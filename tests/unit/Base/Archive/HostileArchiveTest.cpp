#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "ArchiveBuilder.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "Samples.h"

// What a stranger might send to a root process.

namespace {

using Index = ArchiveBuilder::Index;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kTrailerSize = 32;

bool isRefused(const std::string& result) {
    return result.starts_with("refused: ") && result.size() > 9;
}

std::string outcomeWithin(const Bytes& archive, const Base::UnarchivingLimits& limits) {
    std::string refusal;
    return Base::unarchivedArray(archive, Samples::allowedClasses(), refusal, limits) ? "read" : refusal;
}

// `bytes` with a big-endian number at `offset` from the trailer's start.
Bytes withTrailer(Bytes bytes, std::size_t offset, std::size_t width, std::uint64_t value) {
    const std::string text = PlistBuilder::bigEndian(value, width);
    std::copy(text.begin(), text.end(), bytes.end() - kTrailerSize + static_cast<std::ptrdiff_t>(offset));
    return bytes;
}

Bytes smallArchive() {
    ArchiveBuilder archive;
    return archive.finish({archive.link(archive.url("file:///a"), archive.string("t"))});
}

std::string linkOutcome(ArchiveBuilder& archive, Index target, Index title) {
    return outcome(archive.finish({archive.link(target, title)}));
}

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
            EXPECT_EQ(outcome(withTrailer(smallArchive(), field, 1, width)),
                      "refused: not a readable binary property list: its trailer names an impossible width");
        }
    }
}

TEST(HostileArchive, WithAHugeObjectCountIsRefused) {
    for (const std::uint64_t count :
         {UINT64_MAX, UINT64_MAX / 4 + 2, std::uint64_t{1} << 32, std::uint64_t{1000}, std::uint64_t{0}}) {
        EXPECT_EQ(outcome(withTrailer(smallArchive(), 8, 8, count)),
                  "refused: not a readable binary property list: its offset table does not fit the file");
    }
}

TEST(HostileArchive, WithATableOutsideIsRefused) {
    for (const std::uint64_t table :
         {UINT64_MAX, std::uint64_t{0}, std::uint64_t{7}, std::uint64_t{1} << 40}) {
        EXPECT_EQ(outcome(withTrailer(smallArchive(), 24, 8, table)),
                  "refused: not a readable binary property list: its offset table does not fit the file");
    }
}

TEST(HostileArchive, WithATopObjectOutsideIsRefused) {
    for (const std::uint64_t top : {UINT64_MAX, std::uint64_t{1} << 32, std::uint64_t{1000}}) {
        EXPECT_EQ(outcome(withTrailer(smallArchive(), 16, 8, top)),
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

TEST(HostileArchive, OfManyThousandNestedArraysIsRefused) {
    constexpr std::size_t kDepth = 200000;
    PlistBuilder plist(4, 4);
    for (std::size_t i = 1; i < kDepth; ++i) {
        plist.array({i});
    }
    plist.array({});
    EXPECT_EQ(outcome(plist.finish(0)),
              "refused: not a keyed archive: its outermost object is not a dictionary of at most 16 keys");
}

TEST(HostileArchive, WithManyThousandNestedArraysInAnEntryIsRefused) {
    constexpr std::size_t kDepth = 200000;
    ArchiveBuilder archive(4, 4);
    auto inner = archive.plist.array({});
    for (std::size_t i = 1; i < kDepth; ++i) {
        inner = archive.plist.array({inner});
    }
    const Index list = archive.object(archive.classNamed("NSArray"), {{"NS.objects", inner}});
    EXPECT_EQ(outcome(archive.finish(list, archive.archiverName(), archive.version())),
              "refused: command 1: it is not an object of a coded class");
}

TEST(HostileArchive, WhoseArrayHoldsItselfIsRefused) {
    ArchiveBuilder archive;
    const Index described = archive.classNamed("NSArray");
    const auto self = archive.ref(3);
    const Index list = archive.object(described, {{"NS.objects", archive.plist.array({self})}});
    ASSERT_EQ(list, 2U);
    EXPECT_TRUE(isRefused(outcome(archive.finish(list, archive.archiverName(), archive.version()))));
}

TEST(HostileArchive, WhoseObjectHoldsItselfIsRefused) {
    ArchiveBuilder archive;
    const Index described = archive.classNamed("SampleNest");
    const Index nest = archive.object(described, {{"inner", archive.ref(described + 1)}});
    ASSERT_EQ(nest, described + 1);
    const std::string refusal = outcome(archive.finish({nest}));
    EXPECT_TRUE(isRefused(refusal));
    EXPECT_EQ(refusal,
              "refused: command 1 (SampleNest): ...: key \"inner\" (SampleNest): key \"inner\" (SampleNest): "
              "key \"inner\" (SampleNest): key \"inner\" is nested too deeply");
}

TEST(HostileArchive, OfDeeplyNestedObjectsIsRefused) {
    ArchiveBuilder archive(4, 4);
    const Index described = archive.classNamed("SampleNest");
    Index inner = 0;
    for (int i = 0; i < 50000; ++i) {
        inner = archive.object(described, {{"inner", archive.ref(inner)}});
    }
    EXPECT_NE(outcome(archive.finish({inner})).find("is nested too deeply"), std::string::npos);
}

TEST(HostileArchive, WhoseURLIsItsOwnBaseIsRefused) {
    ArchiveBuilder archive;
    const Index text = archive.string("a");
    const Index described = archive.classNamed("NSURL");
    const Index url = archive.object(
        described, {{"NS.base", archive.ref(described + 1)}, {"NS.relative", archive.ref(text)}});
    EXPECT_EQ(linkOutcome(archive, url, 0),
              "refused: command 1 (SampleLink): key \"target\" is not a file URL");
}

TEST(HostileArchive, WithALongChainOfBasesIsRefused) {
    for (const int bases : {8, 9, 1000}) {
        ArchiveBuilder archive(4, 4);
        Index url = archive.url("file:///a/");
        for (int i = 0; i < bases; ++i) {
            url = archive.url("b/", url);
        }
        EXPECT_EQ(isRefused(linkOutcome(archive, url, 0)), bases > 8) << bases;
    }
}

TEST(HostileArchive, WithAWrongBaseIsRefused) {
    ArchiveBuilder text;
    EXPECT_TRUE(isRefused(linkOutcome(text, text.url("b", text.string("file:///a/")), 0)));
    ArchiveBuilder outside;
    EXPECT_TRUE(isRefused(linkOutcome(outside, outside.url("file:///a", 5000), 0)));
}

TEST(HostileArchive, WithURLsThatLeaveTheirPlaceIsRefused) {
    for (const char* text :
         {"http://a/b", "file:///a/../b", "file:///a/%2e%2e/b", "file:///a%00b", "file://host/a",
          "file:///a?b", "file:///a#b", "file:///%zz", "/a", "a", "", "file:///a/."}) {
        ArchiveBuilder archive;
        EXPECT_EQ(linkOutcome(archive, archive.url(text), 0),
                  "refused: command 1 (SampleLink): key \"target\" is not a file URL")
            << text;
    }
    ArchiveBuilder onBase;
    EXPECT_TRUE(isRefused(linkOutcome(onBase, onBase.url("../c", onBase.url("file:///a/b/")), 0)));
    ArchiveBuilder wholeOnBase;
    EXPECT_TRUE(
        isRefused(linkOutcome(wholeOnBase, wholeOnBase.url("file:///a", wholeOnBase.url("http://a/")), 0)));
}

TEST(HostileArchive, WithTextThatIsNotWellFormedIsRefused) {
    ArchiveBuilder surrogate;
    EXPECT_EQ(linkOutcome(surrogate, 0, surrogate.entry(surrogate.plist.utf16({'a', 0xD800}))),
              "refused: command 1 (SampleLink): key \"title\" is not well-formed text");
    ArchiveBuilder eightBits;
    EXPECT_EQ(linkOutcome(eightBits, 0, eightBits.string("\xFF")),
              "refused: command 1 (SampleLink): key \"title\" is not well-formed text");
    ArchiveBuilder url;
    EXPECT_EQ(linkOutcome(url, url.url("file:///\xC3\xBC"), 0),
              "refused: command 1 (SampleLink): key \"target\" is not a file URL");
}

TEST(HostileArchive, WithADeepClassChainIsRefused) {
    ArchiveBuilder archive(4, 4);
    auto& plist = archive.plist;
    std::vector<PlistBuilder::Id> names{plist.ascii("SampleLink")};
    for (int i = 0; i < 100000; ++i) {
        names.push_back(names.front());
    }
    const Index described =
        archive.entry(plist.dictionary({{"$classname", names.front()}, {"$classes", plist.array(names)}}));
    EXPECT_EQ(outcome(archive.finish({archive.object(described, {})})),
              "refused: object 1 does not describe the class SampleLink correctly");
}

TEST(HostileArchive, WhoseClassIsAnObjectIsRefused) {
    // A class of a class of a class: only the first is looked up.
    ArchiveBuilder archive;
    Index described = archive.classNamed("SampleLink");
    for (int i = 0; i < 1000; ++i) {
        described = archive.object(described, {{"$classname", archive.plist.ascii("SampleLink")}});
    }
    EXPECT_TRUE(isRefused(outcome(archive.finish({}))));
}

TEST(HostileArchive, WhoseObjectIsItsOwnClassIsRefused) {
    ArchiveBuilder archive;
    const Index self = archive.object(1, {{"$classname", archive.plist.ascii("SampleLink")}});
    ASSERT_EQ(self, 1U);
    EXPECT_TRUE(isRefused(outcome(archive.finish({self}))));
}

TEST(HostileArchive, WithThousandsOfClassesIsRefused) {
    ArchiveBuilder archive(4, 4);
    for (int i = 0; i < 1100; ++i) {
        archive.classNamed("SampleLink");
    }
    EXPECT_EQ(outcome(archive.finish({})), "refused: the archive describes more than 1024 classes");
}

TEST(HostileArchive, WithADictionaryOfManyKeysIsRefused) {
    for (const std::size_t keys : {15U, 16U, 50000U}) {
        ArchiveBuilder archive(4, 4);
        ArchiveBuilder::Keys many;
        for (std::size_t i = 0; i < keys; ++i) {
            many.emplace_back("k" + std::to_string(i), archive.plist.boolean(true));
        }
        const Index object = archive.object(archive.classNamed("SampleLink"), many);  // adds "$class"
        EXPECT_EQ(outcome(archive.finish({object})),
                  keys == 15 ? "Link(nil nil)\n" : "refused: object 2 has more than 16 keys");
    }
}

TEST(HostileArchive, WithManyDifferentKeysIsStillRead) {
    ArchiveBuilder archive(4, 4);
    const Index described = archive.classNamed("SampleLink");
    std::vector<Index> links;
    std::string expected;
    for (int i = 0; i < 200; ++i) {
        const auto title = archive.ref(archive.string(std::to_string(i)));
        links.push_back(
            archive.object(described, {{"other" + std::to_string(i), archive.ref(0)}, {"title", title}}));
        expected += "Link(nil \"" + std::to_string(i) + "\")\n";
    }
    EXPECT_EQ(outcome(archive.finish(links)), expected);
}

TEST(HostileArchive, WithKeysThatAreNoTextIsReadWithoutThem) {
    ArchiveBuilder archive;
    auto& plist = archive.plist;
    const auto text = plist.ascii("$class");
    const auto object = plist.dictionary(std::vector<std::pair<PlistBuilder::Id, PlistBuilder::Id>>{
        {plist.integer(7), plist.integer(7)}, {text, archive.ref(archive.classNamed("SampleLink"))}});
    EXPECT_EQ(outcome(archive.finish({archive.entry(object)})), "Link(nil nil)\n");
}

TEST(HostileArchive, ThatRepeatsObjectsIsRefusedBeyondTheLimit) {
    ArchiveBuilder archive;
    const Index link = archive.link(archive.url("file:///a"), archive.string("t"));
    const Bytes bytes = archive.finish(std::vector<Index>(100, link));
    Base::UnarchivingLimits limits;
    limits.objects = 300;  // a link, its URL and its title, a hundred times
    EXPECT_EQ(outcomeWithin(bytes, limits), "read");
    limits.objects = 299;
    EXPECT_EQ(outcomeWithin(bytes, limits),
              "command 100 (SampleLink): the archive unfolds to more than 299 objects");
}

TEST(HostileArchive, ThatRepeatsLongTextIsRefusedBeyondTheLimit) {
    ArchiveBuilder archive;
    const Index link = archive.link(0, archive.string(std::string(1000, 'x')));
    const Bytes bytes = archive.finish(std::vector<Index>(100, link));
    Base::UnarchivingLimits limits;
    limits.textBytes = 100000;
    EXPECT_EQ(outcomeWithin(bytes, limits), "read");
    limits.textBytes = 99999;
    EXPECT_EQ(outcomeWithin(bytes, limits),
              "command 100 (SampleLink): the archive unfolds to more than 99999 bytes of text");
}

TEST(HostileArchive, ThatIsTooLargeIsRefusedUnread) {
    const Bytes bytes = smallArchive();
    Base::UnarchivingLimits limits;
    limits.archiveBytes = bytes.size();
    EXPECT_EQ(outcomeWithin(bytes, limits), "read");
    limits.archiveBytes = bytes.size() - 1;
    EXPECT_EQ(outcomeWithin(bytes, limits),
              "the archive takes more than " + std::to_string(bytes.size() - 1) + " bytes");
}

TEST(HostileArchive, OfTooManyEntriesIsRefused) {
    ArchiveBuilder archive;
    const auto text = archive.plist.ascii("t");
    for (int i = 0; i < 50; ++i) {
        archive.entry(text);
    }
    Base::UnarchivingLimits limits;
    limits.objects = 20;
    EXPECT_EQ(outcomeWithin(archive.finish({}), limits), "the archive holds more than 20 objects");
}

TEST(HostileArchive, OfALongerListThanTheLimitIsRefusedBeforeItIsBuilt) {
    ArchiveBuilder archive;
    const Bytes bytes = archive.finish(std::vector<Index>(100, 0));
    Base::UnarchivingLimits limits;
    limits.objects = 100;
    EXPECT_EQ(outcomeWithin(bytes, limits), "command 1: it is not an object of a coded class");
    limits.objects = 99;
    EXPECT_EQ(outcomeWithin(bytes, limits), "the archive unfolds to more than 99 objects");
}

// One long list of references, repeated as far as the limits go, under the default limits.
TEST(HostileArchive, ThatUnfoldsHugelyIsRefusedUnderTheDefaultLimits) {
    ArchiveBuilder archive(4, 4);
    const Index urls = archive.array(std::vector<Index>(60000, archive.url("file:///a")));
    const Index removal = archive.object(archive.classNamed("_TtC7Samples7Removal"),
                                         {{"source", archive.ref(urls)},
                                          {"destination", archive.ref(archive.array({}))},
                                          {"commandDescription", archive.ref(archive.string("x"))}});
    const Bytes bytes = archive.finish(std::vector<Index>(60000, removal));
    EXPECT_EQ(outcome(bytes),
              "refused: command 5 (_TtC7Samples7Removal): the archive unfolds to more than 262144 objects");
}

}  // namespace
