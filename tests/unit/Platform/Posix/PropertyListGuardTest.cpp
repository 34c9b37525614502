#include "Platform/Posix/PropertyListGuard.h"

#include <gtest/gtest.h>

#include "PropertyLists.h"

namespace PlatformTests {
namespace {

using Platform::Posix::isTamePropertyList;
using namespace std::string_literals;

TEST(PropertyListGuard, PassesOrdinaryLists) {
    EXPECT_TRUE(isTamePropertyList(binaryPropertyList({"\xD1\1\2"s, "\x51k"s, "\x51v"s})));
    EXPECT_TRUE(isTamePropertyList(binaryPropertyList({"\x51v"s})));
    EXPECT_TRUE(isTamePropertyList(nestedArraysBinary(65)));
    EXPECT_TRUE(isTamePropertyList(nestedArraysXML(60)));
    EXPECT_TRUE(isTamePropertyList(""));
}

TEST(PropertyListGuard, TakesOffsetsOfOneToEightBytes) {
    for (int size = 1; size <= 8; ++size) {
        EXPECT_TRUE(isTamePropertyList(binaryPropertyList({"\xD1\1\2"s, "\x51k"s, "\x51v"s}, 0, size)))
            << size;
    }
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList({"\x51v"s}, 0, 0)));
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList({"\x51v"s}, 0, 9)));
}

// 4,096 of all kinds together.
TEST(PropertyListGuard, CountsEveryContainerOfXML) {
    const auto many = [](const std::string& tag, int count) {
        std::string text;
        for (int number = 0; number < count; ++number) {
            text += tag;
        }
        return text;
    };
    for (const char* tag : {"<plist>", "<dict>", "<array>", "<dict a=\"\">"}) {
        EXPECT_TRUE(isTamePropertyList(many(tag, 4096))) << tag;
        EXPECT_FALSE(isTamePropertyList(many(tag, 4097))) << tag;
    }
    EXPECT_FALSE(isTamePropertyList(many("<plist><dict><array>", 1366)));
    EXPECT_TRUE(isTamePropertyList(many("<string></plist>", 5000)));
}

TEST(PropertyListGuard, RefusesDeepNesting) {
    EXPECT_FALSE(isTamePropertyList(nestedArraysBinary(66)));
    EXPECT_FALSE(isTamePropertyList(nestedArraysBinary(100'000)));
    EXPECT_FALSE(isTamePropertyList(nestedArraysXML(100'000)));
}

TEST(PropertyListGuard, RefusesNestingThatCommentsHide) {
    std::string text = "<plist>";
    for (int number = 0; number < 100'000; ++number) {
        text += "<array><!--</array>-->";
    }
    EXPECT_FALSE(isTamePropertyList(text));
}

TEST(PropertyListGuard, RefusesCyclesAndExplodingReferences) {
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList({"\xA1\0"s})));
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList({"\xA1\1"s, "\xC1\0"s})));
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList({"\xD1\1\0"s, "\x51k"s})));
    std::vector<std::string> doubling;
    for (char number = 0; number < 40; ++number) {
        doubling.push_back("\xA2"s + static_cast<char>(number + 1) + static_cast<char>(number + 1));
    }
    doubling.push_back("\x51v");
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList(doubling)));
}

TEST(PropertyListGuard, RefusesReferencesOutsideTheFile) {
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList({"\xA1\7"s})));
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList({"\x51v"s}, 5)));
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList({"\xAF\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s})));
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList({"\xAF\x12\x0F\xFF\xFF\xFF"s})));
    EXPECT_FALSE(isTamePropertyList(binaryPropertyList({"\xDF\x10\xFF"s})));
}

// Every single damaged byte and every cut: no more than an answer is asked for, and a sanitizer watches.
TEST(PropertyListGuard, StandsDamage) {
    const std::string whole =
        binaryPropertyList({"\xD2\1\2\3\4"s, "\x51k"s, "\x51l"s, "\xA1\3"s, "\xAF\x10\1\1"s});
    std::size_t passed = 0;
    for (std::size_t position = 0; position < whole.size(); ++position) {
        for (const char byte : {'\0', '\1', '\x7F', '\x80', '\xFF', '\xAF', '\xDF'}) {
            std::string damaged = whole;
            damaged[position] = byte;
            passed += isTamePropertyList(damaged) ? 1 : 0;
        }
        EXPECT_FALSE(position >= 8 && isTamePropertyList(whole.substr(0, position)));
    }
    EXPECT_GT(passed, 0U);
    EXPECT_LT(passed, whole.size() * 7);
}

}  // namespace
}  // namespace PlatformTests
