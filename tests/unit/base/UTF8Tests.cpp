#include "Base/UTF8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(UTF8, SeesTheHighBitAtEveryPlace) {
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

TEST(UTF8, TellsValidUTF8) {
    EXPECT_TRUE(Base::isValidUTF8("a\xC3\xBC\xF0\x9F\x98\x80"));
    EXPECT_TRUE(Base::isValidUTF8(""));
    for (const char* text :
         {"\xFF", "a\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80", "\xF0\x80\x80\xAF"}) {
        EXPECT_FALSE(Base::isValidUTF8(text));
    }
}

TEST(UTF8, WritesCharactersOfEveryLength) {
    std::string text;
    for (const char32_t value : {0x0U, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xFFFFU, 0x10000U, 0x10FFFFU}) {
        Base::appendUTF8(text, value);
    }
    const std::string expected(
        "\0\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", 20);
    EXPECT_EQ(text, expected);
}

TEST(UTF8, KnowsTheBytesThatContinueACharacter) {
    for (int byte = 0; byte < 256; ++byte) {
        EXPECT_EQ(Base::continuesUTF8(static_cast<char>(byte)), byte >= 0x80 && byte < 0xC0) << byte;
    }
}

TEST(UTF8, StartsATextWithWholeCharacters) {
    EXPECT_EQ(Base::startOfUTF8("abc", 3), "abc");
    EXPECT_EQ(Base::startOfUTF8("abc", 2), "ab");
    EXPECT_EQ(Base::startOfUTF8("a\xF0\x9F\x98\x80", 5), "a\xF0\x9F\x98\x80");
    for (const std::size_t limit : {1U, 2U, 3U, 4U}) {
        EXPECT_EQ(Base::startOfUTF8("a\xF0\x9F\x98\x80z", limit), "a") << limit;
    }
    EXPECT_EQ(Base::startOfUTF8("", 0), "");
}

TEST(UTF8, StartsATextThatIsNotUTF8AtMostFourBytesEarlier) {
    EXPECT_EQ(Base::startOfUTF8(std::string(20, '\x80'), 10), std::string(6, '\x80'));
    EXPECT_EQ(Base::startOfUTF8("\x80\x80\x80", 2), "");
}

TEST(UTF8, TakesACutCharacterOffTheEnd) {
    for (const std::string character : {"\xC3\xBC", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
        const std::string whole = "ab" + character;
        EXPECT_EQ(Base::withoutCutCharacter(whole), whole);
        for (std::size_t length = 3; length < whole.size(); ++length) {
            EXPECT_EQ(Base::withoutCutCharacter(whole.substr(0, length)), "ab") << length;
        }
    }
    EXPECT_EQ(Base::withoutCutCharacter("\xF0\x9F"), "");
    EXPECT_EQ(Base::withoutCutCharacter("ab"), "ab");
    EXPECT_EQ(Base::withoutCutCharacter(""), "");
    EXPECT_EQ(Base::withoutCutCharacter("\x80\x80\x80\x80"), "\x80\x80\x80\x80") << "nothing was cut";
}

}  // namespace
