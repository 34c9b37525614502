#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "ArchiveBuilder.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "HostileArchives.h"
#include "Samples.h"

// What a stranger might send to a root process.

namespace {

using Index = ArchiveBuilder::Index;
using Bytes = std::vector<std::uint8_t>;
using HostileArchiveTests::smallArchive;

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
