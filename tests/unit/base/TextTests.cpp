#include "Base/Text.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

#include "Base/UTF8.h"

namespace {

using namespace std::string_literals;

std::optional<std::string> fromUnits(std::initializer_list<unsigned> units) {
    std::string bytes;
    for (const unsigned unit : units) {
        bytes += static_cast<char>(unit >> 8);
        bytes += static_cast<char>(unit & 0xFF);
    }
    return Base::utf8FromBigEndianUTF16({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

TEST(Text, SeesTheHighBitAtEveryPlace) {
    for (std::size_t length = 0; length < 40; ++length) {
        std::string text(length, '\x7F');
        EXPECT_TRUE(Base::isASCII(text));
        for (std::size_t at = 0; at < length; ++at) {
            text[at] = '\x80';
            EXPECT_FALSE(Base::isASCII(text)) << at << " of " << length;
            text[at] = '\x7F';
        }
    }
}

TEST(Text, ConvertsCharactersOfEveryLengthToUTF16) {
    EXPECT_EQ(Base::utf16FromUTF8("a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80z"), u"a\u00FC\u20AC\U0001F600z");
    EXPECT_EQ(Base::utf16FromUTF8("\xEF\xBF\xBF\xF4\x8F\xBF\xBF"), u"\uFFFF\U0010FFFF");
    EXPECT_EQ(Base::utf16FromUTF8(""), u"");
}

TEST(Text, ReplacesWhatIsNotUTF8ByteByByte) {
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

TEST(Text, TellsValidUTF8) {
    EXPECT_TRUE(Base::isValidUTF8("a\xC3\xBC\xF0\x9F\x98\x80"));
    EXPECT_TRUE(Base::isValidUTF8(""));
    for (const char* text :
         {"\xFF", "a\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80", "\xF0\x80\x80\xAF"}) {
        EXPECT_FALSE(Base::isValidUTF8(text));
    }
}

TEST(Text, ConvertsUTF16ToUTF8) {
    EXPECT_EQ(fromUnits({'a', 0xFC, 0x20AC, 0xD83D, 0xDE00}), "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(fromUnits({}), "");
    EXPECT_EQ(fromUnits({0}), "\0"s);
    EXPECT_EQ(fromUnits({0xDBFF, 0xDFFF, 0xFFFF}), "\xF4\x8F\xBF\xBF\xEF\xBF\xBF");
}

TEST(Text, RefusesLoneSurrogates) {
    EXPECT_FALSE(fromUnits({0xD83D}));
    EXPECT_FALSE(fromUnits({0xDE00}));
    EXPECT_FALSE(fromUnits({0xD83D, 'a'}));
    EXPECT_FALSE(fromUnits({0xD83D, 0xD83D, 0xDE00}));
    EXPECT_FALSE(fromUnits({'a', 0xDE00, 0xD83D}));
}

TEST(Text, KeepsAnExcerptThatFits) {
    EXPECT_EQ(Base::excerpt("plain\ntext\xFF"), "plain\ntext\xFF");
    EXPECT_EQ(Base::excerpt("abc", 3), "abc");
    EXPECT_EQ(Base::excerpt(std::string(120, 'x')), std::string(120, 'x'));
}

TEST(Text, CutsAnExcerptThatIsTooLongBetweenTwoCharacters) {
    EXPECT_EQ(Base::excerpt("abcdef", 3), "abc...");
    EXPECT_EQ(Base::excerpt(std::string(121, 'x')), std::string(120, 'x') + "...");
    EXPECT_EQ(Base::excerpt("ab\xE2\x98\x83z", 5), "ab\xE2\x98\x83...");
    EXPECT_EQ(Base::excerpt("ab\xE2\x98\x83z", 4), "ab...");
    EXPECT_EQ(Base::excerpt("ab\xE2\x98\x83z", 3), "ab...");
    EXPECT_EQ(Base::excerpt("\x80\x80\x80", 1), "...");
}

}  // namespace
