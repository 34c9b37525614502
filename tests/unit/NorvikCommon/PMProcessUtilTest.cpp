#include "NorvikCommon/PMProcessUtil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>

#include "NorvikCommon/PMProcess.h"
#include "support/FakeMac.h"

namespace {

using Base::URL;
using NorvikCommon::kAllUsersId;
using NorvikCommon::PMProcess;
using NorvikCommon::PMProcessUtil;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::CallList;
using TestSupport::FakeMac;
using Lines = std::vector<std::string>;

TEST(ProcessUtil, IsOneSharedInstance) {
    FakeMac mac;

    const PMProcessUtil* elsewhere = nullptr;
    std::thread([&elsewhere] { elsewhere = &PMProcessUtil::shared(); }).join();
    EXPECT_EQ(&PMProcessUtil::shared(), &PMProcessUtil::shared());
    EXPECT_EQ(elsewhere, &PMProcessUtil::shared());
}

// collectPidsForUser

TEST(CollectPids, ListsEveryProcessForTheIdThatMeansAllUsers) {
    FakeMac mac;
    mac.processes.processes = {
        {1, 0, "launchd", "/sbin/launchd"}, {70, 501, "a", "/a"}, {71, 502, "b", "/b"}};

    EXPECT_THAT(PMProcessUtil::shared().collectPidsForUser(0x7FFFFFFF), UnorderedElementsAre(1, 70, 71));
    EXPECT_EQ(mac.calls, (CallList{{"listPids", 1, 0}, {"listPids", 1, 3}}));
}

TEST(CollectPids, ListsOnlyTheProcessesOfAnyOtherUser) {
    FakeMac mac;
    mac.processes.processes = {
        {1, 0, "launchd", "/sbin/launchd"}, {70, 501, "a", "/a"}, {71, 502, "b", "/b"}};

    EXPECT_THAT(PMProcessUtil::shared().collectPidsForUser(501), UnorderedElementsAre(70));
    EXPECT_EQ(mac.calls, (CallList{{"listPids", 4, 0}, {"listPids", 4, 1}}));
    EXPECT_THAT(PMProcessUtil::shared().collectPidsForUser(0), UnorderedElementsAre(1));
}

TEST(CollectPids, HasNoDuplicates) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "a", "/a"}, {5, 0, "a", "/a"}, {6, 0, "b", "/b"}};

    EXPECT_THAT(PMProcessUtil::shared().collectPidsForUser(kAllUsersId), UnorderedElementsAre(5, 6));
}

TEST(CollectPids, IsEmptyWhenNothingIsCounted) {
    FakeMac mac;

    EXPECT_THAT(PMProcessUtil::shared().collectPidsForUser(kAllUsersId), IsEmpty());
}

TEST(CollectPids, IsEmptyWhenTheListCannotBeHad) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "a", "/a"}};
    mac.processes.refusesToList = true;

    EXPECT_THAT(PMProcessUtil::shared().collectPidsForUser(kAllUsersId), IsEmpty());
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(CollectPids, IsEmptyWhenTheCountCannotBeHad) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "a", "/a"}};
    mac.processes.refusesToCount = true;

    EXPECT_THAT(PMProcessUtil::shared().collectPidsForUser(kAllUsersId), IsEmpty());
    EXPECT_EQ(mac.calls, (CallList{{"listPids", 1, 0}}));
}

TEST(CollectPids, LeavesOutWhatEndsBetweenTheCountAndTheList) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "a", "/a"}, {6, 0, "b", "/b"}, {7, 0, "c", "/c"}};
    mac.processes.onCounted = [&mac] { mac.processes.processes.pop_back(); };

    EXPECT_THAT(PMProcessUtil::shared().collectPidsForUser(kAllUsersId), UnorderedElementsAre(5, 6));
}

TEST(CollectPids, ListsNoMoreThanWasCounted) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "a", "/a"}};
    mac.processes.onCounted = [&mac] { mac.processes.processes.push_back({6, 0, "b", "/b"}); };

    EXPECT_THAT(PMProcessUtil::shared().collectPidsForUser(kAllUsersId), UnorderedElementsAre(5));
}

// One process

TEST(ProcessUid, IsTheEffectiveUserOrNothing) {
    FakeMac mac;
    mac.processes.processes = {{5, 4294967294U, "a", "/a"}};

    EXPECT_EQ(PMProcessUtil::shared().processUidForPid(5), 4294967294U);
    EXPECT_EQ(PMProcessUtil::shared().processUidForPid(6), std::nullopt);
}

TEST(ProcessLocation, IsTheExecutablesPathOrNothing) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "a", "/Applications/A B.app/Contents/MacOS/A B"},
                               {6, 0, "kernel_task", ""}};

    EXPECT_EQ(PMProcessUtil::shared().processLocationForPid(5),
              URL::fileURL("/Applications/A B.app/Contents/MacOS/A B"));
    EXPECT_EQ(PMProcessUtil::shared().processLocationForPid(6), std::nullopt);
    EXPECT_EQ(PMProcessUtil::shared().processLocationForPid(7), std::nullopt);
}

