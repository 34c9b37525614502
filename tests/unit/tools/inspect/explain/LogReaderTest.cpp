#include "inspect/explain/LogReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using Inspect::LogEntry;
using Inspect::LogReader;

constexpr std::size_t kLongest = LogReader::kLongestEntry;
const std::string kEntryTime = "1970-01-01 00:00:09";

std::string lineOf(const std::string& text) {
    return kEntryTime + " x[1] " + text;
}

LogEntry entryOf(const std::string& text, std::size_t line) {
    return {kEntryTime, 9, "x", 1, text, line};
}

std::string objectOf(const std::string& text) {
    return R"({"timestamp": ")" + kEntryTime +
           R"(", "processID": 1, "processImagePath": "/x", "eventMessage": ")" + text + "\"}";
}

struct ReadLog {
    std::vector<LogEntry> entries;
    std::size_t count = 0;
    bool endsInTheMiddle = false;

    friend bool operator==(const ReadLog&, const ReadLog&) = default;
};

/// Reads a log from a source that gives so many bytes at once.
ReadLog readLog(const std::string& log, std::size_t atOnce = 1 << 20) {
    std::size_t position = 0;
    LogReader reader([&](char* buffer, std::size_t size) {
        const std::size_t count = std::min({size, atOnce, log.size() - position});
        std::copy_n(log.data() + position, count, buffer);
        position += count;
        return count;
    });
    ReadLog result;
    while (const std::optional<LogEntry> next = reader.next()) {
        result.entries.push_back(*next);
    }
    result.count = reader.entries();
    result.endsInTheMiddle = reader.endsInTheMiddle();
    return result;
}

TEST(LogReader, ReadsLinesWhateverComesAtOnce) {
    const std::string log = "a heading\n\n" + lineOf("one") + "\n" + lineOf("two") + "\n\tmore\n\nend\n" +
                            lineOf("three") + "\n" + lineOf("");
    const ReadLog expected{
        {entryOf("one", 3), entryOf("two\n\tmore\n\nend", 4), entryOf("three", 8), entryOf("", 9)}, 4, false};
    for (std::size_t atOnce = 1; atOnce <= log.size(); ++atOnce) {
        ASSERT_EQ(readLog(log, atOnce), expected) << atOnce;
    }
}

TEST(LogReader, ReadsObjectsWhateverComesAtOnce) {
    for (const std::string& log :
         {"[" + objectOf("one") + ",\n" + objectOf(R"(a \"{\\)") + "," + objectOf("}") + "]\n",
          objectOf("one") + "\n" + objectOf(R"(a \"{\\)") + "\n" + objectOf("}")}) {
        for (std::size_t atOnce = 1; atOnce <= log.size(); ++atOnce) {
            const ReadLog read = readLog(log, atOnce);
            ASSERT_EQ(read.count, 3U) << atOnce;
            EXPECT_EQ(read.entries[0], entryOf("one", 1));
            EXPECT_EQ(read.entries[1], entryOf("a \"{\\", 2));
            EXPECT_EQ(read.entries[2].text, "}");
            EXPECT_FALSE(read.endsInTheMiddle);
        }
    }
}

TEST(LogReader, CountsTheLinesBeforeAndInsideOfObjects) {
    EXPECT_EQ(readLog(" \t\r\n\n{\n" + objectOf("inner") + "}\n" + objectOf("outer") + "\n"),
              (ReadLog{{entryOf("outer", 5)}, 1, false}));
    // The text between the objects is no part of them.
    EXPECT_EQ(readLog("[ \"}\\\" " + objectOf("one") + " } \" ] " + objectOf("two")),
              (ReadLog{{entryOf("one", 1), entryOf("two", 1)}, 2, false}));
}

TEST(LogReader, PassesOverObjectsThatAreNoEntries) {
    EXPECT_EQ(readLog("{}\n{\"a\": {\"b\": {}}}\n" + objectOf("one")),
              (ReadLog{{entryOf("one", 3)}, 1, false}));
}

TEST(LogReader, KnowsAnObjectThatIsCutOff) {
    const std::string log = objectOf("one");
    for (std::size_t size = 1; size < log.size(); ++size) {
        EXPECT_EQ(readLog(log.substr(0, size)), (ReadLog{{}, 0, true})) << size;
    }
    EXPECT_EQ(readLog(log + "\n["), (ReadLog{{entryOf("one", 1)}, 1, false}));
    EXPECT_EQ(readLog("["), (ReadLog{{}, 0, false}));
}

TEST(LogReader, FindsNothingInAnEmptyLog) {
    for (const char* log : {"", " ", "\n\n", "text", "text\n"}) {
        EXPECT_EQ(readLog(log), ReadLog()) << log;
    }
}

TEST(LogReader, TakesALogForLinesThatDoesNotBeginWithAnObject) {
    EXPECT_EQ(readLog("\n " + objectOf("one").substr(1) + "\n" + lineOf("two")),
              (ReadLog{{entryOf("two", 3)}, 1, false}));
}

TEST(LogReader, KeepsTheBeginningOfALongLine) {
    const std::string start = lineOf("");
    const std::string fits = std::string(kLongest - start.size(), 'a');
    EXPECT_EQ(readLog(start + fits + "\n" + lineOf("next")),
              (ReadLog{{entryOf(fits, 1), entryOf("next", 2)}, 2, false}));
    EXPECT_EQ(readLog(start + fits + std::string(3 * kLongest, 'b') + "\n" + lineOf("next")),
              (ReadLog{{entryOf(fits, 1), entryOf("next", 2)}, 2, false}));
}

TEST(LogReader, AddsALineToAnEntryIfItFits) {
    const std::string text(100, 'a');
    const std::string fits(kLongest - text.size() - 1, 'b');
    EXPECT_EQ(readLog(lineOf(text) + "\n" + fits + "\n"),
              (ReadLog{{entryOf(text + "\n" + fits, 1)}, 1, false}));
    EXPECT_EQ(readLog(lineOf(text) + "\n" + fits + "b\nc\n"),
              (ReadLog{{entryOf(text + "\nc", 1)}, 1, false}));
}

TEST(LogReader, PassesOverAnObjectThatIsTooLong) {
    const std::string empty = objectOf("");
    const std::string fits = std::string(kLongest - empty.size(), 'a');
    EXPECT_EQ(readLog(objectOf(fits) + objectOf("next")),
              (ReadLog{{entryOf(fits, 1), entryOf("next", 1)}, 2, false}));
    EXPECT_EQ(readLog(objectOf(fits + "a") + objectOf("next")), (ReadLog{{entryOf("next", 1)}, 1, false}));
}

}  // namespace
