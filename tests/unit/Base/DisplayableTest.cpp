#include "Base/Displayable.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

using Base::displayable;
using Base::displayableLines;
using namespace std::string_literals;

std::string utf8(char32_t value) {
    const auto tail = [value](int shift) { return static_cast<char>(0x80U | ((value >> shift) & 0x3FU)); };
    if (value < 0x80) {
        return {static_cast<char>(value)};
    }
    if (value < 0x800) {
        return {static_cast<char>(0xC0U | (value >> 6U)), tail(0)};
    }
    if (value < 0x10000) {
        return {static_cast<char>(0xE0U | (value >> 12U)), tail(6), tail(0)};
    }
    return {static_cast<char>(0xF0U | (value >> 18U)), tail(12), tail(6), tail(0)};
}

bool isKept(char32_t value) {
    return displayable(utf8(value)) == utf8(value);
}

/// What an escaped text was.
std::string unescaped(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string digits = text.substr(i, 2) == "\\x" ? text.substr(i + 2, 2) : "";
        if (digits.size() == 2 && digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos) {
            result += static_cast<char>(std::stoi(digits, nullptr, 16));
            i += 3;
        } else {
            result += text[i];
        }
    }
    return result;
}

TEST(Displayable, KeepsOrdinaryNamesExactly) {
    for (const std::string name :
         {"", "/Applications/Sentrel.app", "/Users/Shared/a b  c", "Gr\xC3\xBC\xC3\x9F",
          "\xE3\x82\xA2\xE3\x83\xB3\xE3\x80\x80\xE3\x82\xA4", "\xF0\x9F\x98\x80", "e\xCC\x81",
          "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D", "\"quoted\" 'names' ~$%{}"}) {
        EXPECT_EQ(displayable(name), name);
        EXPECT_EQ(displayableLines(name), name);
    }
}

TEST(Displayable, EscapesEveryByteOfWhatCouldLeaveTheLineOrHide) {
    EXPECT_EQ(displayable("a\nb\r\t\x1B[31m\x7F\0"s), "a\\x0ab\\x0d\\x09\\x1b[31m\\x7f\\x00");
    EXPECT_EQ(displayable("\xC2\x85"), "\\xc2\\x85");
    EXPECT_EQ(displayable("a\xE2\x80\xAE"
                          "b\xE2\x80\xA8"),
              "a\\xe2\\x80\\xaeb\\xe2\\x80\\xa8");
    EXPECT_EQ(displayable("\xF3\xA0\x80\x81"), "\\xf3\\xa0\\x80\\x81");
}

TEST(Displayable, EscapesEachRangeFromItsFirstToItsLastCharacterAndNoNeighbour) {
    constexpr std::array<std::array<char32_t, 2>, 19> kHidden{{{0x00, 0x1F},
                                                               {0x7F, 0x9F},
                                                               {0xAD, 0xAD},
                                                               {0x034F, 0x034F},
                                                               {0x061C, 0x061C},
                                                               {0x115F, 0x1160},
                                                               {0x17B4, 0x17B5},
                                                               {0x180E, 0x180E},
                                                               {0x200B, 0x200F},
                                                               {0x2028, 0x202E},
                                                               {0x2060, 0x206F},
                                                               {0x3164, 0x3164},
                                                               {0xFEFF, 0xFEFF},
                                                               {0xFFA0, 0xFFA0},
                                                               {0xFFF0, 0xFFFB},
                                                               {0x1BCA0, 0x1BCA3},
                                                               {0x1D173, 0x1D17A},
                                                               {0xE0000, 0xE00FF},
                                                               {0xE01F0, 0xE0FFF}}};
    for (const auto& [first, last] : kHidden) {
        SCOPED_TRACE(static_cast<unsigned>(first));
        EXPECT_TRUE(first == 0 || isKept(first - 1));
        EXPECT_FALSE(isKept(first));
        EXPECT_FALSE(isKept(last));
        EXPECT_TRUE(isKept(last + 1));
    }
}

TEST(Displayable, EscapesInvalidUTF8ByteByByteAndKeepsTheRest) {
    EXPECT_EQ(displayable("a\xFF\xC3z"), "a\\xff\\xc3z");
    EXPECT_EQ(displayable("\xED\xA0\x80"), "\\xed\\xa0\\x80");
    EXPECT_EQ(displayable("\xC0\x8A"), "\\xc0\\x8a");
    EXPECT_EQ(displayable("\xE2\x98"), "\\xe2\\x98");
}

TEST(Displayable, EscapesABackslashOnlyWhereItWouldReadAsAnEscapedByte) {
    EXPECT_EQ(displayable("C:\\x"), "C:\\x");
    EXPECT_EQ(displayable("\\\\n\\xg0\\x0g\\X0a\\"), "\\\\n\\xg0\\x0g\\X0a\\");
    EXPECT_EQ(displayable("a\\x0ab"), "a\\x5cx0ab");
    EXPECT_EQ(displayable("\\xFF\\x9f"), "\\x5cxFF\\x5cx9f");
    EXPECT_EQ(displayable("\\\\xaf"), "\\\\x5cxaf");
}

TEST(Displayable, EscapesABackslashBeforeHexadecimalDigitsOnly) {
    const std::string digits = "0123456789abcdefABCDEF";
    for (char c = ' '; c <= '~'; ++c) {
        const bool isDigit = digits.find(c) != std::string::npos;
        for (const std::string& two : {std::string{c, '0'}, std::string{'0', c}}) {
            EXPECT_EQ(displayable("\\x" + two), (isDigit ? "\\x5cx" : "\\x") + two);
        }
    }
}

TEST(Displayable, SaysExactlyWhatTheTextWas) {
    for (const std::string& text : {"\n"s, "\\x0a"s, "\\x5cx0a"s, "\\\\x0a\n"s, "\\x\x01"s, "\\x0\x01"s,
                                    "\\\n"s, "\xFF\\xff"s, "\\x5c\\x5c"s, "x0a\\"s}) {
        EXPECT_EQ(unescaped(displayable(text)), text);
        EXPECT_EQ(unescaped(displayableLines(text)), text);
    }
}

TEST(DisplayableLines, KeepsLineFeedsAndTabsAndNothingElse) {
    EXPECT_EQ(displayableLines("a\n\tb\r\n\v\x1B\\x0a"), "a\n\tb\\x0d\n\\x0b\\x1b\\x5cx0a");
}

}  // namespace
