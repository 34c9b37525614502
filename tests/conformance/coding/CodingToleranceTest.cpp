#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "ArchiveBuilder.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "CodingFaults.h"
#include "CodingSamples.h"
#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"
#include "SystemArchives.h"

// What strangers may send: the carriers refuse what the program's own unarchiver refuses, and take what it
// takes.

namespace {

using namespace CodingSamples;
using namespace InstallCommon;
using namespace NorvikCommon;
using Base::Coder;
using Base::URL;
using CodingFaultTests::describe;
using CodingFaultTests::removal;

TEST(FailedCoder, MakesAKeyAFaultAndNotAMissingOne) {
    EXPECT_EQ(SystemArchives::faultOfFailedCoder(), "key \"root\" cannot be decoded: it has failed before");
}

// The same lists from both writers, read by both readers: four ways to one result.
void expectTaken(const std::function<Base::CodedObjectList()>& sent, const Base::CodedObjectList& expected) {
    for (const Bytes& archive : {archiveOf(sent()), SystemArchives::archive(sent())}) {
        std::string refusal;
        const auto ours = Base::unarchivedArray(archive, allowedCommandListClasses(), refusal);
        ASSERT_TRUE(ours.has_value()) << refusal;
        EXPECT_EQ(archiveOf(*ours), archiveOf(expected));
        const auto theirs = SystemArchives::read(archive, allowedCommandListClasses(), refusal);
        ASSERT_TRUE(theirs.has_value()) << refusal;
        EXPECT_EQ(archiveOf(*theirs), archiveOf(expected));
    }
}

TEST(TolerantCoding, MissingKeysOfARecordLeaveItEmpty) {
    expectTaken([] { return foreign(KextInfo::codedClass(), [](Coder&) {}); },
                listOf(std::make_unique<Base::CodedRecord<KextInfo>>(KextInfo{})));
}

TEST(TolerantCoding, AnAbsentBooleanIsFalse) {
    expectTaken(
        [] {
            return foreign(StartLaunchdJobCommand::staticClass(), [](Coder& coder) {
                coder.encodeObject("agent", Base::CodedRecord(LaunchdInfo{}));
                describe(coder);
            });
        },
        listOf(std::make_unique<StartLaunchdJobCommand>("...", LaunchdInfo{}, false)));
}

TEST(TolerantCoding, ExtraElementsOfTheLongerListAreIgnored) {
    const URL url = URL::fileURL("/a");
    expectTaken(
        [&url] {
            return foreign(RemoveCommand::staticClass(), [&url](Coder& coder) {
                coder.encodeURLs("source", std::vector<URL>{url, url});
                coder.encodeBools("destination", {true});
                describe(coder);
            });
        },
        listOf(std::make_unique<RemoveCommand>("...", std::vector<RemoveCommand::Item>{{url, true}})));
}

TEST(TolerantCoding, ABundleStandsForAnItem) {
    const BundleInfo bundle = BundleInfo::bundleWithPath(URL::fileURL("/a.app"), "id");
    expectTaken(
        [&bundle] {
            return foreign(ApplicationInfo::codedClass(), [&bundle](Coder& coder) {
                coder.encodeObject("executable", Base::CodedRecord(bundle));
            });
        },
        listOf(std::make_unique<Base::CodedRecord<ApplicationInfo>>(
            ApplicationInfo{std::nullopt, FilesystemItemInfo(bundle)})));
}

// What another writer may do and ours does not: one object under two references, numbers as booleans, a URL
// on a base, mutable containers.
Bytes sharedRecord() {
    ArchiveBuilder archive;
    const auto item =
        archive.object(archive.classNamed("BundleInfo"), {{"name", archive.ref(archive.string("n"))}});
    const auto app = archive.object(archive.classNamed("ApplicationInfo"),
                                    {{"bundle", archive.ref(item)}, {"executable", archive.ref(item)}});
    return archive.finish({app, item, app});
}

Bytes otherForms() {
    return removal(
        [](ArchiveBuilder& archive) {
            return archive.url("b%20c", archive.url("file://localhost/Library/A/"));
        },
        [](ArchiveBuilder& archive) { return archive.entry(archive.plist.integer(1)); });
}

TEST(TolerantCoding, AnObjectMayBeReferredToTwice) {
    std::string refusal;
    const auto ours = Base::unarchivedArray(sharedRecord(), allowedCommandListClasses(), refusal);
    ASSERT_TRUE(ours.has_value()) << refusal;
    const auto theirs = SystemArchives::read(sharedRecord(), allowedCommandListClasses(), refusal);
    ASSERT_TRUE(theirs.has_value()) << refusal;
    EXPECT_EQ(archiveOf(*theirs), archiveOf(*ours));
}

TEST(TolerantCoding, NumbersAndRelativeURLsAreRead) {
    std::string refusal;
    const auto theirs = SystemArchives::read(otherForms(), allowedCommandListClasses(), refusal);
    ASSERT_TRUE(theirs.has_value()) << refusal;
    EXPECT_EQ(archiveOf(*theirs),
              archiveOf(listOf(std::make_unique<RemoveCommand>(
                  "...", std::vector<RemoveCommand::Item>{{URL::fileURL("/Library/A/b c"), true}}))));
}

TEST(RefusedMessage, IsToldToTheObjectThatTheConnectionExports) {
    const Bytes archive = archiveOf(foreign(KillProcessCommand::staticClass(), describe));
    EXPECT_EQ(SystemArchives::refusalsHeard(archive, allowedCommandListClasses()),
              std::vector<std::string>{"_TtC13InstallCommon18KillProcessCommand: key \"kext\" is missing"});
}

TEST(RefusedMessage, IsNotToldOfAGoodOne) {
    const Bytes archive = archiveOf(listOf(std::make_unique<KillProcessCommand>("...", "process")));
    EXPECT_EQ(SystemArchives::refusalsHeard(archive, allowedCommandListClasses()),
              std::vector<std::string>{});
}

}  // namespace
