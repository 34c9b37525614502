#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"
#include "unit/InstallCommon/CommandArchives.h"

namespace {

using TestSupport::kRepair;
using Lines = std::vector<std::string>;
using Base::URL;
using InstallCommon::RemoveCommand;
using TestSupport::afterTheWire;
using TestSupport::CallList;
using TestSupport::FakeMac;
using TestSupport::ForeignCommand;
using TestSupport::installerLine;
using TestSupport::urls;

std::string removed(const std::string& path) {
    return installerLine("Removed at ") + path;
}
std::string notThere(const std::string& path) {
    return installerLine("Error removing: \"") + path + "\" does not exist";
}

// Construction

TEST(RemoveCommand, HasWeightOneAndTheDescriptionThatItWasGiven) {
    const RemoveCommand command("Deleting...", URL::fileURL("/a"));

    EXPECT_EQ(command.weight(), 1);
    EXPECT_EQ(command.commandDescription(), "Deleting...");
}

TEST(RemoveCommand, MadeOfURLsRemovesEachUnconditionallyInTheirOrder) {
    const RemoveCommand command("", std::vector{URL::fileURL("/b"), URL::fileURL("/a")});

    EXPECT_EQ(command.itemsToRemove(),
              (std::vector<RemoveCommand::Item>{{URL::fileURL("/b"), false}, {URL::fileURL("/a"), false}}));
}

TEST(RemoveCommand, MadeOfOneURLRemovesItUnconditionally) {
    const RemoveCommand command("", URL::fileURL("/a"));

    EXPECT_EQ(command.itemsToRemove(), (std::vector<RemoveCommand::Item>{{URL::fileURL("/a"), false}}));
}

// Execution

TEST(RemoveCommand, LeavesANonEmptyFolderAndItsRepairCopyWhenToldRemoveIfEmpty) {
    FakeMac mac;
    mac.files.addFile("/a/b");
    mac.files.addFile(kRepair + "/a/b");

    RemoveCommand("", std::vector<RemoveCommand::Item>{{URL::fileURL("/a"), true}}).execute();

    EXPECT_TRUE(mac.files.has("/a/b"));
    EXPECT_TRUE(mac.files.has(kRepair + "/a/b"));
    EXPECT_EQ(mac.calls, (CallList{{"list", "/a"}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(RemoveCommand, DeletesANonEmptyFolderAndItsRepairCopyWhenNotToldRemoveIfEmpty) {
    FakeMac mac;
    mac.files.addFile("/a/b");
    mac.files.addFile(kRepair + "/a/b");

    RemoveCommand("", std::vector<RemoveCommand::Item>{{URL::fileURL("/a"), false}}).execute();

    EXPECT_FALSE(mac.files.has("/a"));
    EXPECT_FALSE(mac.files.has("/a/b"));
    EXPECT_FALSE(mac.files.has(kRepair + "/a"));
    EXPECT_TRUE(mac.files.has(kRepair));
    EXPECT_EQ(mac.calls, (CallList{{"remove", "/a"}, {"remove", kRepair + "/a"}}));
    EXPECT_EQ(mac.log.lines, (Lines{removed("/a"), removed(kRepair + "/a")}));
}

TEST(RemoveCommand, RemovesAnEmptyFolderWhenToldRemoveIfEmpty) {
    FakeMac mac;
    mac.files.addFolder("/a");
    mac.files.addFolder(kRepair + "/a");

    RemoveCommand("", std::vector<RemoveCommand::Item>{{URL::fileURL("/a"), true}}).execute();

    EXPECT_FALSE(mac.files.has("/a"));
    EXPECT_FALSE(mac.files.has(kRepair + "/a"));
    EXPECT_EQ(mac.calls, (CallList{{"list", "/a"}, {"remove", "/a"}, {"remove", kRepair + "/a"}}));
    EXPECT_EQ(mac.log.lines, (Lines{removed("/a"), removed(kRepair + "/a")}));
}

TEST(RemoveCommand, RemovesAFolderOfHiddenFilesWhenToldRemoveIfEmpty) {
    FakeMac mac;
    mac.files.addFile("/a/.DS_Store");

    RemoveCommand("", std::vector<RemoveCommand::Item>{{URL::fileURL("/a"), true}}).execute();

    EXPECT_FALSE(mac.files.has("/a"));
    EXPECT_FALSE(mac.files.has("/a/.DS_Store"));
}

TEST(RemoveCommand, CountsAFolderThatCannotBeListedAsEmpty) {
    FakeMac mac;

    RemoveCommand("", std::vector<RemoveCommand::Item>{{URL::fileURL("/a"), true}}).execute();

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Error: \"/a\" could not be listed"), notThere("/a"),
                                    notThere(kRepair + "/a")}));
}

TEST(RemoveCommand, RemovesTheRepairCopyOfEveryPairThatIsNotSkippedWhetherOrNotThereIsOne) {
    FakeMac mac;
    mac.files.addFile("/with copy");
    mac.files.addFile("/without");
    mac.files.addFile("/full/x");
    mac.files.addFile(kRepair + "/with copy");
    mac.files.addFile(kRepair + "/full/x");

    RemoveCommand("", std::vector<RemoveCommand::Item>{{URL::fileURL("/without"), false},
                                                       {URL::fileURL("/full"), true},
                                                       {URL::fileURL("/with copy"), false},
                                                       {URL::fileURL("/missing"), false}})
        .execute();

    EXPECT_EQ(mac.log.lines,
              (Lines{removed("/without"), notThere(kRepair + "/without"), removed("/with copy"),
                     removed(kRepair + "/with copy"), notThere("/missing"), notThere(kRepair + "/missing")}));
    EXPECT_TRUE(mac.files.has("/full/x"));
    EXPECT_TRUE(mac.files.has(kRepair + "/full/x"));
}

TEST(RemoveCommand, LooksForTheRepairCopyBelowTheWholePathOfTheItem) {
    FakeMac mac;

    RemoveCommand("", URL::fileURL("/Applications/Example.app")).execute();

    EXPECT_EQ(mac.calls, (CallList{{"remove", "/Applications/Example.app"},
                                   {"remove", kRepair + "/Applications/Example.app"}}));
}

TEST(RemoveCommand, GoesOnWithTheRepairCopyAndTheNextItemAfterAFailure) {
    FakeMac mac;
    mac.files.addFile("/a");
    mac.files.addFile("/b");
    mac.files.addFile(kRepair + "/a");
    mac.files.failOn("remove", "/a", {"\"a\" is locked.", EPERM});

    RemoveCommand("", std::vector{URL::fileURL("/a"), URL::fileURL("/b")}).execute();

    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Error removing: \"a\" is locked."),
                                    removed(kRepair + "/a"), removed("/b"), notThere(kRepair + "/b")}));
}

