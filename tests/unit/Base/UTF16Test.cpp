#include "Base/UTF16.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <string>

namespace {

using namespace std::string_literals;

std::optional<std::string> fromUnits(std::initializer_list<char16_t> units) {
    return Base::utf8FromUTF16(std::u16string(units));
}

TEST(UTF16, ConvertsCharactersOfEveryLengthToUTF16) {
    EXPECT_EQ(Base::utf16FromUTF8("a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80z"), u"a\u00FC\u20AC\U0001F600z");
    EXPECT_EQ(Base::utf16FromUTF8("\xEF\xBF\xBF\xF4\x8F\xBF\xBF"), u"\uFFFF\U0010FFFF");
    EXPECT_EQ(Base::utf16FromUTF8(""), u"");
}

TEST(UTF16, ReplacesInvalidUTF8ByteByByte) {
    EXPECT_EQ(Base::utf16FromUTF8("a\xFFz"), u"a\uFFFDz");
    EXPECT_EQ(Base::utf16FromUTF8("\xC3"), u"\uFFFD");
    EXPECT_EQ(Base::utf16FromUTF8("\x80"), u"\uFFFD");
    EXPECT_EQ(Base::utf16FromUTF8("\xC0\xAF"), u"\uFFFD\uFFFD") << "an overlong slash";
    EXPECT_EQ(Base::utf16FromUTF8("\xE0\x80\xAF"), u"\uFFFD\uFFFD\uFFFD") << "an overlong slash";
    EXPECT_EQ(Base::utf16FromUTF8("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD") << "a surrogate";
    EXPECT_EQ(Base::utf16FromUTF8("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD")
        << "above the last character";
    EXPECT_EQ(Base::utf16FromUTF8("\xE2\x82"), u"\uFFFD\uFFFD") << "cut";
}

TEST(UTF16, ConvertsUTF16ToUTF8) {
    EXPECT_EQ(fromUnits({'a', 0xFC, 0x20AC, 0xD83D, 0xDE00}), "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(Base::utf8FromUTF16({}), "");
    EXPECT_EQ(fromUnits({0}), "\0"s);
    EXPECT_EQ(fromUnits({0xDBFF, 0xDFFF, 0xFFFF}), "\xF4\x8F\xBF\xBF\xEF\xBF\xBF");
    EXPECT_EQ(fromUnits({0xD800, 0xDC00}), "\xF0\x90\x80\x80") << "the first pair";
}

TEST(UTF16, RefusesLoneSurrogates) {
    EXPECT_FALSE(fromUnits({0xD83D}));
    EXPECT_FALSE(fromUnits({0xDE00}));
    EXPECT_FALSE(fromUnits({0xD83D, 'a'}));
    EXPECT_FALSE(fromUnits({0xD83D, 0xD83D, 0xDE00}));
    EXPECT_FALSE(fromUnits({'a', 0xDE00, 0xD83D}));
    EXPECT_FALSE(fromUnits({0xD800, 0xDBFF})) << "below the low ones";
    EXPECT_FALSE(fromUnits({0xD800, 0xE000})) << "above them";
    EXPECT_FALSE(fromUnits({0xDC00, 0xDC00})) << "above the high ones";
}

TEST(UTF16, ReplacesLoneSurrogatesWhereItIsToldTo) {
    const auto replaced = [](std::initializer_list<char16_t> units) {
        return Base::utf8FromUTF16WithReplacements(std::u16string(units));
    };
    EXPECT_EQ(replaced({'a', 0xD83D, 0xDE00, 'z'}), "a\xF0\x9F\x98\x80z");
    EXPECT_EQ(replaced({'a', 0xD83D}), "a\xEF\xBF\xBD");
    EXPECT_EQ(replaced({0xDE00, 'z'}), "\xEF\xBF\xBDz");
    EXPECT_EQ(replaced({0xD83D, 0xD83D, 0xDE00}), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
    EXPECT_EQ(replaced({0xD7FF, 0xE000}), "\xED\x9F\xBF\xEE\x80\x80") << "the neighbours of the surrogates";
}

}  // namespace
