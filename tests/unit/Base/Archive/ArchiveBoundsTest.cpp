#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ArchiveBuilder.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "Samples.h"

// The bounds on what an archive may hold and unfold to, each at its last good value and one beyond.

namespace {

using Base::UnarchivingLimits;
using Bytes = std::vector<std::uint8_t>;
using Index = ArchiveBuilder::Index;

std::string withinObjects(const Bytes& archive, std::size_t objects) {
    UnarchivingLimits limits;
    limits.objects = objects;
    return outcomeWithin(archive, limits);
}

std::string withinText(const Bytes& archive, std::size_t bytes) {
    UnarchivingLimits limits;
    limits.textBytes = bytes;
    return outcomeWithin(archive, limits);
}

// `keys`, and others that nobody asks for, `count` in all.
ArchiveBuilder::Keys padded(ArchiveBuilder& archive, ArchiveBuilder::Keys keys, std::size_t count) {
    while (keys.size() < count) {
        keys.emplace_back("k" + std::to_string(keys.size()), archive.plist.boolean(true));
    }
    return keys;
}

TEST(ArchiveBounds, SixteenKeysInAnObjectsClass) {
    for (const std::size_t keys : {16U, 17U}) {
        ArchiveBuilder archive(4, 4);
        const Index described = archive.entry(archive.plist.dictionary(
            padded(archive, {{"$classname", archive.plist.ascii("SampleLink")}}, keys)));
        EXPECT_EQ(outcome(archive.finish({archive.object(described, {})})),
                  keys == 16 ? "Link(nil nil)\n" : "refused: object 1 has more than 16 keys");
        // The same, read when an object before it asks for its class.
        ArchiveBuilder late(4, 4);
        const Index link = late.object(2, {});
        late.entry(
            late.plist.dictionary(padded(late, {{"$classname", late.plist.ascii("SampleLink")}}, keys)));
        EXPECT_EQ(outcome(late.finish({link})),
                  keys == 16 ? "Link(nil nil)\n" : "refused: object 2 is not a class");
    }
}

TEST(ArchiveBounds, SixteenKeysInTheFrame) {
    for (const std::size_t keys : {16U, 17U}) {
        ArchiveBuilder archive(4, 4);
        archive.array({});
        auto& plist = archive.plist;
        const auto objects =
            plist.array({0, plist.dictionary({{"$class", plist.uid(2)}, {"NS.objects", plist.array({})}}),
                         plist.dictionary({{"$classname", plist.ascii("NSArray")}})});
        const auto top = plist.dictionary({{"root", plist.uid(1)}});
        const auto frame = plist.dictionary(padded(archive,
                                                   {{"$archiver", archive.archiverName()},
                                                    {"$version", archive.version()},
                                                    {"$objects", objects},
                                                    {"$top", top}},
                                                   keys));
        EXPECT_EQ(outcome(plist.finish(frame)), keys == 16 ? ""
                                                           : "refused: not a keyed archive: its outermost "
                                                             "object is not a dictionary of at most 16 keys");
    }
}

TEST(ArchiveBounds, SixteenKeysInTheTop) {
    for (const std::size_t keys : {16U, 17U}) {
        ArchiveBuilder archive(4, 4);
        auto& plist = archive.plist;
        const auto objects =
            plist.array({0, plist.dictionary({{"$class", plist.uid(2)}, {"NS.objects", plist.array({})}}),
                         plist.dictionary({{"$classname", plist.ascii("NSArray")}})});
        const auto top = plist.dictionary(padded(archive, {{"root", plist.uid(1)}}, keys));
        const auto frame = plist.dictionary({{"$archiver", archive.archiverName()},
                                             {"$version", archive.version()},
                                             {"$objects", objects},
                                             {"$top", top}});
        EXPECT_EQ(
            outcome(plist.finish(frame)),
            keys == 16 ? "" : "refused: not a keyed archive: \"$top\" refers to no object under \"root\"");
    }
}

TEST(ArchiveBounds, TheLastEntryIsTheLastThatAReferenceReaches) {
    for (const Index beyond : {0U, 1U}) {
        // $null, a class, a link to the last entry, the root and its class, the last entry.
        ArchiveBuilder archive;
        const Index described = archive.classNamed("SampleLink");
        const Index link = archive.object(described, {{"title", archive.ref(5 + beyond)}});
        const Index root = archive.array({link});
        ASSERT_EQ(archive.string("last"), 5U);
        EXPECT_EQ(outcome(archive.finish(root, archive.archiverName(), archive.version())),
                  beyond == 0 ? "Link(nil \"last\")\n"
                              : "refused: command 1 (SampleLink): key \"title\" refers to no object");
    }
}

TEST(ArchiveBounds, TheLastEntryIsTheLastThatMayBeAClass) {
    for (const Index beyond : {0U, 1U}) {
        ArchiveBuilder archive;
        const Index link = archive.object(4 + beyond, {});
        const Index root = archive.array({link});
        ASSERT_EQ(archive.classNamed("SampleLink"), 4U);
        EXPECT_EQ(outcome(archive.finish(root, archive.archiverName(), archive.version())),
                  beyond == 0 ? "Link(nil nil)\n" : "refused: object 1 refers to no class");
    }
    ArchiveBuilder null;
    EXPECT_EQ(outcome(null.finish({null.object(0, {})})), "refused: object 1 refers to no class");
}

TEST(ArchiveBounds, TheLastEntryIsTheLastThatMayBeTheRoot) {
    for (const Index beyond : {0U, 1U}) {
        ArchiveBuilder archive;
        const Index root = archive.array({});
        EXPECT_EQ(
            outcome(archive.finish(root + beyond, archive.archiverName(), archive.version())),
            beyond == 0 ? "" : "refused: not a keyed archive: \"$top\" refers to no object under \"root\"");
    }
}

TEST(ArchiveBounds, SixtyFourClassesInADescription) {
    for (const std::size_t count : {1U, 64U, 65U}) {
        ArchiveBuilder archive;
        auto& plist = archive.plist;
        const auto name = plist.ascii("SampleLink");
        const Index described = archive.entry(plist.dictionary(
            {{"$classname", name}, {"$classes", plist.array(std::vector<PlistBuilder::Id>(count, name))}}));
        EXPECT_EQ(outcome(archive.finish({archive.object(described, {})})),
                  count <= 64 ? "Link(nil nil)\n"
                              : "refused: object 1 does not describe the class SampleLink correctly");
    }
    ArchiveBuilder none;
    const Index described = none.entry(none.plist.dictionary(
        {{"$classname", none.plist.ascii("SampleLink")}, {"$classes", none.plist.array({})}}));
    EXPECT_EQ(outcome(none.finish({none.object(described, {})})),
              "refused: object 1 does not describe the class SampleLink correctly");
}

TEST(ArchiveBounds, ThousandAndTwentyFourClasses) {
    for (const int classes : {1023, 1024}) {
        ArchiveBuilder archive(4, 4);
        for (int i = 0; i < classes; ++i) {
            archive.classNamed("SampleLink");
        }
        // The root's class is one more.
        EXPECT_EQ(outcome(archive.finish({})),
                  classes == 1023 ? "" : "refused: the archive describes more than 1024 classes");
    }
}

TEST(ArchiveBounds, AsManyEntriesAsTheLimitOfObjects) {
    ArchiveBuilder archive;
    for (int i = 0; i < 7; ++i) {
        archive.string("t");
    }
    const Bytes bytes = archive.finish({});  // $null, seven texts, the root and its class
    EXPECT_EQ(withinObjects(bytes, 10), "read");
    EXPECT_EQ(withinObjects(bytes, 9), "the archive holds more than 9 objects");
}

TEST(ArchiveBounds, ThirtyTwoObjectsWithinOneAnother) {
    for (const int depth : {32, 33}) {
        ArchiveBuilder archive;
        const Index described = archive.classNamed("SampleNest");
        Index inner = 0;
        for (int i = 0; i < depth; ++i) {
            inner = archive.object(described, {{"inner", archive.ref(inner)}});
        }
        const std::string result = outcome(archive.finish({inner}));
        EXPECT_EQ(result.find("is nested too deeply") != std::string::npos, depth > 32) << result;
        EXPECT_EQ(result.starts_with("refused: "), depth > 32) << result;
    }
}

// Two siblings of full depth: what one has taken is given back.
TEST(ArchiveBounds, DepthIsCountedForEachObjectSeparately) {
    ArchiveBuilder archive;
    const Index described = archive.classNamed("SampleNest");
    Index inner = 0;
    for (int i = 0; i < 32; ++i) {
        inner = archive.object(described, {{"inner", archive.ref(inner)}});
    }
    EXPECT_FALSE(outcome(archive.finish({inner, inner})).starts_with("refused: "));
}

struct Cost {
    const char* what;
    Bytes archive;
    std::size_t objects;
};

// A removal of these sources, which is shared `times` times.
Bytes removals(std::size_t times, std::size_t urls, std::size_t flags) {
    ArchiveBuilder archive(4, 4);
    const Index url = archive.url("file:///a");
    const Index flag = archive.entry(archive.plist.boolean(true));
    const Index removal =
        archive.object(archive.classNamed("_TtC7Samples7Removal"),
                       {{"source", archive.ref(archive.array(std::vector<Index>(urls, url)))},
                        {"destination", archive.ref(archive.array(std::vector<Index>(flags, flag)))},
                        {"commandDescription", archive.ref(archive.string("x"))}});
    return archive.finish(std::vector<Index>(times, removal));
}

TEST(ArchiveBounds, EveryObjectThatIsBuiltCounts) {
    ArchiveBuilder nests(4, 4);
    const Index described = nests.classNamed("SampleNest");
    const Index innermost = nests.object(described, {{"inner", nests.ref(0)}});
    const Index nest = nests.object(described, {{"inner", nests.ref(innermost)}});
    ArchiveBuilder links(4, 4);
    const Index link = links.link(links.url("b", links.url("file:///a/")), links.string("t"));
    // Each archive unfolds to many times the entries that it holds.
    for (const Cost& cost :
         {Cost{"a removal, two lists, a text, three URLs, two flags", removals(50, 3, 3), 50 * 10},
          Cost{"the same without the items", removals(50, 0, 0), 50 * 4},
          Cost{"two nests", nests.finish(std::vector<Index>(50, nest)), 50 * 2},
          Cost{"a link, a URL on a base, a text", links.finish(std::vector<Index>(50, link)), 50 * 3}}) {
        EXPECT_EQ(withinObjects(cost.archive, cost.objects), "read") << cost.what;
        const std::string refusal = withinObjects(cost.archive, cost.objects - 1);
        EXPECT_NE(
            refusal.find("the archive unfolds to more than " + std::to_string(cost.objects - 1) + " objects"),
            std::string::npos)
            << cost.what << ": " << refusal;
    }
}

TEST(ArchiveBounds, AListThatDoesNotFitIsRefusedBeforeItsMembers) {
    // A removal and its list are two objects; the flags that come after them are what the limit is about.
    ArchiveBuilder archive(4, 4);
    const Index flag = archive.entry(archive.plist.integer(7));  // not a boolean
    const Index removal =
        archive.object(archive.classNamed("_TtC7Samples7Removal"),
                       {{"source", archive.ref(archive.array({}))},
                        {"destination", archive.ref(archive.array(std::vector<Index>(100, flag)))}});
    const Bytes bytes = archive.finish({removal});
    EXPECT_EQ(withinObjects(bytes, 103),
              "command 1 (_TtC7Samples7Removal): key \"destination\": item 1 is not a boolean");
    EXPECT_EQ(withinObjects(bytes, 102),
              "command 1 (_TtC7Samples7Removal): the archive unfolds to more than 102 objects");
}

TEST(ArchiveBounds, EveryTextThatIsBuiltCountsInBytesOfUTF8) {
    ArchiveBuilder wide;
    const Index euro = wide.entry(wide.plist.utf16(u"a\u20AC"));
    const Bytes titles = wide.finish(std::vector<Index>(3, wide.link(0, euro)));
    EXPECT_EQ(withinText(titles, 12), "read");
    EXPECT_EQ(withinText(titles, 11),
              "command 3 (SampleLink): the archive unfolds to more than 11 bytes of text");
    ArchiveBuilder urls;
    const Index url = urls.url("b", urls.url("file:///a/"));
    const Bytes targets = urls.finish(std::vector<Index>(3, urls.link(url, 0)));
    EXPECT_EQ(withinText(targets, 33), "read");
    EXPECT_EQ(withinText(targets, 32),
              "command 3 (SampleLink): the archive unfolds to more than 32 bytes of text");
}

}  // namespace