TEST(RemoveCommand, DecodesAndExecutesAnEmptyListAsANoOp) {
    FakeMac mac;
    const auto command =
        afterTheWire<RemoveCommand>(RemoveCommand("Nothing...", std::vector<RemoveCommand::Item>{}));

    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->itemsToRemove(), std::vector<RemoveCommand::Item>{});
    command->execute();
    EXPECT_EQ(mac.calls, CallList{});
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(RemoveCommand, RepeatsItsStepWhenRunTwice) {
    FakeMac mac;
    mac.files.addFile("/a");
    const RemoveCommand command("", URL::fileURL("/a"));

    command.execute();
    command.execute();

    EXPECT_EQ(mac.log.lines,
              (Lines{removed("/a"), notThere(kRepair + "/a"), notThere("/a"), notThere(kRepair + "/a")}));
}

// On the wire

TEST(RemoveCommand, KeepsItemsFlagsAndDescriptionOnTheWire) {
    const RemoveCommand sent("Deleting x...", std::vector<RemoveCommand::Item>{{URL::fileURL("/a b"), true},
                                                                               {URL::fileURL("/c"), false}});

    const auto received = afterTheWire<RemoveCommand>(sent);

    ASSERT_NE(received, nullptr);
    EXPECT_EQ(received->itemsToRemove(), sent.itemsToRemove());
    EXPECT_EQ(received->commandDescription(), "Deleting x...");
    EXPECT_EQ(received->weight(), 1);
}

TEST(RemoveCommand, DecodesThreePathsAndTwoFlagsToTwoPairs) {
    const ForeignCommand archived(RemoveCommand::staticClass(), [](Base::Coder& coder) {
        coder.encodeURLs("source", urls({"/a", "/b", "/c"}));
        coder.encodeBools("destination", {true, false});
        coder.encodeString("commandDescription", "");
    });

    const auto command = afterTheWire<RemoveCommand>(archived);

    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->itemsToRemove(),
              (std::vector<RemoveCommand::Item>{{URL::fileURL("/a"), true}, {URL::fileURL("/b"), false}}));
}

TEST(RemoveCommand, DecodesOnePathAndTwoFlagsToOnePair) {
    const ForeignCommand archived(RemoveCommand::staticClass(), [](Base::Coder& coder) {
        coder.encodeURLs("source", urls({"/a"}));
        coder.encodeBools("destination", {true, false});
        coder.encodeString("commandDescription", "");
    });

    const auto command = afterTheWire<RemoveCommand>(archived);

    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->itemsToRemove(), (std::vector<RemoveCommand::Item>{{URL::fileURL("/a"), true}}));
}

TEST(RemoveCommand, DoesNotDecodeWhenAKeyIsMissingOrOfTheWrongType) {
    const std::vector<std::function<void(Base::Coder&)>> faults{
        [](Base::Coder& coder) {
            coder.encodeBools("destination", {true});
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) {
            coder.encodeURLs("source", urls({"/a"}));
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) {
            coder.encodeURLs("source", urls({"/a"}));
            coder.encodeBools("destination", {true});
        },
        [](Base::Coder& coder) {
            coder.encodeURLs("source", urls({"/a"}));
            coder.encodeURLs("destination", urls({"/b"}));
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) {
            coder.encodeString("source", "/a");
            coder.encodeBools("destination", {true});
            coder.encodeString("commandDescription", "");
        }};
    for (std::size_t i = 0; i < faults.size(); ++i) {
        EXPECT_EQ(afterTheWire<RemoveCommand>(ForeignCommand(RemoveCommand::staticClass(), faults[i])),
                  nullptr)
            << i;
    }
}

}  // namespace
