#include "Base/URL.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Base::URL;

std::string parsed(std::string_view text) {
    const auto url = URL::parse(text);
    return url ? url->path() : "nothing";
}

std::string resolved(std::string_view relative, std::string_view base, bool baseIsFolder) {
    const auto url = URL::parse(relative, URL::fileURL(base), baseIsFolder);
    return url ? url->path() : "nothing";
}

TEST(URL, KeepsAnAbsolutePath) {
    EXPECT_EQ(URL::fileURL("/Library/Extensions").path(), "/Library/Extensions");
}

TEST(URL, DropsTrailingSlashesOnly) {
    EXPECT_EQ(URL::fileURL("/a//b///").path(), "/a//b");
    EXPECT_EQ(URL::fileURL("///").path(), "/");
}

TEST(URL, MakesTheRootOfAnEmptyPath) {
    EXPECT_EQ(URL::fileURL("").path(), "/");
}

TEST(URL, TakesARelativePathBelowTheRoot) {
    EXPECT_EQ(URL::fileURL("a/b").path(), "/a/b");
}

TEST(URL, ComparesByPath) {
    EXPECT_EQ(URL::fileURL("/a/"), URL::fileURL("/a"));
    EXPECT_NE(URL::fileURL("/a"), URL::fileURL("/A"));
}

TEST(URL, EscapesInItsTextWhatAPathMayNotHold) {
    EXPECT_EQ(URL::fileURL("/Library/Application Support").absoluteString(),
              "file:///Library/Application%20Support");
    EXPECT_EQ(URL::fileURL("/B\xC3\xBCro").absoluteString(), "file:///B%C3%BCro");
    EXPECT_EQ(URL::fileURL("/100%").absoluteString(), "file:///100%25");
    EXPECT_EQ(URL::fileURL("/").absoluteString(), "file:///");
}

TEST(URL, EscapesExactlyTheBytesThatAreNotLiteral) {
    const std::string literal =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,=:@/";
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (unsigned byte = 1; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const bool isLiteral = literal.find(c) != std::string::npos;
        const std::string expected =
            isLiteral ? std::string(1, c) : std::string{'%', kDigits[byte >> 4], kDigits[byte & 15]};
        // Alone, and inside a run that is escaped in larger steps.
        EXPECT_EQ(URL::fileURL(std::string("/x") + c + "y").absoluteString(), "file:///x" + expected + "y");
        const std::string run(40, 'n');
        std::string path = "/" + run;
        path += c;
        path += run;
        std::string text = "file:///" + run;
        text += expected;
        text += run;
        EXPECT_EQ(URL::fileURL(path).absoluteString(), text);
    }
}

TEST(URL, ReadsItsOwnTextBack) {
    for (std::size_t length = 0; length < 70; ++length) {
        for (const char c : {' ', '%', ';', '.', 'a', '\xC3', '?', '#'}) {
            const std::string path = '/' + std::string(length, 'x') + c + "tail of the path";
            const auto url = URL::parse(URL::fileURL(path).absoluteString());
            ASSERT_TRUE(url) << path;
            EXPECT_EQ(url->path(), path);
        }
    }
}

TEST(URL, ReadsSchemeAndLocalHostInAnyCase) {
    EXPECT_EQ(parsed("file:///a/b"), "/a/b");
    EXPECT_EQ(parsed("FILE:///a"), "/a");
    EXPECT_EQ(parsed("file://localhost/a"), "/a");
    EXPECT_EQ(parsed("file://LocalHost/a"), "/a");
    EXPECT_EQ(parsed("file:/a"), "/a");
}

TEST(URL, RefusesOtherSchemesAndHosts) {
    for (const char* text :
         {"http:///a", "files:///a", "fil", "", "/a", "file", "file:", "file://", "file://host/a",
          "file://localhost", "file://localhos/a", "file:a", "x-file:///a"}) {
        EXPECT_EQ(parsed(text), "nothing") << text;
    }
}

TEST(URL, DropsATrailingSlashOfTheText) {
    EXPECT_EQ(parsed("file:///Applications/A.app/"), "/Applications/A.app");
    EXPECT_EQ(parsed("file:///"), "/");
    EXPECT_EQ(parsed("file:////"), "/");
}

TEST(URL, DecodesEscapesInBothCases) {
    EXPECT_EQ(parsed("file:///a%20b%3bc%3Bd"), "/a b;c;d");
    EXPECT_EQ(parsed("file:///%C3%bc"), "/\xC3\xBC");
    EXPECT_EQ(parsed("file:///a%2Fb"), "/a/b");
}

TEST(URL, RefusesBrokenEscapes) {
    for (const char* text : {"file:///%", "file:///%2", "file:///%G0", "file:///%0G", "file:///a%2",
                             "file:///%%20", "file:///0123456789abcdef0123456789%4"}) {
        EXPECT_EQ(parsed(text), "nothing") << text;
    }
}

TEST(URL, RefusesNULsWrittenPlainlyOrEscaped) {
    EXPECT_EQ(parsed("file:///a%00"), "nothing");
    EXPECT_EQ(parsed(std::string_view("file:///a\0b", 11)), "nothing");
    EXPECT_EQ(parsed(std::string("file:///0123456789abcdef") + '\0' + "0123456789"), "nothing");
}

