#include "Base/Archive/KeyedArchiver.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "ArchiveBuilder.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "Samples.h"

namespace {

using Base::URL;
using Samples::Link;

std::string hexOf(const std::vector<std::uint8_t>& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

Base::CodedObjectList linkTo(std::optional<URL> target, std::optional<std::string> title) {
    auto link = std::make_unique<Link>();
    link->target = std::move(target);
    link->title = std::move(title);
    Base::CodedObjectList objects;
    objects.push_back(std::move(link));
    return objects;
}

std::string titleAfterRoundTrip(std::string title) {
    std::string refusal;
    const auto objects = Base::unarchivedArray(Samples::archive(linkTo(std::nullopt, std::move(title))),
                                               Samples::allowedClasses(), refusal);
    if (!objects) {
        return refusal;
    }
    return dynamic_cast<const Link&>(*objects->front()).title.value_or("nil");
}

TEST(KeyedArchiver, WritesArchivesThatTheUnarchiverReadsBack) {
    const auto objects = Samples::oneOfEach();
    EXPECT_EQ(outcome(Samples::archive(objects)), Samples::described(objects));
}

TEST(KeyedArchiver, WritesAnEmptyList) {
    EXPECT_EQ(outcome(Base::archivedArray({})), "");
}

TEST(KeyedArchiver, WritesTheSameBytesEachTime) {
    EXPECT_EQ(Samples::archive(Samples::oneOfEach()), Samples::archive(Samples::oneOfEach()));
}

TEST(KeyedArchiver, WritesTheseBytes) {
    const auto bytes = Samples::archive(linkTo(URL::fileURL("/A b"), "B\xC3\xBCro"));
    EXPECT_EQ(hexOf(bytes),
              "62706c6973743030800055246e756c6c80018002800380045d66696c653a2f2f2f4125323062574e532e6261"
              "73655b4e532e72656c61746976655624636c6173738005554e5355524c584e534f626a656374a2001000115a"
              "24636c6173736e616d655824636c6173736573d20013001400100012d3000b000c000d0002000a000f567461"
              "72676574800664004200fc0072006f557469746c6580075a53616d706c654c696e6b584e534f626a656374a2"
              "001b001cd200130014001b001dd300150018000d00080017001aa100065a4e532e6f626a656374738008574e"
              "534172726179584e534f626a656374a200220023d20013001400220024d2001f000d001e0021582476657273"
              "696f6e592461726368697665725424746f7058246f626a6563747312000186a05f100f4e534b657965644172"
              "63686976657254726f6f74d1002d0004a900010003000500070009000e001600190020d40025002600270028"
              "0029002a002b002c0157000a000800f9001000bd001200740014001800160026002e003a006b004100430049"
              "0052005700620081008a0088009300b40099009b00a600af00ca00cd00f000d800da00e200eb0102010b0115"
              "011a01230128013f0144013a0000000000000202000000000000002e00000000000000000000000000000168");
}

TEST(KeyedArchiver, DescribesEachClassOnce) {
    Base::CodedObjectList two = linkTo(URL::fileURL("/a"), "a");
    two.push_back(std::move(linkTo(URL::fileURL("/b"), "b").front()));
    const auto bytes = Samples::archive(two);
    const std::string text(bytes.begin(), bytes.end());
    for (const char* name :
         {"SampleLink", "NSURL", "NSArray", "NSObject", "target", "NS.relative", "$classname"}) {
        const std::size_t first = text.find(name);
        ASSERT_NE(first, std::string::npos) << name;
        if (std::string(name) != "NSObject") {
            EXPECT_EQ(text.find(name, first + 1), std::string::npos) << name;
        }
    }
}

TEST(KeyedArchiver, ListsTheSuperclassesOfAClass) {
    Base::CodedObjectList objects;
    objects.push_back(std::make_unique<Samples::Removal>("text", std::vector<URL>{}, std::vector<bool>{}));
    const auto bytes = Samples::archive(objects);
    const std::string text(bytes.begin(), bytes.end());
    const std::size_t own = text.find("_TtC7Samples7Removal");
    const std::size_t base = text.find("_TtC7Samples4Step");
    ASSERT_NE(base, std::string::npos);
    EXPECT_LT(own, base);
    EXPECT_LT(base, text.find("NSObject", base));
}

TEST(KeyedArchiver, KeepsTextOfEveryKind) {
    using namespace std::string_literals;
    for (const std::string& text :
         {""s, "x"s, std::string(14, 'a'), std::string(15, 'b'), std::string(255, 'c'), std::string(256, 'd'),
          std::string(70000, 'e'), "a\0b"s, "\xC3\xBC\xF0\x9F\x98\x80"s, "line\nbreak"s,
          std::string(70000, 'f') + "\xE2\x82\xAC"}) {
        EXPECT_EQ(titleAfterRoundTrip(text), text);
    }
}

TEST(KeyedArchiver, ReplacesBytesThatAreNotUTF8) {
    EXPECT_EQ(titleAfterRoundTrip("a\xFFz\xC3"), "a\xEF\xBF\xBDz\xEF\xBF\xBD");
}

TEST(KeyedArchiver, KeepsPathsOfEveryLength) {
    for (const std::size_t length :
         {0U, 7U, 8U, 14U, 15U, 240U, 248U, 249U, 256U, 65520U, 65529U, 65536U, 70000U}) {
        const auto objects = linkTo(URL::fileURL('/' + std::string(length, 'p')), std::nullopt);
        EXPECT_EQ(outcome(Samples::archive(objects)), Samples::described(objects)) << length;
    }
}

TEST(KeyedArchiver, KeepsPathsThatAreNotUTF8) {
    const auto objects = linkTo(URL::fileURL("/a\xFF\x80;%2E b"), std::nullopt);
    EXPECT_EQ(outcome(Samples::archive(objects)), Samples::described(objects));
}

// More objects than two bytes can count: references and offsets get wider.
TEST(KeyedArchiver, WritesListsOfManyThousandObjects) {
    Base::CodedObjectList objects;
    for (int i = 0; i < 30000; ++i) {
        objects.push_back(
            std::move(linkTo(URL::fileURL('/' + std::to_string(i)), std::to_string(i)).front()));
    }
    EXPECT_EQ(outcome(Samples::archive(objects)), Samples::described(objects));
}

class Reader final : public Base::CodedObject {
  public:
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return Link::classDescription(); }
    void encode(Base::Coder& coder) const override { static_cast<void>(coder.decodeString("title")); }
};

TEST(KeyedArchiverDeathTest, CannotDecode) {
    const Reader reader;
    const Base::CodedObject* const objects[] = {&reader};
    EXPECT_DEATH(static_cast<void>(Base::archivedArray(objects)),
                 "^Fatal error: A keyed archiver cannot decode\\.\n$");
}

}  // namespace
