#include "inspect/explain/LogLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Inspect::entryFromJson;
using Inspect::entryFromLine;
using Inspect::LogEntry;

const std::string kTime = "1970-01-01 00:00:09";

/// The entry of a line that begins with kTime.
LogEntry entry(const std::string& program, int pid, const std::string& text) {
    return {kTime, 9, program, pid, text, 0};
}

TEST(LogLine, OfTheSystemsFile) {
    EXPECT_EQ(entryFromLine("Jan  1 00:00:09 Mac Uninstall Sentrel[18]: a text: with all"),
              (LogEntry{"Jan  1 00:00:09", 946684809, "Uninstall Sentrel", 18, "a text: with all", 0}));
    EXPECT_EQ(entryFromLine("Jan  1 00:00:09 Mac x[18]: "),
              (LogEntry{"Jan  1 00:00:09", 946684809, "x", 18, "", 0}));
    EXPECT_EQ(entryFromLine("Jan  1 00:00:09 Mac x[18:1b2c]: text"),
              (LogEntry{"Jan  1 00:00:09", 946684809, "x", 18, "text", 0}));
}

TEST(LogLine, InTheStyleOfSyslog) {
    EXPECT_EQ(entryFromLine(kTime + "  localhost Uninstall Sentrel[18]: (Foundation) text"),
              entry("Uninstall Sentrel", 18, "text"));
}

TEST(LogLine, InTheUsualStyle) {
    EXPECT_EQ(
        entryFromLine(kTime + " 0x1b2c     Default     0x0     18     0    Uninstall Sentrel: text: all"),
        entry("Uninstall Sentrel", 18, "text: all"));
}

TEST(LogLine, InTheCompactStyle) {
    EXPECT_EQ(entryFromLine(kTime + " Df Uninstall Sentrel[18:1b2c] (Foundation) text"),
              entry("Uninstall Sentrel", 18, "text"));
    for (const char* type : {"A", "D", "Db", "Df", "E", "F", "I", "In", "L", "N", "St", "To", "Ti"}) {
        EXPECT_EQ(entryFromLine(kTime + " " + type + " x[1:2] text"), entry("x", 1, "text")) << type;
    }
}

TEST(LogLine, OnStandardError) {
    EXPECT_EQ(entryFromLine(kTime + " Uninstall Sentrel[18:1b2c] text"),
              entry("Uninstall Sentrel", 18, "text"));
    // No type: part of the program's name.
    for (const char* word : {"Dx", "Def", "D Db", "f", "d"}) {
        EXPECT_EQ(entryFromLine(kTime + " " + word + " x[1] text"),
                  entry(std::string(word) == "D Db" ? "Db x" : std::string(word) + " x", 1, "text"))
            << word;
    }
    EXPECT_EQ(entryFromLine(kTime + " D[1] text"), entry("D", 1, "text"));
}

TEST(LogLine, KeepsTheTimeAsItIsWritten) {
    const std::string time = "1970-01-01 00:00:09.500000+0000";
    EXPECT_EQ(entryFromLine(time + "   localhost x[18]: text"), (LogEntry{time, 9.5, "x", 18, "text", 0}));
}

TEST(LogLine, DropsTheSenderAndTheCategory) {
    const auto textOf = [](const std::string& text) {
        return entryFromLine(kTime + " x[1] " + text).value_or(LogEntry()).text;
    };
    EXPECT_EQ(textOf("(Foundation) text"), "text");
    EXPECT_EQ(textOf("[com.norvik:helper] text"), "text");
    EXPECT_EQ(textOf("(Foundation) [com.norvik:helper] text"), "text");
    EXPECT_EQ(textOf("[com.norvik:helper] (Foundation) text"), "(Foundation) text");
    // Words of the text itself.
    for (const char* text :
         {"(two words) text", "(Foundation)text", "(Foundation", "[SNTM Installer] text",
          "[SNTM Installer]\ntext", "[SNTM Installer] it: [a] text", "[helper] text", "[a b:c] text",
          "[com.norvik:helper]text", "[com.norvik:helper", "a (Foundation) text", "a [b:c] text"}) {
        EXPECT_EQ(textOf(text), text);
    }
}

TEST(LogLine, IsNothingElse) {
    for (const char* rest : {"",
                             " ",
                             " x",
                             " x[",
                             " x[a] text",
                             " x[] text",
                             " [1] text",
                             " x[1]text",
                             " x[1",
                             " x[1:2",
                             " x[1:2text",
                             " a: x[1] text",
                             "x[1] text",
                             " localhost x[1]:text",
                             " localhost  [1]: text",
                             " 0x1 Default 0x0 18 0 : text",
                             " 0x1 Default 0x0 18 0 x",
                             " 0x1 Default 0x0 18 0x: text",
                             " 0x1 Default 0x0 18 x: text",
                             " 0x1 Default 0x0 x 0 x: text",
                             " 0x1 Default 0x0 180: text",
                             " 0x1 Default 18 0 x: text",
                             " 0x1 Default 0x0",
                             " 0x1 Default",
                             " 0x1 ",
                             " 0x1",
                             " 1 Default 0x0 18 0 x: text",
                             " 0x1 Default 1 18 0 x: text"}) {
        EXPECT_EQ(entryFromLine(kTime + rest), std::nullopt) << rest;
    }
    for (const char* line : {"", "text", "x[1] text", "Jan  1 00:00:09", "Jan  1 00:00:09 Mac x[1] text",
                             "Jan  1 00:00:09 x[1]: text", "Jan  1 00:00:09 Df x[1:2] text"}) {
        EXPECT_EQ(entryFromLine(line), std::nullopt) << line;
    }
}

TEST(LogObject, BecomesAnEntry) {
    EXPECT_EQ(entryFromJson(R"({"timestamp": "1970-01-01 00:00:09.5+0000", "processID": 18, "more": [1],
                                "processImagePath": "/a/b/Uninstall Sentrel", "eventMessage": "text\n2"})"),
              (LogEntry{"1970-01-01 00:00:09.5+0000", 9.5, "Uninstall Sentrel", 18, "text\n2", 0}));
    EXPECT_EQ(entryFromJson(R"({"processID": 18, "processImagePath": "x", "eventMessage": "(a) text"})"),
              (LogEntry{"", std::nullopt, "x", 18, "(a) text", 0}));
}

TEST(LogObject, NeedsMessageProgramAndProcess) {
    for (const char* object :
         {"", "{", "[]", "null", "18", "{}", R"({"processID": 18, "processImagePath": "/a/x"})",
          R"({"processID": 18, "processImagePath": "/a/x", "eventMessage": ""})",
          R"({"processID": 18, "processImagePath": "/a/x", "eventMessage": 5})",
          R"({"processID": 18, "processImagePath": "/a/", "eventMessage": "text"})",
          R"({"processID": 18, "eventMessage": "text"})",
          R"({"processID": "18", "processImagePath": "/a/x", "eventMessage": "text"})",
          R"({"processID": 1.5, "processImagePath": "/a/x", "eventMessage": "text"})",
          R"({"processImagePath": "/a/x", "eventMessage": "text"})"}) {
        EXPECT_EQ(entryFromJson(object), std::nullopt) << object;
    }
}

}  // namespace
