#include <gtest/gtest.h>

#include <compare>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "InstallCommon/ProductVersionUtil.h"
#include "support/FakeMac.h"

namespace {

using InstallCommon::compareNumerically;
using InstallCommon::ProductVersionUtil;

constexpr auto kLess = std::strong_ordering::less;
constexpr auto kEqual = std::strong_ordering::equal;
constexpr auto kGreater = std::strong_ordering::greater;

// The comparison of texts

struct Row {
    std::string a;
    std::string b;
    std::strong_ordering order;
};

void expectTable(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_TRUE(compareNumerically(row.a, row.b) == row.order)
            << "\"" << row.a << "\" and \"" << row.b << "\"";
        EXPECT_TRUE(compareNumerically(row.b, row.a) == (0 <=> row.order))
            << "\"" << row.b << "\" and \"" << row.a << "\", the other way round";
    }
}

TEST(CompareNumerically, ComparesRunsOfDigitsByTheirValue) {
    expectTable({{"6.10", "6.9", kGreater},
                 {"6.9", "6.10", kLess},
                 {"6.3.100", "6.3.99", kGreater},
                 {"10", "9", kGreater},
                 {"6.3", "6.3", kEqual},
                 {"0", "1", kLess},
                 {"a10b", "a9c", kGreater},
                 {"a10b", "a10c", kLess},
                 {"1.2.10", "1.10.2", kLess}});
}

TEST(CompareNumerically, GivesLeadingZerosNoWeight) {
    expectTable({{"6.03", "6.3", kEqual},
                 {"0", "000", kEqual},
                 {"007", "7", kEqual},
                 {"6.010", "6.9", kGreater},
                 {"6.09", "6.10", kLess},
                 {"01.1", "1.2", kLess},
                 {"00", "01", kLess}});
}

TEST(CompareNumerically, PutsATextBeforeALongerOneThatBeginsWithIt) {
    expectTable({{"6.3", "6.3.0", kLess},
                 {"6", "6.", kLess},
                 {"", "", kEqual},
                 {"", "0", kLess},
                 {"6.3", "6.3b1", kLess},
                 {"6.3.1234", "6.3", kGreater}});
}

TEST(CompareNumerically, ComparesNonDigitsCharacterByCharacterWithTheirCase) {
    expectTable({{"6.3a", "6.3b", kLess},
                 {"6.3B", "6.3a", kLess},
                 {"6.3b", "6.3b", kEqual},
                 {"6.a", "6.1", kGreater},
                 {"6.-", "6.1", kLess},
                 {"6-3", "6.3", kLess},
                 {" 6", "6", kLess},
                 {"1.0 (2)", "1.0 (10)", kLess},
                 {"6.3\xC3\xA9", "6.3z", kGreater},
                 {"\xEF\xBF\xBD", "\xF0\x9F\x98\x80", kLess}});
}

TEST(CompareNumerically, ComparesRunsOfDigitsOfAnyLength) {
    const std::string nines(5000, '9');
    const std::string larger = "1" + std::string(5000, '0');
    expectTable({{nines, larger, kLess},
                 {nines, nines, kEqual},
                 {std::string(10000, '0') + nines, nines, kEqual},
                 {nines.substr(1) + "8", nines, kLess},
                 {"18446744073709551616", "18446744073709551615", kGreater},
                 {"18446744073709551616", "0", kGreater},
                 {"4294967296", "1", kGreater}});
}

// The comparison of bundles

/// A bundle that records its queries.
class RecordingBundle final : public Platform::Bundle {
  public:
    RecordingBundle(std::string name, std::map<std::string, std::string> info,
                    std::vector<std::string>& questions)
        : name_(std::move(name)), info_(std::move(info)), questions_(questions) {}

    [[nodiscard]] Base::URL url() const override { return Base::URL::fileURL("/" + name_); }
    [[nodiscard]] std::optional<std::string> infoString(const std::string& key) const override {
        questions_.push_back(name_ + " " + key);
        const auto found = info_.find(key);
        return found == info_.end() ? std::nullopt : std::optional(found->second);
    }
    [[nodiscard]] std::optional<Base::URL> resource(const std::string&, const std::string&) const override {
        return std::nullopt;
    }
    [[nodiscard]] std::optional<std::string> localizedString(const std::string&,
                                                             const std::string&) const override {
        return std::nullopt;
    }

