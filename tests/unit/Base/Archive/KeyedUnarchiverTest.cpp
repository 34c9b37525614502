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

TEST(KeyedUnarchiver, LeavesTheRefusalAloneOnSuccess) {
    std::string refusal = "untouched";
    EXPECT_TRUE(
        Base::unarchivedArray(Samples::archive(Samples::oneOfEach()), Samples::allowedClasses(), refusal));
    EXPECT_EQ(refusal, "untouched");
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
                 "^Fatal error: A keyed unarchiver cannot encode\\.\n$");
}

}  // namespace