TEST(URL, RefusesQueriesAndFragments) {
    for (const char* text :
         {"file:///a?b", "file:///a#b", "file:///a?", "file:///#", "file:///0123456789abcdef?0123456789"}) {
        EXPECT_EQ(parsed(text), "nothing") << text;
    }
}

TEST(URL, RefusesDotComponentsHoweverTheyAreWritten) {
    for (const char* text :
         {"file:///.", "file:///..", "file:///a/./b", "file:///a/../b", "file:///a/..", "file:///a/%2e%2E/b",
          "file:///a%2F../b", "file:///a/.%2e", "file:///a/%2e", "file:///a/..%2Fb", "file:///../",
          "file:///Applications/Sentrel.app/../../etc/passwd"}) {
        EXPECT_EQ(parsed(text), "nothing") << text;
    }
}

TEST(URL, KeepsComponentsThatOnlyBeginOrEndWithDots) {
    EXPECT_EQ(parsed("file:///.hidden/..a/b../c.d/..."), "/.hidden/..a/b../c.d/...");
    EXPECT_EQ(parsed("file:///%2Ehidden"), "/.hidden");
}

TEST(URL, ResolvesARelativeTextInAFolder) {
    EXPECT_EQ(resolved("c", "/a/b", true), "/a/b/c");
    EXPECT_EQ(resolved("c%20d/", "/a/b", true), "/a/b/c d");
    EXPECT_EQ(resolved("c", "/", true), "/c");
}

TEST(URL, ReplacesTheLastComponentOfABaseThatIsNotAFolder) {
    EXPECT_EQ(resolved("c", "/a/b", false), "/a/c");
    EXPECT_EQ(resolved("c/d", "/b", false), "/c/d");
}

TEST(URL, TakesAnAbsoluteTextInsteadOfTheBase) {
    EXPECT_EQ(resolved("/x", "/a/b", true), "/x");
    EXPECT_EQ(resolved("file:///x", "/a/b", true), "/x");
    EXPECT_EQ(resolved("//localhost/x", "/a/b", true), "/x");
}

TEST(URL, TakesTheBaseForAnEmptyText) {
    EXPECT_EQ(resolved("", "/a/b", false), "/a/b");
}

TEST(URL, RefusesARelativeTextThatLeavesItsBase) {
    for (const char* text :
         {"..", "../x", "a/../../x", "%2e%2e/x", ".", "http://x/", "x:y", "//host/x", "a?b", "a#b", "a%"}) {
        EXPECT_EQ(resolved(text, "/a/b", true), "nothing") << text;
    }
}

// A scheme is a letter and then letters, digits, "+", "-" and "."; any other text before a colon is a name.
TEST(URL, TakesOnlyASchemeForOne) {
    for (int byte = 1; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        const bool mayFollow = isLetter || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
        const bool isSeparator = c == '/' || c == '?' || c == '#' || c == '%' || c == ':';
        if (!isSeparator) {
            const std::string first = std::string(1, c) + ":y";
            EXPECT_EQ(resolved(first, "/a", true), isLetter ? "nothing" : "/a/" + first) << byte;
            const std::string second = "x" + first;
            EXPECT_EQ(resolved(second, "/a", true), mayFollow ? "nothing" : "/a/" + second) << byte;
        }
    }
}

TEST(URL, NamesItsLastComponent) {
    EXPECT_EQ(URL::fileURL("/a/b.c").lastPathComponent(), "b.c");
    EXPECT_EQ(URL::fileURL("/").lastPathComponent(), "/");
}

TEST(URL, AppendsAComponentAfterExactlyOneSlash) {
    EXPECT_EQ(URL::fileURL("/a").appendingPathComponent("b").path(), "/a/b");
    EXPECT_EQ(URL::fileURL("/").appendingPathComponent("b").path(), "/b");
    EXPECT_EQ(URL::fileURL("/a").appendingPathComponent("//b/").path(), "/a/b");
    EXPECT_EQ(URL::fileURL("/a").appendingPathComponent("").path(), "/a");
}

TEST(URL, MirrorsAWholePathBelowItself) {
    EXPECT_EQ(URL::fileURL("/Repair").appendingPathComponent("/Applications/A.app").path(),
              "/Repair/Applications/A.app");
}

TEST(URL, AppendsAnExtension) {
    EXPECT_EQ(URL::fileURL("/a/b").appendingPathExtension("plist").path(), "/a/b.plist");
    EXPECT_EQ(URL::fileURL("/a/b.c").appendingPathExtension("d").path(), "/a/b.c.d");
}

TEST(URL, NamesItsParent) {
    EXPECT_EQ(URL::fileURL("/a/b").deletingLastPathComponent().path(), "/a");
    EXPECT_EQ(URL::fileURL("/a//b").deletingLastPathComponent().path(), "/a");
    EXPECT_EQ(URL::fileURL("/a").deletingLastPathComponent().path(), "/");
    EXPECT_EQ(URL::fileURL("/").deletingLastPathComponent().path(), "/");
}

}  // namespace
