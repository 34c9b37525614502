#include <gtest/gtest.h>

#include <string>

#include "ArchiveBuilder.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "Samples.h"

// What other archivers write and ours does not. All of it is read.

namespace {

using Index = ArchiveBuilder::Index;

TEST(OtherArchivers, MayWriteMutableArrays) {
    ArchiveBuilder archive;
    const Index removal = archive.object(
        archive.classNamed("_TtC7Samples7Removal"),
        {{"source", archive.ref(archive.array({archive.url("file:///a")}, "NSMutableArray"))},
         {"destination",
          archive.ref(archive.array({archive.entry(archive.plist.boolean(true))}, "NSMutableArray"))},
         {"commandDescription", archive.ref(archive.string("x"))}});
    const Index root = archive.array({removal}, "NSMutableArray");
    EXPECT_EQ(outcome(archive.finish(root, archive.archiverName(), archive.version())),
              "Removal(\"x\" </a> yes)\n");
}

TEST(OtherArchivers, MayWrapStringsInObjects) {
    for (const char* className : {"NSString", "NSMutableString"}) {
        ArchiveBuilder archive;
        const Index wrapped =
            archive.object(archive.classNamed(className), {{"NS.string", archive.plist.ascii("inner")}});
        EXPECT_EQ(linkOutcome(archive, 0, wrapped), "Link(nil \"inner\")\n");
    }
}

TEST(OtherArchivers, MayWrapStringsByReference) {
    ArchiveBuilder archive;
    const Index wrapped =
        archive.object(archive.classNamed("NSMutableString"),
                       {{"NS.string", archive.ref(archive.entry(archive.plist.utf16(u"\u00FC")))}});
    EXPECT_EQ(linkOutcome(archive, 0, wrapped), "Link(nil \"\xC3\xBC\")\n");
}

TEST(OtherArchivers, MayNotWrapWrappedStrings) {
    ArchiveBuilder archive;
    const Index mutableString = archive.classNamed("NSMutableString");
    const Index inner = archive.object(mutableString, {{"NS.string", archive.plist.ascii("inner")}});
    const Index outer = archive.object(mutableString, {{"NS.string", archive.ref(inner)}});
    EXPECT_EQ(linkOutcome(archive, 0, outer),
              "refused: command 1 (SampleLink): key \"title\" is not a string");
}

TEST(OtherArchivers, MayWrapTheTextOfAURL) {
    ArchiveBuilder archive;
    const Index text = archive.object(archive.classNamed("NSMutableString"),
                                      {{"NS.string", archive.plist.ascii("file:///a")}});
    const Index url = archive.object(archive.classNamed("NSURL"),
                                     {{"NS.base", archive.ref(0)}, {"NS.relative", archive.ref(text)}});
    EXPECT_EQ(linkOutcome(archive, url, 0), "Link(</a> nil)\n");
}

TEST(OtherArchivers, MayStoreASCIITextAsUTF16) {
    ArchiveBuilder archive;
    const Index url =
        archive.object(archive.classNamed("NSURL"),
                       {{"NS.base", archive.ref(0)},
                        {"NS.relative", archive.ref(archive.entry(archive.plist.utf16(u"file:///a%20b")))}});
    EXPECT_EQ(linkOutcome(archive, url, archive.entry(archive.plist.utf16(u"plain"))),
              "Link(</a b> \"plain\")\n");
}

TEST(OtherArchivers, MayEndAFoldersURLInASlash) {
    ArchiveBuilder archive;
    EXPECT_EQ(linkOutcome(archive, archive.url("file:///Applications/A.app/"), 0),
              "Link(</Applications/A.app> nil)\n");
}

TEST(OtherArchivers, MayLeaveOutTheBaseOfAURL) {
    ArchiveBuilder archive;
    const Index url = archive.object(archive.classNamed("NSURL"),
                                     {{"NS.relative", archive.ref(archive.string("file:///a"))}});
    EXPECT_EQ(linkOutcome(archive, url, 0), "Link(</a> nil)\n");
}

TEST(OtherArchivers, MayBuildURLsOnBases) {
    ArchiveBuilder folder;
    EXPECT_EQ(linkOutcome(folder, folder.url("c", folder.url("b/", folder.url("file:///a/"))), 0),
              "Link(</a/b/c> nil)\n");
    ArchiveBuilder file;
    EXPECT_EQ(linkOutcome(file, file.url("c", file.url("file:///a/b")), 0), "Link(</a/c> nil)\n");
    ArchiveBuilder empty;
    EXPECT_EQ(linkOutcome(empty, empty.url("c", empty.url("", empty.url("file:///a/"))), 0),
              "Link(</a/c> nil)\n");
}

TEST(OtherArchivers, MayShareObjects) {
    ArchiveBuilder archive;
    const Index url = archive.url("file:///a");
    const Index text = archive.string("t");
    const Index link = archive.link(url, text);
    EXPECT_EQ(outcome(archive.finish({link, archive.link(url, text), link})),
              "Link(</a> \"t\")\nLink(</a> \"t\")\nLink(</a> \"t\")\n");
}

TEST(OtherArchivers, MayStoreEqualObjectsOnce) {
    ArchiveBuilder archive;
    const auto text = archive.plist.ascii("t");
    const Index first = archive.entry(text);
    const Index second = archive.entry(text);
    EXPECT_EQ(outcome(archive.finish({archive.link(0, first), archive.link(0, second)})),
              "Link(nil \"t\")\nLink(nil \"t\")\n");
}

TEST(OtherArchivers, MayUseAnyWidthOfOffsetsAndReferences) {
    for (std::size_t references = 1; references <= 8; ++references) {
        for (std::size_t offsets = 2; offsets <= 8; ++offsets) {
            ArchiveBuilder archive(references, offsets);
            EXPECT_EQ(linkOutcome(archive, archive.url("file:///a"), archive.string("t")),
                      "Link(</a> \"t\")\n");
        }
    }
}

TEST(OtherArchivers, MayUseAnyWidthOfUIDs) {
    for (std::size_t width = 1; width <= 8; ++width) {
        ArchiveBuilder archive;
        const Index text = archive.string("t");
        const Index link =
            archive.object(archive.classNamed("SampleLink"), {{"title", archive.plist.uid(text, width)}});
        EXPECT_EQ(outcome(archive.finish({link})), "Link(nil \"t\")\n");
    }
}

TEST(OtherArchivers, MayWriteBooleansAsNumbers) {
    ArchiveBuilder archive;
    std::vector<Index> flags;
    for (const std::size_t width : {1U, 2U, 4U, 8U}) {
        flags.push_back(archive.entry(archive.plist.integer(1, width)));
        flags.push_back(archive.entry(archive.plist.integer(0, width)));
    }
    const Index removal = archive.object(archive.classNamed("_TtC7Samples7Removal"),
                                         {{"source", archive.ref(archive.array({}))},
                                          {"destination", archive.ref(archive.array(flags))},
                                          {"commandDescription", archive.ref(archive.string("x"))}});
    EXPECT_EQ(outcome(archive.finish({removal})), "Removal(\"x\" yes no yes no yes no yes no)\n");
}

TEST(OtherArchivers, MayLeaveOutTheSuperclasses) {
    ArchiveBuilder archive;
    const Index described =
        archive.entry(archive.plist.dictionary({{"$classname", archive.plist.ascii("SampleLink")}}));
    EXPECT_EQ(outcome(archive.finish({archive.object(described, {})})), "Link(nil nil)\n");
}

TEST(OtherArchivers, MayDescribeAClassTwiceAndAddHints) {
    ArchiveBuilder archive;
    auto& plist = archive.plist;
    const Index hinted = archive.entry(plist.dictionary(
        {{"$classhints", plist.array({plist.ascii("x")})}, {"$classname", plist.ascii("SampleLink")}}));
    EXPECT_EQ(outcome(archive.finish({archive.link(0, 0), archive.object(hinted, {})})),
              "Link(nil nil)\nLink(nil nil)\n");
}

TEST(OtherArchivers, MayWriteTheFrameInAnyOrderWithMoreKeys) {
    PlistBuilder plist;
    const auto name = plist.ascii("NSArray");
    const auto described = plist.dictionary({{"$classes", plist.array({name})}, {"$classname", name}});
    const auto list = plist.dictionary({{"$class", plist.uid(2)}, {"NS.objects", plist.array({})}});
    const auto objects = plist.array({plist.ascii("$null"), list, described});
    const auto top = plist.dictionary({{"other", plist.uid(0)}, {"root", plist.uid(1)}});
    const auto frame = plist.dictionary({{"$objects", objects},
                                         {"other", plist.boolean(true)},
                                         {"$version", plist.integer(100000, 4)},
                                         {"$top", top},
                                         {"$archiver", plist.ascii("NSKeyedArchiver")}});
    EXPECT_EQ(outcome(plist.finish(frame)), "");
}

}  // namespace