  private:
    std::string name_;
    std::map<std::string, std::string> info_;
    std::vector<std::string>& questions_;
};

std::map<std::string, std::string> versions(const std::string& shortVersion, const std::string& build) {
    return {{"CFBundleShortVersionString", shortVersion}, {"CFBundleVersion", build}};
}

std::optional<std::strong_ordering> compared(const std::map<std::string, std::string>& installed,
                                             const std::map<std::string, std::string>& offered,
                                             std::vector<std::string>* questions = nullptr) {
    std::vector<std::string> asked;
    const auto order = ProductVersionUtil::compareVersions(RecordingBundle("installed", installed, asked),
                                                           RecordingBundle("new", offered, asked));
    if (questions != nullptr) {
        *questions = asked;
    }
    return order;
}

TEST(CompareVersions, ReadsShortVersionAndBuildOfTheInstalledBundleAndThenOfTheNewOne) {
    std::vector<std::string> questions;

    EXPECT_TRUE(compared(versions("6.3", "1"), versions("6.3", "1"), &questions) == kEqual);

    EXPECT_EQ(questions,
              (std::vector<std::string>{"installed CFBundleShortVersionString", "installed CFBundleVersion",
                                        "new CFBundleShortVersionString", "new CFBundleVersion"}));
}

TEST(CompareVersions, YieldsNothingAndStopsReadingAtTheFirstVersionThatIsMissing) {
    const auto whole = versions("6.3", "1");
    const std::map<std::string, std::string> noShort{{"CFBundleVersion", "1"}};
    const std::map<std::string, std::string> noBuild{{"CFBundleShortVersionString", "6.3"}};
    std::vector<std::string> questions;

    EXPECT_FALSE(compared(noShort, whole, &questions));
    EXPECT_EQ(questions.size(), 1U);
    EXPECT_FALSE(compared(noBuild, whole, &questions));
    EXPECT_EQ(questions.size(), 2U);
    EXPECT_FALSE(compared(whole, noShort, &questions));
    EXPECT_EQ(questions.size(), 3U);
    EXPECT_FALSE(compared(whole, noBuild, &questions));
    EXPECT_EQ(questions.size(), 4U);
}

TEST(CompareVersions, TakesTheShortVersionAloneWhenTheBuildIsTheSameText) {
    // 6.3 comes before 6.3.1 and is no match for 6.3.6.3.
    EXPECT_TRUE(compared(versions("6.3", "6.3"), versions("6.3", "6.3")) == kEqual);
    EXPECT_TRUE(compared(versions("6.3", "6.3"), versions("6.3", "1")) == kLess);
    EXPECT_TRUE(compared(versions("6.3", "1"), versions("6.3.1", "6.3.1")) == kEqual);
    // 6.03 differs from 6.3 as text, so both are joined.
    EXPECT_TRUE(compared(versions("6.3", "6.03"), versions("6.3", "6.3")) == kGreater);
    EXPECT_TRUE(compared(versions("6.3", "6.03"), versions("6.3.6", "3")) == kEqual);
}

TEST(CompareVersions, JoinsShortVersionAndBuildWithAPoint) {
    EXPECT_TRUE(compared(versions("6.3", "1234"), versions("6.3.1234", "6.3.1234")) == kEqual);
    EXPECT_TRUE(compared(versions("6.3", "100"), versions("6.3", "99")) == kGreater);
    EXPECT_TRUE(compared(versions("6.3", "99"), versions("6.3", "100")) == kLess);
    EXPECT_TRUE(compared(versions("", "1"), versions(".1", ".1")) == kEqual);
}

TEST(CompareVersions, IsLessForAnInstalledVersionThatIsOlder) {
    EXPECT_TRUE(compared(versions("6.9", "6.9"), versions("6.10", "6.10")) == kLess);
    EXPECT_TRUE(compared(versions("6.10", "6.10"), versions("6.9", "6.9")) == kGreater);
}

}  // namespace
