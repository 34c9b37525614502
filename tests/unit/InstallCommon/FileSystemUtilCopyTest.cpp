#include "InstallCommon/FileSystemUtil.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>

#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;
using Base::URL;
using InstallCommon::FileSystemUtil;
using TestSupport::CallList;
using TestSupport::FakeMac;

constexpr std::uint32_t kRealUser = 501;

// copy

TEST(CopyItem, LogsBothPathsCopiesAndGivesTheCopyToRootAndWheel) {
    FakeMac mac;
    mac.files.addFile("/from/x y/inner");
    mac.files.addFolder("/to");

    FileSystemUtil::copy(URL::fileURL("/from/x y"), URL::fileURL("/to/x y"));

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Copy source /from/x y; destination: /to/x y")}));
    EXPECT_EQ(mac.calls,
              (CallList{{"copy", "/from/x y"}, {"chown", "/to/x y"}, {"chown contents of", "/to/x y"}}));
    EXPECT_EQ(mac.files.existenceTests, (Lines{"/to"}));
    for (const char* path : {"/to/x y", "/to/x y/inner"}) {
        EXPECT_EQ(mac.files.at(path).owner, 0U) << path;
        EXPECT_EQ(mac.files.at(path).group, 0U) << path;
    }
    EXPECT_EQ(mac.files.at("/from/x y/inner").owner, 501U);
}

TEST(CopyItem, CreatesAllMissingParentFoldersFirstUnderUserIdZero) {
    FakeMac mac;
    mac.users.real = kRealUser;
    mac.files.addFile("/from");

    FileSystemUtil::copy(URL::fileURL("/from"), URL::fileURL("/p/q/r"));

    EXPECT_EQ(mac.calls, (CallList{{"seteuid", 0},
                                   {"create all", "/p/q"},
                                   {"seteuid", 501},
                                   {"copy", "/from"},
                                   {"chown", "/p/q/r"},
                                   {"chown contents of", "/p/q/r"}}));
    EXPECT_TRUE(mac.files.has("/p"));
    EXPECT_TRUE(mac.files.has("/p/q"));
    EXPECT_TRUE(mac.files.has("/p/q/r"));
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Copy source /from; destination: /p/q/r")}));
}

TEST(CopyItem, OntoAnExistingDestinationLogsAnErrorLeavesItAsItWasAndStillChownsItThroughout) {
    FakeMac mac;
    mac.files.addFile("/from/new");
    mac.files.addFile("/to/old");
    mac.files.nodes["/to/old"].mode = 0600;
    mac.files.nodes["/to"].owner = 501;

    FileSystemUtil::copy(URL::fileURL("/from"), URL::fileURL("/to"));

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Copy source /from; destination: /to"),
                                    installerLine("Error: \"/to\" exists already")}));
    EXPECT_FALSE(mac.files.has("/to/new"));
    EXPECT_EQ(mac.files.at("/to/old").mode, 0600);
    for (const char* path : {"/to", "/to/old"}) {
        EXPECT_EQ(mac.files.at(path).owner, 0U) << path;
        EXPECT_EQ(mac.files.at(path).group, 0U) << path;
    }
}

TEST(CopyItem, ThatFailsIsStillFollowedByTheChown) {
    FakeMac mac;
    mac.files.addFolder("/to");

    FileSystemUtil::copy(URL::fileURL("/from"), URL::fileURL("/to/x"));

    EXPECT_EQ(mac.calls, (CallList{{"copy", "/from"}, {"chown", "/to/x"}, {"chown contents of", "/to/x"}}));
    EXPECT_EQ(mac.log.lines,
              (Lines{installerLine("Copy source /from; destination: /to/x"),
                     installerLine("Error: \"/from\" does not exist"),
                     installerLine("Chown failed for path file:///to/x and set errno to 9.")}));
}

TEST(CopyItem, IsTriedAlsoWhenTheParentCouldNotBeCreated) {
    FakeMac mac;
    mac.files.addFile("/from");
    mac.files.failOn("create all", "/p", {"No folder \"p\".", EACCES});
    mac.files.failOn("copy", "/from", {"No folder to copy to.", ENOENT});

    FileSystemUtil::copy(URL::fileURL("/from"), URL::fileURL("/p/x"));

    EXPECT_EQ(mac.calls, (CallList{{"seteuid", 0},
                                   {"create all", "/p"},
                                   {"seteuid", 0},
                                   {"copy", "/from"},
                                   {"chown", "/p/x"},
                                   {"chown contents of", "/p/x"}}));
    EXPECT_EQ(mac.log.lines,
              (Lines{installerLine("Copy source /from; destination: /p/x"),
                     installerLine("Error: No folder \"p\"."), installerLine("Error: No folder to copy to."),
                     installerLine("Chown failed for path file:///p/x and set errno to 9.")}));
}

}  // namespace
