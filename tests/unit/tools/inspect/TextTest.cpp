// The small texts: suggestions, sizes, wrapped paragraphs, colours.

#include <gtest/gtest.h>

#include "DisplayText.h"
#include "HelpText.h"
#include "ItemText.h"
#include "Suggestion.h"
#include "Terminal.h"

namespace {

using Inspect::sizeText;
using Inspect::wrapped;
using Tools::didYouMean;
using Tools::nearestWord;
using Words = std::vector<std::string>;

TEST(NearestWord, CountsLettersAddedLeftOutChangedAndSwapped) {
    const Words words{"--json", "--root", "--all"};
    for (const char* word : {"--json", "--jsno", "--jso", "--jsonn", "--json5", "-json", "--jxxn"}) {
        EXPECT_EQ(nearestWord(word, words), "--json") << word;
    }
    EXPECT_EQ(nearestWord("--rot", words), "--root");
    EXPECT_EQ(nearestWord("--something", words), std::nullopt);
    EXPECT_EQ(nearestWord("", words), std::nullopt);
    EXPECT_EQ(nearestWord("--json", {}), std::nullopt);
}

TEST(NearestWord, TakesTheNearestAndOfSeveralTheFirst) {
    EXPECT_EQ(nearestWord("scam", {"scab", "scan"}), "scab");
    EXPECT_EQ(nearestWord("plann", {"plants", "plan"}), "plan");
    EXPECT_EQ(nearestWord("ab", {"xy"}), std::nullopt);
    EXPECT_EQ(nearestWord("a", {"b"}), "b");
    // A third of the letters may be wrong, not more.
    EXPECT_EQ(nearestWord("abcdef", {"abcdxy"}), "abcdxy");
    EXPECT_EQ(nearestWord("abcdef", {"abcxyz"}), std::nullopt);
    EXPECT_EQ(nearestWord(std::string(64, 'a'), {std::string(64, 'a')}), std::string(64, 'a'));
    EXPECT_EQ(nearestWord(std::string(65, 'a'), {std::string(65, 'a')}), std::nullopt);
}

TEST(NearestWord, TakesTwoSwappedLettersForOneMistake) {
    EXPECT_EQ(nearestWord("ba", {"ab"}), "ab");
    EXPECT_EQ(nearestWord("ab", {"ba", "ab"}), "ab");
    EXPECT_EQ(nearestWord("xab", {"xba"}), "xba");
    // Only one of them is where the other one was.
    EXPECT_EQ(nearestWord("xy", {"yz"}), std::nullopt);
    EXPECT_EQ(nearestWord("xy", {"zx"}), std::nullopt);
    // Two such pairs, and letters that are not neighbours.
    EXPECT_EQ(nearestWord("badc", {"abcd"}), std::nullopt);
    EXPECT_EQ(nearestWord("cba", {"abc"}), std::nullopt);
}

TEST(DidYouMean, IsAQuestionOrNothing) {
    EXPECT_EQ(didYouMean("vreify", {"scan", "verify"}), ": did you mean verify?");
    EXPECT_EQ(didYouMean("bogus", {"scan", "verify"}), "");
}

TEST(SizeText, CountsInThousandsAndRoundsDown) {
    const std::vector<std::pair<std::uint64_t, std::string>> expected{{0, "0 B"},
                                                                      {999, "999 B"},
                                                                      {1000, "1.0 kB"},
                                                                      {1099, "1.0 kB"},
                                                                      {1100, "1.1 kB"},
                                                                      {999'999, "999.9 kB"},
                                                                      {1'000'000, "1.0 MB"},
                                                                      {12'345'678, "12.3 MB"},
                                                                      {1'000'000'000, "1.0 GB"},
                                                                      {UINT64_MAX, "18.4 EB"}};
    for (const auto& [bytes, text] : expected) {
        EXPECT_EQ(sizeText(bytes), text) << bytes;
    }
}

TEST(Wrapped, BreaksBetweenWords) {
    EXPECT_EQ(wrapped("one two three", 8, 0), "one two\nthree\n");
    EXPECT_EQ(wrapped("one two three", 7, 0), "one two\nthree\n");
    EXPECT_EQ(wrapped("one two three", 6, 0), "one\ntwo\nthree\n");
    EXPECT_EQ(wrapped("one two", 9, 2), "  one two\n");
    EXPECT_EQ(wrapped("one two", 8, 2), "  one\n  two\n");
    EXPECT_EQ(wrapped("unbreakable", 4, 1), " unbreakable\n");
    EXPECT_EQ(wrapped("", 10, 0), "");
}

TEST(Wrapped, KeepsLinesAndFinishedLayout) {
    EXPECT_EQ(wrapped("Lists:\n  a        b c d e f g h i", 12, 1), " Lists:\n   a        b c d e f g h i\n");
}

std::string folded(const std::string& line, std::size_t indent, std::size_t width) {
    std::string text = "before\n";
    Inspect::appendFolded(text, line, indent, width);
    return text.substr(7);
}

TEST(Folded, BreaksBehindASlashOrABlank) {
    EXPECT_EQ(folded("/one/two/three", 2, 16), "  /one/two/three\n");
    EXPECT_EQ(folded("/one/two/three", 2, 15), "  /one/two/\n      three\n");
    EXPECT_EQ(folded("/one/two/three", 2, 11), "  /one/two/\n      three\n");
    EXPECT_EQ(folded("/one/two/three", 2, 10), "  /one/\n      two/\n      three\n");
    EXPECT_EQ(folded("one two", 0, 5), "one\n    two\n");
    EXPECT_EQ(folded("one two", 0, 4), "one\n    two\n");
}

TEST(Folded, LeavesWhatCannotBeBroken) {
    EXPECT_EQ(folded("unbreakable", 2, 5), "  unbreakable\n");
    EXPECT_EQ(folded("unbreakable/", 2, 5), "  unbreakable/\n");
    EXPECT_EQ(folded("ab/cd", 10, 5), "          ab/cd\n");
    EXPECT_EQ(folded("", 2, 5), "\n");
}

TEST(ItemKind, HasAName) {
    using enum Platform::ItemKind;
    EXPECT_STREQ(Inspect::nameOf(file), "file");
    EXPECT_STREQ(Inspect::nameOf(folder), "folder");
    EXPECT_STREQ(Inspect::nameOf(link), "link");
    EXPECT_STREQ(Inspect::nameOf(other), "other");
}

TEST(DisplayText, StandsForAnEmptyProperty) {
    EXPECT_EQ(Inspect::shown(std::optional<std::string>()), "(none)");
    EXPECT_EQ(Inspect::shown(std::optional<std::string>("a\x1b")), "a\\x1b");
    EXPECT_EQ(Inspect::shown(std::optional<std::string>("")), "");
}

TEST(DisplayText, CountsCharacters) {
    EXPECT_EQ(Inspect::columnsOf(""), 0U);
    EXPECT_EQ(Inspect::columnsOf("a\u00e9\u2713"), 3U);
}

TEST(DisplayText, FillsACellAndTwoColumnsMore) {
    const auto cell = [](std::string_view text, std::size_t width) {
        std::string line = ">";
        Inspect::appendCell(line, text, width);
        return line + "<";
    };
    EXPECT_EQ(cell("ab", 0), ">ab  <");
    EXPECT_EQ(cell("ab", 2), ">ab  <");
    EXPECT_EQ(cell("ab", 3), ">ab   <");
    EXPECT_EQ(cell("\u00e9", 3), ">\u00e9    <");
}

TEST(DisplayText, EndsALineWithItsLastCharacter) {
    std::string text = "before ";
    for (const char* line : {"one  ", "  two", "", "   ", "x"}) {
        Inspect::appendLine(text, line);
    }
    EXPECT_EQ(text, "before one\n  two\n\n\nx\n");
}

TEST(Coloured, WrapsTextInCodesOrLeavesIt) {
    EXPECT_EQ(Inspect::coloured("x", Inspect::Colour::good, true), "\x1b[32mx\x1b[0m");
    EXPECT_EQ(Inspect::coloured("x", Inspect::Colour::warning, true), "\x1b[33mx\x1b[0m");
    EXPECT_EQ(Inspect::coloured("x", Inspect::Colour::bad, true), "\x1b[31mx\x1b[0m");
    EXPECT_EQ(Inspect::coloured("x", Inspect::Colour::bad, false), "x");
}

}  // namespace
