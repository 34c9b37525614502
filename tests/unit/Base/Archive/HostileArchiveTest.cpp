#include <gtest/gtest.h>

#include <string>

#include "ArchiveBuilder.h"
#include "HostileArchives.h"
#include "Samples.h"

// What a stranger might send to a root process.

namespace {

using Index = ArchiveBuilder::Index;
using HostileArchiveTests::isRefused;

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

TEST(HostileArchive, WithKeysThatAreNoTextIsReadWithoutThem) {
    ArchiveBuilder archive;
    auto& plist = archive.plist;
    const auto text = plist.ascii("$class");
    const auto object = plist.dictionary(std::vector<std::pair<PlistBuilder::Id, PlistBuilder::Id>>{
        {plist.integer(7), plist.integer(7)}, {text, archive.ref(archive.classNamed("SampleLink"))}});
    EXPECT_EQ(outcome(archive.finish({archive.entry(object)})), "Link(nil nil)\n");
}

}  // namespace
