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

/// How long a well-formed sequence with these first two bytes is, as the Unicode Standard's table 3-7 has
/// them; 0 if there is none.
std::size_t lengthInTable(int first, int second) {
    struct Row {
        int first, last, secondFirst, secondLast;
        std::size_t length;
    };
    constexpr Row kRows[] = {{0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
                             {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3},
                             {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
                             {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};
    for (const Row& row : kRows) {
        if (first >= row.first && first <= row.last && second >= row.secondFirst &&
            second <= row.secondLast) {
            return row.length;
        }
    }
    return 0;
}

TEST(UTF8, FindsExactlyTheWellFormedSequences) {
    const std::string thirds = "\x7F\x80\xBF\xC0";
    for (int first = 0x80; first < 0x100; ++first) {
        for (int second = 0; second < 0x100; ++second) {
            for (const char third : thirds) {
                const std::string text{static_cast<char>(first), static_cast<char>(second), third, '\x80'};
                const std::size_t length = lengthInTable(first, second);
                const bool isThirdRight = length < 3 || third == '\x80' || third == '\xBF';
                ASSERT_EQ(Base::firstUTF8Character(text).bytes, isThirdRight ? length : 0)
                    << testing::PrintToString(text);
            }
        }
    }
}

TEST(UTF8, ReadsTheValueOfACharacter) {
    for (const char32_t value :
         {0x7FU, 0x80U, 0x7FFU, 0x800U, 0xD7FFU, 0xE000U, 0xFFFFU, 0x10000U, 0x10FFFFU}) {
        std::string text;
        Base::appendUTF8(text, value);
        EXPECT_EQ(Base::firstUTF8Character(text).value, value);
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
