#include "inspect/explain/LogTime.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using Inspect::LineCursor;

constexpr double kDay = 86400;

/// The time at the front of a text, and what is left behind it.
std::pair<std::optional<double>, std::string> taken(const std::string& text) {
    LineCursor cursor(text);
    const std::optional<double> seconds = Inspect::takeTimestamp(cursor);
    return {seconds, std::string(cursor.rest())};
}

std::pair<std::optional<double>, std::string> takenShort(const std::string& text) {
    LineCursor cursor(text);
    const std::optional<double> seconds = Inspect::takeShortTimestamp(cursor);
    return {seconds, std::string(cursor.rest())};
}

using Taken = std::pair<std::optional<double>, std::string>;

TEST(Timestamp, CountsSecondsSinceTheEpoch) {
    const std::vector<std::pair<std::string, double>> expected{
        {"1970-01-01 00:00:00", 0},          {"1969-12-31 23:59:58", -2},
        {"1970-01-01 01:02:03", 3723},       {"1900-03-01 00:00:00", -2203891200},
        {"1999-12-31 00:00:00", 946598400},  {"2000-02-29 23:59:59", 951868799},
        {"2026-11-21 10:03:49", 1795255429}, {"2100-03-01 00:00:00", 4107542400},
        {"2400-12-31 12:00:00", 13601044800}};
    for (const auto& [text, seconds] : expected) {
        EXPECT_EQ(taken(text), (Taken{seconds, ""})) << text;
    }
}

TEST(Timestamp, KnowsTheLengthOfEveryMonth) {
    const std::vector<int> firsts{11323, 11354, 11382, 11413, 11443, 11474,
                                  11504, 11535, 11566, 11596, 11627, 11657};
    for (std::size_t month = 1; month <= firsts.size(); ++month) {
        const std::string text = (month < 10 ? "2001-0" : "2001-") + std::to_string(month) + "-01 00:00:00";
        EXPECT_EQ(taken(text).first, firsts[month - 1] * kDay) << text;
    }
}

TEST(Timestamp, MayHaveAFraction) {
    EXPECT_EQ(taken("1970-01-01 00:00:01.5 x"), (Taken{1.5, " x"}));
    EXPECT_EQ(taken("1970-01-01 00:00:01.25"), (Taken{1.25, ""}));
    EXPECT_EQ(taken("1970-01-01 00:00:01.0625"), (Taken{1.0625, ""}));
    EXPECT_EQ(taken("1970-01-01 00:00:01."), (Taken{1, ""}));
    EXPECT_EQ(taken("1970-01-01 00:00:01,5"), (Taken{1, ",5"}));
}

TEST(Timestamp, MayHaveAZone) {
    EXPECT_EQ(taken("1970-01-01 03:00:00+0130 x"), (Taken{5400, " x"}));
    EXPECT_EQ(taken("1970-01-01 03:00:00-0130 x"), (Taken{16200, " x"}));
    EXPECT_EQ(taken("1970-01-01 03:00:00+0100"), (Taken{7200, ""}));
    EXPECT_EQ(taken("1970-01-01 03:00:00-9900"), (Taken{102 * 3600, ""}));
    EXPECT_EQ(taken("1970-01-01 03:00:00.5+1245"), (Taken{-35099.5, ""}));
    EXPECT_EQ(taken("1970-01-01 03:00:00+01:30"), (Taken{10800, "01:30"}));
}

TEST(Timestamp, MayHaveATBeforeTheTime) {
    EXPECT_EQ(taken("1970-01-02T00:00:00Z"), (Taken{kDay, "Z"}));
    EXPECT_EQ(taken("1970-01-02t00:00:00").first, std::nullopt);
}

TEST(Timestamp, IsNothingElse) {
    for (const char* text : {"",
                             "x",
                             "2026",
                             "2026-",
                             "2026-11",
                             "2026-11-",
                             "2026-11-21",
                             "2026-11-21 ",
                             "2026-11-21 10",
                             "2026-11-21 10:",
                             "2026-11-21 10:03",
                             "2026-11-21 10:03:",
                             "26-11-21 10:03:49",
                             "12026-11-21 10:03:49",
                             "2026-1-21 10:03:49",
                             "2026-11-1 10:03:49",
                             "2026-11-21 1:03:49",
                             "2026-11-21 10:3:49",
                             "2026-11-21 10:03:9",
                             "2026/11-21 10:03:49",
                             "2026-11/21 10:03:49",
                             "2026-11-21_10:03:49",
                             "2026-11-21 10.03:49",
                             "2026-11-21 10:03.49",
                             "2026-11-21 10:03:499"}) {
        EXPECT_EQ(taken(text).first, std::nullopt) << text;
    }
}

TEST(ShortTimestamp, CountsAsInALeapYear) {
    const std::vector<std::pair<std::string, int>> firsts{
        {"Jan", 10957}, {"Feb", 10988}, {"Mar", 11017}, {"Apr", 11048}, {"May", 11078}, {"Jun", 11109},
        {"Jul", 11139}, {"Aug", 11170}, {"Sep", 11201}, {"Oct", 11231}, {"Nov", 11262}, {"Dec", 11292}};
    for (const auto& [month, days] : firsts) {
        EXPECT_EQ(takenShort(month + "  1 00:00:00 Mac"), (Taken{days * kDay, " Mac"})) << month;
    }
    EXPECT_EQ(takenShort("Nov 21 10:03:49 Mac"), (Taken{974801029, " Mac"}));
    EXPECT_EQ(takenShort("Feb 29 00:00:00"), (Taken{11016 * kDay, ""}));
}

TEST(ShortTimestamp, IsNothingElse) {
    for (const char* text : {"", "Nov", "Nov ", "Nov 21", "Nov 21 ", "Nov 21 10", "Nov 21 10:03",
                             "Nov 21 10:03:", "nov 21 10:03:49", "November 21 10:03:49", "Nov x 10:03:49",
                             "Nov 21, 10:03:49", "Nov 21 1:03:49", "2026-11-21 10:03:49"}) {
        EXPECT_EQ(takenShort(text).first, std::nullopt) << text;
    }
}

}  // namespace
