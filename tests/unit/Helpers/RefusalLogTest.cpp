#include "Helpers/RefusalLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;

std::string peer(int pid) {
    return "process " + std::to_string(pid) + " of user 501";
}

class RefusalLogTest : public testing::Test {
  protected:
    void refuse(int times, const std::string& reason) {
        for (int i = 0; i < times; ++i) {
            log_.note(peer(++pid_) + ": " + reason);
        }
    }
    /// The lines since the last call, without what all have in common.
    Lines lines() {
        Lines found;
        for (const std::string& line : mac_.log.lines) {
            const std::string common = installerLine("Refused ");
            found.push_back(line.starts_with(common) ? line.substr(common.size()) : "?" + line);
        }
        mac_.log.lines.clear();
        return found;
    }

    TestSupport::FakeMac mac_;
    Helpers::RefusalLog log_;
    int pid_ = 0;
};

TEST_F(RefusalLogTest, WritesTheFirstOfAKindWhole) {
    refuse(5, "no identity");
    EXPECT_EQ(lines(), (Lines{peer(1) + ": no identity", peer(2) + ": no identity", peer(3) + ": no identity",
                              peer(4) + ": no identity", peer(5) + ": no identity"}));
}

TEST_F(RefusalLogTest, TakesEverythingAfterThePeerForTheKind) {
    refuse(6, "no: identity");
    static_cast<void>(lines());
    log_.summarize();
    EXPECT_EQ(lines(), (Lines{"in all: 6 times, no: identity"}));
}

TEST_F(RefusalLogTest, TakesALineWithoutAPeerForItsOwnKind) {
    for (int time = 0; time < 6; ++time) {
        log_.note("odd");
    }
    static_cast<void>(lines());
    log_.summarize();
    EXPECT_EQ(lines(), (Lines{"in all: 6 times, odd"}));
}

TEST_F(RefusalLogTest, CountsTheRestAtEveryPowerOfTen) {
    refuse(9, "no identity");
    EXPECT_EQ(lines().size(), 5U);
    refuse(1, "no identity");
    EXPECT_EQ(lines(), (Lines{"so far: 10 times, no identity"}));
    refuse(89, "no identity");
    EXPECT_EQ(lines(), Lines());
    refuse(1, "no identity");
    EXPECT_EQ(lines(), (Lines{"so far: 100 times, no identity"}));
    refuse(116'432, "no identity");
    EXPECT_EQ(lines(), (Lines{"so far: 1000 times, no identity", "so far: 10000 times, no identity",
                              "so far: 100000 times, no identity"}));
    log_.summarize();
    EXPECT_EQ(lines(), (Lines{"in all: 116532 times, no identity"}));
}

TEST_F(RefusalLogTest, CountsEachKindForItself) {
    refuse(6, "a");
    refuse(5, "b");
    refuse(1, "c");
    EXPECT_EQ(lines().size(), 11U);
    log_.summarize();
    EXPECT_EQ(lines(), (Lines{"in all: 6 times, a"}));
}

TEST_F(RefusalLogTest, SummarizesNothingTwice) {
    refuse(10, "a");
    static_cast<void>(lines());
    log_.summarize();
    EXPECT_EQ(lines(), Lines());
    refuse(1, "a");
    log_.summarize();
    EXPECT_EQ(lines(), (Lines{"in all: 11 times, a"}));
    log_.summarize();
    EXPECT_EQ(lines(), Lines());
}

TEST_F(RefusalLogTest, TellsSixteenKindsApartAndCountsAllOthersTogether) {
    for (int i = 0; i < 16; ++i) {
        refuse(1, "kind " + std::to_string(i));
    }
    EXPECT_EQ(lines().size(), 16U);
    for (int i = 100; i < 1100; ++i) {
        refuse(1, "kind " + std::to_string(i));
    }
    EXPECT_EQ(lines(),
              (Lines{peer(17) + ": kind 100", peer(18) + ": kind 101", peer(19) + ": kind 102",
                     peer(20) + ": kind 103", peer(21) + ": kind 104", "so far: 10 times, for other reasons",
                     "so far: 100 times, for other reasons", "so far: 1000 times, for other reasons"}));
    refuse(1, "another");
    refuse(5, "kind 3");
    static_cast<void>(lines());
    log_.summarize();
    EXPECT_EQ(lines(), (Lines{"in all: 1001 times, for other reasons", "in all: 6 times, kind 3"}));
}

TEST_F(RefusalLogTest, TakesAReasonWithoutAPeerWhole) {
    log_.note("nobody asked for it");
    EXPECT_EQ(lines(), Lines{"nobody asked for it"});
}

TEST_F(RefusalLogTest, KeepsAForeignNameOnItsLine) {
    log_.note(peer(1) + ": the class \n[SNTM Installer] Uninstallation finished.");
    EXPECT_EQ(lines(), Lines{peer(1) + ": the class \\x0a[SNTM Installer] Uninstallation finished."});
}

}  // namespace
