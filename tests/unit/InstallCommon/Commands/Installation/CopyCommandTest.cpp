#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"
#include "unit/InstallCommon/CommandArchives.h"

namespace {

using TestSupport::kRepair;
using Lines = std::vector<std::string>;
using Base::URL;
using InstallCommon::CopyCommand;
using TestSupport::afterTheWire;
using TestSupport::CallList;
using TestSupport::FakeMac;
using TestSupport::ForeignCommand;
using TestSupport::installerLine;
using TestSupport::urls;

// Construction

TEST(CopyCommand, HasWeightOneAndTheDescriptionThatItWasGiven) {
    const CopyCommand command("Copying...", URL::fileURL("/a"), URL::fileURL("/b"));

    EXPECT_EQ(command.weight(), 1);
    EXPECT_EQ(command.commandDescription(), "Copying...");
    EXPECT_EQ(command.itemsToCopy(),
              (std::vector<CopyCommand::Item>{{URL::fileURL("/a"), URL::fileURL("/b")}}));
}

// Execution

std::string copyLine(const std::string& from, const std::string& to) {
    return installerLine("Copy source ") + from + "; destination: " + to;
}
std::string backupLine(const std::string& item) {
    return installerLine("Backup source: ") + item + ", destination: " + kRepair + item;
}

TEST(CopyCommand, PutsTheItemAtItsDestinationAndBacksTheDestinationUpOnce) {
    FakeMac mac;
    mac.files.addFile("/from");
    mac.files.addFolder("/to");

    CopyCommand("", URL::fileURL("/from"), URL::fileURL("/to/x")).execute();

    EXPECT_TRUE(mac.files.has("/to/x"));
    EXPECT_TRUE(mac.files.has(kRepair + "/to/x"));
    EXPECT_TRUE(mac.files.has("/from"));
    EXPECT_EQ(mac.log.lines,
              (Lines{copyLine("/from", "/to/x"), backupLine("/to/x"), copyLine("/to/x", kRepair + "/to/x")}));
    EXPECT_EQ(mac.calls, (CallList{{"copy", "/from"},
                                   {"chown", "/to/x"},
                                   {"chown contents of", "/to/x"},
                                   {"seteuid", 0},
                                   {"create all", kRepair},
                                   {"seteuid", 0},
                                   {"chmod", kRepair, 0},
                                   {"chown", kRepair},
                                   {"seteuid", 0},
                                   {"create all", kRepair + "/to"},
                                   {"seteuid", 0},
                                   {"copy", "/to/x"},
                                   {"chown", kRepair + "/to/x"},
                                   {"chown contents of", kRepair + "/to/x"}}));
}

TEST(CopyCommand, BacksUpAfterAFailedCopyAndGoesOnWithTheNextPair) {
    FakeMac mac;
    mac.files.addFile("/second");
    mac.files.addFolder("/to");

    CopyCommand("", std::vector<CopyCommand::Item>{{URL::fileURL("/first"), URL::fileURL("/to/1")},
                                                   {URL::fileURL("/second"), URL::fileURL("/to/2")}})
        .execute();

    EXPECT_EQ(
        mac.log.lines,
        (Lines{
            copyLine("/first", "/to/1"), installerLine("Error: \"/first\" does not exist"),
            installerLine("Chown failed for path file:///to/1 and set errno to 9."), backupLine("/to/1"),
            copyLine("/to/1", kRepair + "/to/1"), installerLine("Error: \"/to/1\" does not exist"),
            installerLine("Chown failed for path "
                          "file:///Library/Application%20Support/NORVIK/SNT/Repair/to/1 and set errno to 9."),
            copyLine("/second", "/to/2"), backupLine("/to/2"), copyLine("/to/2", kRepair + "/to/2")}));
    EXPECT_TRUE(mac.files.has("/to/2"));
    EXPECT_TRUE(mac.files.has(kRepair + "/to/2"));
}

TEST(CopyCommand, DecodesAndExecutesAnEmptyListAsANoOp) {
    FakeMac mac;
    const auto command =
        afterTheWire<CopyCommand>(CopyCommand("Nothing...", std::vector<CopyCommand::Item>{}));

    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->itemsToCopy(), std::vector<CopyCommand::Item>{});
    command->execute();
    EXPECT_EQ(mac.calls, CallList{});
    EXPECT_EQ(mac.log.lines, Lines{});
}

// On the wire

TEST(CopyCommand, KeepsPairsAndDescriptionOnTheWire) {
    const CopyCommand sent("Copying...",
                           std::vector<CopyCommand::Item>{{URL::fileURL("/a"), URL::fileURL("/b")},
                                                          {URL::fileURL("/c d"), URL::fileURL("/e")}});

    const auto received = afterTheWire<CopyCommand>(sent);

    ASSERT_NE(received, nullptr);
    EXPECT_EQ(received->itemsToCopy(), sent.itemsToCopy());
    EXPECT_EQ(received->commandDescription(), "Copying...");
    EXPECT_EQ(received->weight(), 1);
}

TEST(CopyCommand, IgnoresExtraElementsOfTheLongerArray) {
    const ForeignCommand archived(CopyCommand::staticClass(), [](Base::Coder& coder) {
        coder.encodeURLs("source", urls({"/a"}));
        coder.encodeURLs("destination", urls({"/b", "/c"}));
        coder.encodeString("commandDescription", "");
    });

    const auto command = afterTheWire<CopyCommand>(archived);

    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->itemsToCopy(),
              (std::vector<CopyCommand::Item>{{URL::fileURL("/a"), URL::fileURL("/b")}}));
}

TEST(CopyCommand, DoesNotDecodeWhenAKeyIsMissingOrOfTheWrongType) {
    const std::vector<std::function<void(Base::Coder&)>> faults{
        [](Base::Coder& coder) {
            coder.encodeURLs("destination", urls({"/b"}));
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) {
            coder.encodeURLs("source", urls({"/a"}));
            coder.encodeString("commandDescription", "");
        },
        [](Base::Coder& coder) {
            coder.encodeURLs("source", urls({"/a"}));
            coder.encodeURLs("destination", urls({"/b"}));
        },
        [](Base::Coder& coder) {
            coder.encodeURLs("source", urls({"/a"}));
            coder.encodeBools("destination", {true});
            coder.encodeString("commandDescription", "");
        }};
    for (std::size_t i = 0; i < faults.size(); ++i) {
        EXPECT_EQ(afterTheWire<CopyCommand>(ForeignCommand(CopyCommand::staticClass(), faults[i])), nullptr)
            << i;
    }
}

}  // namespace
