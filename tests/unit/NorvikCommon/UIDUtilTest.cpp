#include "NorvikCommon/UIDUtil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/FakeMac.h"

namespace {

using NorvikCommon::UIDUtil;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::CallList;
using TestSupport::FakeMac;
using Lines = std::vector<std::string>;

TEST(AllUsers, ReturnsOnlyUsersWhoseHomeFolderBeginsWithUsers) {
    FakeMac mac;
    mac.users.entries = {{0, "/var/root"},
                         {501, "/Users/anna"},
                         {502, "/Users/Shared"},
                         {89, "/private/Users/x"},
                         {503, "/Users"},
                         {90, "/users/lower"},
                         {91, ""},
                         {92, "/User"},
                         {504, "/Users/bert/deep"}};

    EXPECT_THAT(UIDUtil::allUsers(), UnorderedElementsAre(501, 502, 503, 504));
}

TEST(AllUsers, TakesTheFolderAsAPlainPrefixOfText) {
    FakeMac mac;
    mac.users.entries = {{501, "/UsersElsewhere/anna"}, {502, "/Users2"}};

    EXPECT_THAT(UIDUtil::allUsers(), UnorderedElementsAre(501, 502));
}

TEST(AllUsers, ReturnsEachUserIdOnce) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/anna"}, {501, "/Users/also-anna"}, {4294967294U, "/Users/nobody"}};

    EXPECT_THAT(UIDUtil::allUsers(), UnorderedElementsAre(501, 4294967294U));
}

TEST(AllUsers, HasUserIdZeroWhenItsHomeIsBelowUsers) {
    FakeMac mac;
    mac.users.entries = {{0, "/Users/root"}};

    EXPECT_THAT(UIDUtil::allUsers(), UnorderedElementsAre(0));
}

TEST(AllUsers, IsEmptyForAnEmptyDatabase) {
    FakeMac mac;

    EXPECT_THAT(UIDUtil::allUsers(), IsEmpty());
    EXPECT_EQ(mac.calls, (CallList{{"setpwent"}, {"endpwent"}}));
}

TEST(AllUsers, RewindsTheDatabaseFirstAndClosesItOnEveryWalk) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/anna"}};

    EXPECT_THAT(UIDUtil::allUsers(), UnorderedElementsAre(501));
    EXPECT_THAT(UIDUtil::allUsers(), UnorderedElementsAre(501));

    EXPECT_EQ(mac.calls, (CallList{{"setpwent"}, {"endpwent"}, {"setpwent"}, {"endpwent"}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(AllUsers, FollowsTheFolderThatTheSystemNames) {
    FakeMac mac;
    mac.folders.users = "/Volumes/Homes";
    mac.users.entries = {{501, "/Users/anna"}, {502, "/Volumes/Homes/bert"}};

    EXPECT_THAT(UIDUtil::allUsers(), UnorderedElementsAre(502));
}

TEST(UsersDirectoryPath, IsAskedForOncePerProcessAndKept) {
    FakeMac mac;
    mac.users.entries = {{501, "/Users/anna"}, {502, "/Users/bert"}};

    EXPECT_EQ(UIDUtil::usersDirectoryPath(), "/Users");
    mac.folders.users = "/elsewhere";
    EXPECT_EQ(UIDUtil::usersDirectoryPath(), "/Users");
    EXPECT_THAT(UIDUtil::allUsers(), UnorderedElementsAre(501, 502));

    EXPECT_EQ(mac.folders.usersQuestions, 1);
}

TEST(PerformWithUid, RunsTheBlockUnderTheIdAndGoesBackToTheRealUserId) {
    FakeMac mac;
    mac.users.real = 77;
    mac.users.effective = 88;
    std::uint32_t inside = 0;

    UIDUtil::performWithUid(501, [&] {
        inside = mac.users.effective;
        mac.calls.push_back({"block"});
    });

    EXPECT_EQ(inside, 501U);
    EXPECT_EQ(mac.users.effective, 77U);
    EXPECT_EQ(mac.calls, (CallList{{"seteuid", 501}, {"block"}, {"seteuid", 77}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(PerformWithUid, GoesBackToTheRealUserIdThatItSavedBeforeTheBlock) {
    FakeMac mac;
    mac.users.real = 77;

    UIDUtil::performWithUid(0, [&] { mac.users.real = 78; });

    EXPECT_EQ(mac.calls, (CallList{{"seteuid", 0}, {"seteuid", 77}}));
}

TEST(PerformWithUid, RunsTheBlockInAnyCaseWhenTheChangeIsRefused) {
    FakeMac mac;
    mac.users.real = 77;
    mac.users.effective = 77;
    mac.users.refusesChange = true;
    std::vector<std::uint32_t> ids;

    UIDUtil::performWithUid(0, [&] { ids.push_back(mac.users.effective); });

    EXPECT_EQ(ids, (std::vector<std::uint32_t>{77}));
    EXPECT_EQ(mac.calls, (CallList{{"seteuid", 0}, {"seteuid", 77}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

}  // namespace
