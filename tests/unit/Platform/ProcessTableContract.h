#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "Platform/ProcessTable.h"

/// What every ProcessTable promises. World has `table`, and makes and ends processes:
///   std::int32_t start(const std::string& name)     a running process of that name, owned by user()
///   std::string pathOf(const std::string& name)     where its executable lies
///   std::uint32_t user()
///   void end(std::int32_t pid)                      it is gone afterwards
namespace PlatformTests {

using Platform::PidListType;

template <class World>
class ProcessTableContract : public testing::Test {
  protected:
    [[nodiscard]] std::vector<std::int32_t> list(PidListType type, std::uint32_t user) {
        const int count = table.listPids(type, user, {});
        std::vector<std::int32_t> pids(static_cast<std::size_t>(std::max(count, 0)));
        if (!pids.empty()) {
            // The span beyond the ids is still 0, which is no user process's id.
            static_cast<void>(table.listPids(type, user, pids));
            pids.erase(std::find(pids.begin(), pids.end(), 0), pids.end());
        }
        return pids;
    }
    [[nodiscard]] static bool contains(const std::vector<std::int32_t>& pids, std::int32_t pid) {
        return std::find(pids.begin(), pids.end(), pid) != pids.end();
    }
    [[nodiscard]] std::string nameOf(std::int32_t pid) {
        std::array<char, 4096> buffer{};
        const int length = table.name(pid, buffer);
        return std::string(buffer.data(), static_cast<std::size_t>(std::max(length, 0)));
    }
    [[nodiscard]] std::string pathOf(std::int32_t pid) {
        std::array<char, 4096> buffer{};
        const int length = table.path(pid, buffer);
        return std::string(buffer.data(), static_cast<std::size_t>(std::max(length, 0)));
    }

    World world;
    Platform::ProcessTable& table = world.table;
};

TYPED_TEST_SUITE_P(ProcessTableContract);

TYPED_TEST_P(ProcessTableContract, ListsEveryProcessOnce) {
    const std::int32_t first = this->world.start("first");
    const std::int32_t second = this->world.start("second");
    std::vector<std::int32_t> pids = this->list(PidListType::all, 0);
    EXPECT_TRUE(this->contains(pids, first));
    EXPECT_TRUE(this->contains(pids, second));
    std::sort(pids.begin(), pids.end());
    EXPECT_EQ(std::adjacent_find(pids.begin(), pids.end()), pids.end());
    EXPECT_GT(pids.front(), 0);
}

TYPED_TEST_P(ProcessTableContract, ListsTheProcessesOfOneUser) {
    const std::int32_t pid = this->world.start("one");
    EXPECT_TRUE(this->contains(this->list(PidListType::effectiveUser, this->world.user()), pid));
    EXPECT_TRUE(this->list(PidListType::effectiveUser, 3'999'999'999U).empty());
}

TYPED_TEST_P(ProcessTableContract, CountsAtLeastWhatItLists) {
    (void)this->world.start("one");
    (void)this->world.start("two");
    // Others come and go between two calls; these two are there all the time.
    EXPECT_GE(this->table.listPids(PidListType::all, 0, {}), 2);
}

TYPED_TEST_P(ProcessTableContract, FillsNoMoreThanTheSpan) {
    (void)this->world.start("one");
    (void)this->world.start("two");
    std::array<std::int32_t, 3> pids{-1, -1, -1};
    EXPECT_GE(this->table.listPids(PidListType::all, 0, std::span(pids).first(2)), 2);
    EXPECT_GT(pids[0], 0);
    EXPECT_GT(pids[1], 0);
    EXPECT_EQ(pids[2], -1);
}

TYPED_TEST_P(ProcessTableContract, KnowsUserNameAndPath) {
    for (const std::string name : {"short", "fifteen bytes!!", "NORVIK Antivirus", "Accentu\xc3\xa9"}) {
        const std::int32_t pid = this->world.start(name);
        std::uint32_t user = 4711;
        EXPECT_GT(this->table.effectiveUser(pid, user), 0);
        EXPECT_EQ(user, this->world.user());
        EXPECT_EQ(this->nameOf(pid), name);
        EXPECT_EQ(this->pathOf(pid), this->world.pathOf(name));
    }
}

TYPED_TEST_P(ProcessTableContract, CutsToTheSpan) {
    const std::int32_t pid = this->world.start("NORVIK Antivirus");
    std::array<char, 6> buffer{'-', '-', '-', '-', '-', '-'};
    EXPECT_EQ(this->table.name(pid, std::span(buffer).first(5)), 5);
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), "NORVI-");
    EXPECT_EQ(this->table.path(pid, std::span(buffer).first(1)), 1);
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), "/ORVI-");
}

TYPED_TEST_P(ProcessTableContract, KnowsNothingOfAVanishedProcess) {
    const std::int32_t pid = this->world.start("vanishing");
    EXPECT_EQ(this->table.kill(pid, 0), 0);
    this->world.end(pid);
    std::uint32_t user = 4711;
    EXPECT_LE(this->table.effectiveUser(pid, user), 0);
    EXPECT_EQ(user, 4711U);
    EXPECT_EQ(this->nameOf(pid), "");
    EXPECT_EQ(this->pathOf(pid), "");
    EXPECT_FALSE(this->contains(this->list(PidListType::all, 0), pid));
    EXPECT_EQ(this->table.kill(pid, SIGKILL), -1);
}

REGISTER_TYPED_TEST_SUITE_P(ProcessTableContract, ListsEveryProcessOnce, ListsTheProcessesOfOneUser,
                            CountsAtLeastWhatItLists, FillsNoMoreThanTheSpan, KnowsUserNameAndPath,
                            CutsToTheSpan, KnowsNothingOfAVanishedProcess);

}  // namespace PlatformTests
