#include "Base/Archive/KeyedUnarchiver.h"

#include <gtest/gtest.h>

#include <functional>

#include <array>
#include <memory>
#include <string>
#include <utility>

#include "ArchiveBuilder.h"
#include "Samples.h"

// What an archive has to hold: keys, types, classes. Every refusal says where.

namespace {

using Index = ArchiveBuilder::Index;

constexpr const char* kRemoval = "_TtC7Samples7Removal";
constexpr const char* kJobStep = "_TtC7Samples7JobStep";

// A list of one object of `className` with these keys.
std::vector<std::uint8_t> listOf(ArchiveBuilder& archive, const char* className,
                                 const ArchiveBuilder::Keys& keys) {
    return archive.finish({archive.object(archive.classNamed(className), keys)});
}

TEST(KeyedUnarchiver, NamesTheMissingKeyItsClassAndItsPosition) {
    ArchiveBuilder archive;
    const Index good = archive.link(0, archive.string("good"));
    const Index bad = archive.object(archive.classNamed(kRemoval),
                                     {{"commandDescription", archive.ref(archive.string("x"))}});
    EXPECT_EQ(outcome(archive.finish({good, good, bad})),
              "refused: command 3 (_TtC7Samples7Removal): key \"source\" is missing");
}

TEST(KeyedUnarchiver, TakesNilForAMissingKey) {
    ArchiveBuilder archive;
    EXPECT_EQ(outcome(listOf(archive, kRemoval, {{"source", archive.ref(0)}})),
              "refused: command 1 (_TtC7Samples7Removal): key \"source\" is missing");
}

TEST(KeyedUnarchiver, LeavesAPropertyEmptyWhoseKeyIsMissing) {
    ArchiveBuilder archive;
    EXPECT_EQ(outcome(listOf(archive, "SampleFile", {{"name", archive.ref(archive.string("n"))}})),
              "File(\"n\" nil)\n");
}

TEST(KeyedUnarchiver, IgnoresKeysThatNobodyAsksFor) {
    ArchiveBuilder archive;
    EXPECT_EQ(outcome(listOf(archive, "SampleFile",
                             {{"name", archive.ref(archive.string("n"))},
                              {"weight", archive.plist.integer(5)},
                              {"other", archive.ref(0)}})),
              "File(\"n\" nil)\n");
}

TEST(KeyedUnarchiver, TakesTheFirstOfTwoEqualKeys) {
    ArchiveBuilder archive;
    EXPECT_EQ(outcome(listOf(archive, "SampleFile",
                             {{"name", archive.ref(archive.string("first"))},
                              {"name", archive.ref(archive.string("second"))}})),
              "File(\"first\" nil)\n");
}

TEST(KeyedUnarchiver, NamesTheWayToANestedFault) {
    ArchiveBuilder archive;
    const Index job =
        archive.object(archive.classNamed("SampleJob"), {{"label", archive.ref(archive.array({}))}});
    EXPECT_EQ(outcome(listOf(archive, kJobStep, {{"agent", archive.ref(job)}})),
              "refused: command 1 (_TtC7Samples7JobStep): key \"agent\" (SampleJob): key \"label\" is not a "
              "string");
}

TEST(KeyedUnarchiver, RefusesAWrongTypeEvenWhereAMissingKeyIsFine) {
    ArchiveBuilder archive;
    EXPECT_EQ(
        outcome(listOf(archive, "SampleFile", {{"location", archive.ref(archive.string("file:///a"))}})),
        "refused: command 1 (SampleFile): key \"location\" is not a file URL");
    ArchiveBuilder inlined;
    EXPECT_EQ(outcome(listOf(inlined, "SampleFile", {{"name", inlined.plist.ascii("inline")}})),
              "refused: command 1 (SampleFile): key \"name\" refers to no object");
}

TEST(KeyedUnarchiver, RefusesAnotherClassOfObjectThanExpected) {
    ArchiveBuilder archive;
    const Index link = archive.link(0, 0);
    EXPECT_EQ(
        outcome(listOf(archive, kJobStep, {{"agent", archive.ref(link)}})),
        "refused: command 1 (_TtC7Samples7JobStep): key \"agent\" is not an object of the class SampleJob");
}

TEST(KeyedUnarchiver, TakesAnObjectOfADerivedClass) {
    ArchiveBuilder archive;
    const Index bundle =
        archive.object(archive.classNamed("SampleBundle"), {{"name", archive.ref(archive.string("b"))}});
    EXPECT_EQ(outcome(listOf(archive, "SampleJob", {{"plist", archive.ref(bundle)}})),
              "Job(nil File(\"b\" nil))\n");
}

TEST(KeyedUnarchiver, RefusesAnObjectOfASuperclass) {
    const std::array<const Base::CodedClass*, 1> onlyBundles{&Samples::Bundle::codedClass()};
    const Base::AllowedClasses allowed{onlyBundles, Samples::allowedClasses().values};
    ArchiveBuilder archive;
    std::string refusal;
    EXPECT_FALSE(Base::unarchivedArray(listOf(archive, "SampleFile", {}), allowed, refusal));
    EXPECT_NE(refusal.find("names the class SampleFile, which is not allowed"), std::string::npos) << refusal;
}

TEST(KeyedUnarchiver, NamesTheItemOfAnArrayThatIsWrong) {
    ArchiveBuilder archive;
    const Index urls = archive.array({archive.url("file:///a"), archive.url("http://a/")});
    EXPECT_EQ(outcome(listOf(archive, kRemoval, {{"source", archive.ref(urls)}})),
              "refused: command 1 (_TtC7Samples7Removal): key \"source\": item 2 is not a file URL");
    ArchiveBuilder flags;
    const Index numbers = flags.array({flags.entry(flags.plist.integer(2))});
    EXPECT_EQ(outcome(listOf(flags, kRemoval,
                             {{"source", flags.ref(flags.array({}))}, {"destination", flags.ref(numbers)}})),
              "refused: command 1 (_TtC7Samples7Removal): key \"destination\": item 1 is not a boolean");
}

TEST(KeyedUnarchiver, RefusesAnArrayWhereAnotherThingIs) {
    ArchiveBuilder archive;
    EXPECT_EQ(outcome(listOf(archive, kRemoval, {{"source", archive.ref(archive.string("x"))}})),
              "refused: command 1 (_TtC7Samples7Removal): key \"source\" is not an array");
}

std::string stepWithFlag(ArchiveBuilder& archive, ArchiveBuilder::Id flag) {
    const Index job = archive.object(archive.classNamed("SampleJob"), {});
    return outcome(listOf(archive, kJobStep,
                          {{"agent", archive.ref(job)},
                           {"isDaemon", flag},
                           {"commandDescription", archive.ref(archive.string("x"))}}));
}

TEST(KeyedUnarchiver, ReadsAnInlineBoolean) {
    for (const bool value : {true, false}) {
        ArchiveBuilder archive;
        const auto flag = archive.plist.boolean(value);
        EXPECT_EQ(stepWithFlag(archive, flag),
                  value ? "JobStep(\"x\" Job(nil nil) daemon)\n" : "JobStep(\"x\" Job(nil nil) agent)\n");
    }
}

TEST(KeyedUnarchiver, ReadsAnInlineNumberAsABoolean) {
    using namespace std::string_literals;
    for (const auto& [bytes, expected] :
         {std::pair("\x10\x01"s, "daemon"), std::pair("\x10\x00"s, "agent"),
          std::pair("\x11\x05\x00"s, "daemon"), std::pair("\x22\x3F\x80\x00\x00"s, "daemon"),
          std::pair("\x22\x00\x00\x00\x00"s, "agent")}) {
        ArchiveBuilder archive;
        const auto flag = archive.plist.raw(bytes);
        EXPECT_EQ(stepWithFlag(archive, flag), "JobStep(\"x\" Job(nil nil) "s + expected + ")\n");
    }
}

TEST(KeyedUnarchiver, TakesNilForAMissingBoolean) {
    ArchiveBuilder archive;
    EXPECT_EQ(stepWithFlag(archive, archive.ref(0)), "JobStep(\"x\" Job(nil nil) agent)\n");
}

TEST(KeyedUnarchiver, RefusesAnythingButAnInlineBoolean) {
    ArchiveBuilder text;
    EXPECT_EQ(stepWithFlag(text, text.plist.ascii("YES")),
              "refused: command 1 (_TtC7Samples7JobStep): key \"isDaemon\" is not a boolean");
    ArchiveBuilder object;
    const Index boxed = object.entry(object.plist.boolean(true));
    EXPECT_EQ(stepWithFlag(object, object.ref(boxed)),
              "refused: command 1 (_TtC7Samples7JobStep): key \"isDaemon\" is not a boolean");
    ArchiveBuilder null;
    EXPECT_EQ(stepWithFlag(null, null.plist.raw(std::string(1, '\0'))),
              "refused: command 1 (_TtC7Samples7JobStep): key \"isDaemon\" is not a boolean");
}

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

TEST(KeyedUnarchiver, RefusesElementsThatAreNoObjects) {
    ArchiveBuilder text;
    EXPECT_EQ(outcome(text.finish({text.string("x")})),
              "refused: command 1: it is not an object of a coded class");
    ArchiveBuilder nil;
    EXPECT_EQ(outcome(nil.finish({nil.link(0, 0), 0})),
              "refused: command 2: it is not an object of a coded class");
    ArchiveBuilder url;
    EXPECT_EQ(outcome(url.finish({url.url("file:///a")})),
              "refused: command 1: it is not an object of a coded class");
}

TEST(KeyedUnarchiver, RefusesARootThatIsNotAnArray) {
    ArchiveBuilder archive;
    const Index link = archive.link(0, 0);
    EXPECT_EQ(outcome(archive.finish(link, archive.archiverName(), archive.version())),
              "refused: key \"root\" is not an array");
    ArchiveBuilder nil;
    EXPECT_EQ(outcome(nil.finish(0, nil.archiverName(), nil.version())),
              "refused: key \"root\" is not an array");
    ArchiveBuilder outside;
    EXPECT_EQ(outcome(outside.finish(1000, outside.archiverName(), outside.version())),
              "refused: not a keyed archive: \"$top\" refers to no object under \"root\"");
}

TEST(KeyedUnarchiver, RefusesAListThatCannotBeOneOfObjects) {
    // `objects` makes the value of "$objects".
    const auto outcomeOf = [](const std::function<PlistBuilder::Id(PlistBuilder&)>& objects) {
        PlistBuilder plist;
        const auto list = objects(plist);
        const auto top = plist.dictionary({{"root", plist.uid(0)}});
        return outcome(plist.finish(plist.dictionary({{"$archiver", plist.ascii("NSKeyedArchiver")},
                                                      {"$version", plist.integer(100000)},
                                                      {"$objects", list},
                                                      {"$top", top}})));
    };
    const std::string noList = "refused: not a keyed archive: \"$objects\" is not a list of objects";
    EXPECT_EQ(outcomeOf([](PlistBuilder& plist) { return plist.ascii("$null"); }), noList);
    EXPECT_EQ(outcomeOf([](PlistBuilder& plist) { return plist.array({}); }), noList);
    EXPECT_EQ(outcomeOf([](PlistBuilder& plist) { return plist.array({plist.ascii("$nil")}); }),
              "refused: not a keyed archive: \"$objects\" does not begin with $null");
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

TEST(KeyedUnarchiver, LeavesTheRefusalAloneOnSuccess) {
    std::string refusal = "untouched";
    EXPECT_TRUE(
        Base::unarchivedArray(Samples::archive(Samples::oneOfEach()), Samples::allowedClasses(), refusal));
    EXPECT_EQ(refusal, "untouched");
}

TEST(KeyedUnarchiver, NamesAForeignClassAsItIsAndCutsItsName) {
    ArchiveBuilder archive;
    archive.object(archive.classNamed("evil\n\x1B[2J\"" + std::string(5000, 'x')), {});
    const std::string refusal = outcome(archive.finish({}));
    EXPECT_LT(refusal.size(), 400U);
    EXPECT_NE(refusal.find("evil\n\x1B[2J\"xxx"), std::string::npos) << refusal;
    EXPECT_NE(refusal.find("xxx..."), std::string::npos) << refusal;
}

class Writer {
  public:
    static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder) {
        coder.encodeNil("key");
        return nullptr;
    }
};

TEST(KeyedUnarchiverDeathTest, CannotEncode) {
    static constexpr Base::CodedClass kWriter{"SampleLink", nullptr, &Writer::decode};
    const std::array<const Base::CodedClass*, 1> objects{&kWriter};
    const Base::AllowedClasses allowed{objects, Samples::allowedClasses().values};
    ArchiveBuilder archive;
    const auto bytes = archive.finish({archive.link(0, 0)});
    std::string refusal;
    EXPECT_DEATH(static_cast<void>(Base::unarchivedArray(bytes, allowed, refusal)),
                 "Fatal error: A keyed unarchiver cannot encode\\.");
}

}  // namespace
