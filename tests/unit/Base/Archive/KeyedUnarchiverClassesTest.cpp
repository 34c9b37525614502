#include "Base/Archive/KeyedUnarchiver.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "ArchiveBuilder.h"
#include "Samples.h"

// What an archive has to hold: keys, types, classes. Every refusal says where.

namespace {

using Index = ArchiveBuilder::Index;

TEST(KeyedUnarchiver, RefusesUnknownClassesThatNothingRefersTo) {
    ArchiveBuilder archive;
    archive.object(archive.classNamed("NSTask"), {});
    EXPECT_EQ(outcome(archive.finish({archive.link(0, 0)})),
              "refused: object 1 names the class NSTask, which is not allowed");
    ArchiveBuilder lone;
    lone.classNamed("NSTask");
    EXPECT_EQ(outcome(lone.finish({lone.link(0, 0)})),
              "refused: object 1 names the class NSTask, which is not allowed");
}

TEST(KeyedUnarchiver, RefusesTheAbstractBase) {
    ArchiveBuilder archive;
    EXPECT_EQ(outcome(listOf(archive, "_TtC7Samples4Step", {})),
              "refused: object 1 names the class _TtC7Samples4Step, which is not allowed");
}

TEST(KeyedUnarchiver, RefusesAClassThatIsNeverDecoded) {
    const std::array<const Base::CodedClass*, 1> objects{&Samples::Step::classDescription()};
    const Base::AllowedClasses allowed{objects, Samples::allowedClasses().values};
    ArchiveBuilder archive;
    std::string refusal;
    EXPECT_FALSE(Base::unarchivedArray(listOf(archive, "_TtC7Samples4Step", {}), allowed, refusal));
    EXPECT_EQ(refusal, "command 1 (_TtC7Samples4Step): its keys do not make an object");
}

TEST(KeyedUnarchiver, RefusesValuesOfClassesThatAreNotAllowed) {
    const std::array<std::string_view, 1> onlyArrays{"NSArray"};
    const Base::AllowedClasses allowed{Samples::allowedClasses().objects, onlyArrays};
    std::string refusal;
    ArchiveBuilder text;
    EXPECT_FALSE(Base::unarchivedArray(text.finish({text.link(0, text.string("t"))}), allowed, refusal));
    EXPECT_EQ(refusal, "object 1 is of the class NSString, which is not allowed");
    ArchiveBuilder number;
    number.entry(number.plist.boolean(true));
    EXPECT_FALSE(Base::unarchivedArray(number.finish({}), allowed, refusal));
    EXPECT_EQ(refusal, "object 1 is of the class NSNumber, which is not allowed");
    ArchiveBuilder data;
    data.entry(data.plist.raw("\x41x"));
    EXPECT_EQ(outcome(data.finish({})), "refused: object 1 is of the class NSData, which is not allowed");
}

TEST(KeyedUnarchiver, RefusesObjectsWithoutAClass) {
    ArchiveBuilder dictionary;
    dictionary.entry(dictionary.plist.dictionary({{"key", dictionary.ref(0)}}));
    EXPECT_EQ(outcome(dictionary.finish({})), "refused: object 1 has no class");
    ArchiveBuilder array;
    array.entry(array.plist.array({}));
    EXPECT_EQ(outcome(array.finish({})), "refused: object 1 has no class");
    ArchiveBuilder text;
    text.object(text.string("NSURL"), {});
    EXPECT_EQ(outcome(text.finish({})), "refused: object 1 is not a class");
    ArchiveBuilder number;
    number.entry(number.plist.dictionary({{"$classname", number.plist.integer(1)}}));
    EXPECT_EQ(outcome(number.finish({})), "refused: object 1 is not a class");
    ArchiveBuilder nameless;
    nameless.object(nameless.entry(nameless.plist.dictionary({{"key", nameless.ref(0)}})), {});
    EXPECT_EQ(outcome(nameless.finish({})), "refused: object 1 has no class");
    ArchiveBuilder outside;
    outside.object(1000, {});
    EXPECT_EQ(outcome(outside.finish({})), "refused: object 1 refers to no class");
}

TEST(KeyedUnarchiver, RefusesAnotherArchiverOrVersion) {
    ArchiveBuilder other;
    EXPECT_EQ(outcome(other.finish(other.array({}), other.plist.ascii("NRKeyedArchiver"), other.version())),
              "refused: not a keyed archive: \"$archiver\" is not NSKeyedArchiver");
    ArchiveBuilder none;
    EXPECT_EQ(outcome(none.finish(none.array({}), 0, none.version())),
              "refused: not a keyed archive: \"$archiver\" is not NSKeyedArchiver");
    ArchiveBuilder newer;
    EXPECT_EQ(outcome(newer.finish(newer.array({}), newer.archiverName(), newer.plist.integer(100001))),
              "refused: not a keyed archive: \"$version\" is not 100000");
    ArchiveBuilder unversioned;
    EXPECT_EQ(outcome(unversioned.finish(unversioned.array({}), unversioned.archiverName(), 0)),
              "refused: not a keyed archive: \"$version\" is not 100000");
}

TEST(KeyedUnarchiver, RefusesAClassThatDescribesItselfWrongly) {
    for (const char* first : {"NSURL", ""}) {
        ArchiveBuilder archive;
        auto& plist = archive.plist;
        const Index described = archive.entry(plist.dictionary(
            {{"$classname", plist.ascii("SampleLink")}, {"$classes", plist.array({plist.ascii(first)})}}));
        EXPECT_EQ(outcome(archive.finish({archive.object(described, {})})),
                  "refused: object 1 does not describe the class SampleLink correctly");
    }
    ArchiveBuilder number;
    const Index described = number.entry(number.plist.dictionary(
        {{"$classname", number.plist.ascii("SampleLink")}, {"$classes", number.plist.integer(1)}}));
    EXPECT_EQ(outcome(number.finish({number.object(described, {})})),
              "refused: object 1 does not describe the class SampleLink correctly");
}

TEST(KeyedUnarchiver, NamesAForeignClassAsItIsAndCutsItsName) {
    ArchiveBuilder archive;
    archive.object(archive.classNamed("evil\n\x1B[2J\"" + std::string(5000, 'x')), {});
    const std::string refusal = outcome(archive.finish({}));
    EXPECT_LT(refusal.size(), 400U);
    EXPECT_NE(refusal.find("evil\n\x1B[2J\"xxx"), std::string::npos) << refusal;
    EXPECT_NE(refusal.find("xxx..."), std::string::npos) << refusal;
}

}  // namespace