TEST(ProcessLocation, MayBeTheShortestPath) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "a", "/"}};

    EXPECT_EQ(PMProcessUtil::shared().processLocationForPid(5), URL::fileURL("/"));
}

TEST(ProcessName, IsAskedForTwiceInARow) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "a", "/b"}};

    EXPECT_EQ(PMProcessUtil::shared().processNameForPid(5), "a");
    EXPECT_EQ(mac.processes.questions, (Lines{"name 5", "name 5"}));
}

TEST(ProcessName, IsTheSecondAnswerWhateverTheFirstOneWas) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "second", "/b"}};
    mac.processes.firstName = "first";

    EXPECT_EQ(PMProcessUtil::shared().processNameForPid(5), "second");
}

TEST(ProcessName, IsTheLastPathComponentWhenOnlyTheFirstQuestionWasAnswered) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "", "/usr/bin/tool"}};
    mac.processes.firstName = "first";

    EXPECT_EQ(PMProcessUtil::shared().processNameForPid(5), "tool");
}

TEST(ProcessName, IsTheLastPathComponentWhenTheSecondQuestionFailed) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "", "/usr/bin/tool"}};
    mac.processes.firstName = "first";
    mac.processes.noName = -1;

    EXPECT_EQ(PMProcessUtil::shared().processNameForPid(5), "tool");
}

TEST(ProcessName, IsTheLastPathComponentOfTheExecutableForAProcessWithoutOne) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "", "/Applications/A.app/Contents/MacOS/A Tool"}};

    EXPECT_EQ(PMProcessUtil::shared().processNameForPid(5), "A Tool");
    EXPECT_EQ(mac.processes.questions, (Lines{"name 5", "name 5", "path 5"}));
}

TEST(ProcessName, IsTheLastPathComponentWhenTheNameGivenIsEmpty) {
    FakeMac mac;
    // One byte was written, and it ends the text.
    mac.processes.processes = {{5, 0, std::string(1, '\0'), "/usr/bin/tool"}};

    EXPECT_EQ(PMProcessUtil::shared().processNameForPid(5), "tool");
}

TEST(ProcessName, EndsAtTheFirstByteThatEndsAText) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, std::string("ab\0cd\0ef", 8), "/usr/bin/tool"}};

    EXPECT_EQ(PMProcessUtil::shared().processNameForPid(5), "ab");
}

TEST(ProcessName, IsNothingWithoutNameAndPath) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "", ""}};

    EXPECT_EQ(PMProcessUtil::shared().processNameForPid(5), std::nullopt);
    EXPECT_EQ(PMProcessUtil::shared().processNameForPid(6), std::nullopt);
}

// PMProcess

TEST(ProcessWithPid, AsksForUserIdNameAndLocationInThisOrder) {
    FakeMac mac;
    mac.processes.processes = {{5, 501, "a", "/usr/bin/b"}};

    const auto process = PMProcess::processWithPid(5);

    EXPECT_EQ(process, (PMProcess{5, 501, "a", URL::fileURL("/usr/bin/b")}));
    EXPECT_EQ(mac.processes.questions, (Lines{"uid 5", "name 5", "name 5", "path 5"}));
}

TEST(ProcessWithPid, IsTheSameWithAGivenProcessUtil) {
    FakeMac mac;
    mac.processes.processes = {{5, 501, "a", "/usr/bin/b"}};

    EXPECT_EQ(PMProcess::processWithPid(5, PMProcessUtil::shared()), PMProcess::processWithPid(5));
}

TEST(ProcessWithPid, IsNothingForAPidThatHasExitedAndStopsAtTheFirstQuestion) {
    FakeMac mac;
    mac.processes.vanished = {5};

    EXPECT_EQ(PMProcess::processWithPid(5), std::nullopt);
    EXPECT_EQ(mac.processes.questions, (Lines{"uid 5"}));
}

TEST(ProcessWithPid, IsNothingForAProcessWhosePathCannotBeRead) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "kernel_task", ""}};

    EXPECT_EQ(PMProcess::processWithPid(5), std::nullopt);
    EXPECT_EQ(mac.processes.questions, (Lines{"uid 5", "name 5", "name 5", "path 5"}));
}

TEST(ProcessWithPid, IsNothingForAProcessWithoutAnyName) {
    FakeMac mac;
    mac.processes.processes = {{5, 0, "", ""}};

    EXPECT_EQ(PMProcess::processWithPid(5), std::nullopt);
    // The path was asked for as a name only.
    EXPECT_EQ(mac.processes.questions, (Lines{"uid 5", "name 5", "name 5", "path 5"}));
}

}  // namespace
