#include <gtest/gtest.h>

#include "Base/Archive/KeyedArchiver.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"
#include "support/FakeMac.h"

namespace {

using namespace NorvikCommon;
using Base::URL;

class ProductComponents : public testing::Test {
  protected:
    TestSupport::FakeMac mac_;
};

using FilesystemItemInfoTest = ProductComponents;
using BundleInfoTest = ProductComponents;
using LaunchdInfoTest = ProductComponents;
using ApplicationInfoTest = ProductComponents;
using DaemonInfoTest = ProductComponents;
using BundleDaemonInfoTest = ProductComponents;
using KextInfoTest = ProductComponents;

TEST_F(FilesystemItemInfoTest, IsNamedByTheLastPathComponent) {
    const auto item =
        FilesystemItemInfo::itemWithPath(URL::fileURL("/Library/LaunchDaemons/com.norvik.example.plist"));
    EXPECT_EQ(item.name, "com.norvik.example.plist");
    EXPECT_EQ(item.location, URL::fileURL("/Library/LaunchDaemons/com.norvik.example.plist"));
}

TEST_F(BundleInfoTest, DerivesItsFoldersFromItsLocation) {
    const auto bundle = BundleInfo::bundleWithPath(URL::fileURL("/A/B.app"), "id");
    EXPECT_EQ(bundle.name, "B.app");
    EXPECT_EQ(bundle.bundleId, "id");
    EXPECT_EQ(bundle.contents(), URL::fileURL("/A/B.app/Contents"));
    EXPECT_EQ(bundle.executables(), URL::fileURL("/A/B.app/Contents/MacOS"));
    EXPECT_EQ(bundle.resources(), URL::fileURL("/A/B.app/Contents/Resources"));
    EXPECT_EQ(bundle.contentsSubdirectory("X"), URL::fileURL("/A/B.app/Contents/X"));
    EXPECT_EQ(bundle.applications(), URL::fileURL("/A/B.app/Contents/Applications"));
    EXPECT_EQ(bundle.privateItems(), URL::fileURL("/A/B.app/Contents/Private"));
}

TEST_F(BundleInfoTest, WithoutALocationHasNoFolders) {
    EXPECT_EQ(BundleInfo().contents(), std::nullopt);
    EXPECT_EQ(BundleInfo().executables(), std::nullopt);
}

TEST_F(BundleInfoTest, AnEmptyIdentifierIsKept) {
    EXPECT_EQ(BundleInfo::bundleWithPath(URL::fileURL("/A"), "").bundleId, "");
}

TEST_F(LaunchdInfoTest, LabelComesFromTheNameWhateverTheBundleIdentifierIs) {
    const auto job = LaunchdInfo::launchdWithName("TrayMenu", URL::fileURL("/Library/LaunchAgents"));
    EXPECT_EQ(job.label, "com.norvik.TrayMenu");
    EXPECT_EQ(job.plistLocation(), URL::fileURL("/Library/LaunchAgents/com.norvik.TrayMenu.plist"));
    const auto agent = BundleDaemonInfo::guiAgentWithName("TrayMenu", URL::fileURL("/A"), "com.NORVIK.Other");
    EXPECT_EQ(agent.launchd, job);
}

TEST_F(LaunchdInfoTest, NameKeepsItsCase) {
    EXPECT_EQ(LaunchdInfo::launchdWithName("FileAccessDaemon", URL::fileURL("/L")).label,
              "com.norvik.FileAccessDaemon");
    EXPECT_EQ(LaunchdInfo::launchdWithName("fileaccessd", URL::fileURL("/L")).label,
              "com.norvik.fileaccessd");
}

TEST_F(LaunchdInfoTest, WithLabelTakesLabelAndPlistAsTheyAre) {
    const auto job = LaunchdInfo::launchdWithLabel("a.b", URL::fileURL("/L/other.plist"));
    EXPECT_EQ(job.label, "a.b");
    EXPECT_EQ(job.plist->name, "other.plist");
}

TEST_F(ApplicationInfoTest, ExecutableNameAndBundleNameNeedNotAgree) {
    const auto app = ApplicationInfo::appWithName("NORVIK Antivirus",
                                                  URL::fileURL("/Applications/Norvik/Sentrel.app"), "");
    EXPECT_EQ(app.executable->location,
              URL::fileURL("/Applications/Norvik/Sentrel.app/Contents/MacOS/NORVIK Antivirus"));
    EXPECT_EQ(app.bundle->name, "Sentrel.app");
}

TEST_F(ApplicationInfoTest, InADirectoryIsNamedAfterItself) {
    const auto app = ApplicationInfo::appWithName("View Logs", "id", URL::fileURL("/D"));
    EXPECT_EQ(app.bundle->location, URL::fileURL("/D/View Logs.app"));
    EXPECT_EQ(app.executable->location, URL::fileURL("/D/View Logs.app/Contents/MacOS/View Logs"));
}

TEST_F(DaemonInfoTest, HasItsPlistWhereItIsTold) {
    const URL dir = URL::fileURL("/D");
    EXPECT_EQ(DaemonInfo::daemonWithName("x", dir).launchd->plistLocation(),
              URL::fileURL("/Library/LaunchDaemons/com.norvik.x.plist"));
    EXPECT_EQ(DaemonInfo::agentWithName("x", dir).launchd->plistLocation(),
              URL::fileURL("/Library/LaunchAgents/com.norvik.x.plist"));
    EXPECT_EQ(DaemonInfo::daemonWithName("x", dir, URL::fileURL("/P")).launchd->plistLocation(),
              URL::fileURL("/P/com.norvik.x.plist"));
    EXPECT_EQ(DaemonInfo::daemonWithName("x", dir).executable->location, URL::fileURL("/D/x"));
}

TEST_F(BundleDaemonInfoTest, UsesTheBundleAsGiven) {
    const auto daemon = BundleDaemonInfo::daemonWithName("d", URL::fileURL("/D/Any.bundle"), "id");
    EXPECT_EQ(daemon.app->bundle->location, URL::fileURL("/D/Any.bundle"));
    EXPECT_EQ(daemon.app->executable->location, URL::fileURL("/D/Any.bundle/Contents/MacOS/d"));
    EXPECT_EQ(daemon.launchd->plistLocation(), URL::fileURL("/Library/LaunchDaemons/com.norvik.d.plist"));
}

TEST_F(BundleDaemonInfoTest, GuiAgentIsAnAppWithItsPlistAmongTheAgents) {
    const auto agent = BundleDaemonInfo::guiAgentWithName("Agent", URL::fileURL("/D"), "id");
    EXPECT_EQ(agent.app->bundle->location, URL::fileURL("/D/Agent.app"));
    EXPECT_EQ(agent.launchd->plistLocation(), URL::fileURL("/Library/LaunchAgents/com.norvik.Agent.plist"));
}

TEST_F(KextInfoTest, WithANameAloneLiesInLibraryExtensionsUnderItsOwnClassName) {
    const auto kext = KextInfo::kextWithName("FileAccessFilter", "com.norvik.kext.FileAccessFilter");
    EXPECT_EQ(kext.bundle->location, URL::fileURL("/Library/Extensions/FileAccessFilter.kext"));
    EXPECT_EQ(kext.bundle->name, "FileAccessFilter.kext");
    EXPECT_EQ(kext.bundle->bundleId, "com.norvik.kext.FileAccessFilter");
    EXPECT_EQ(kext.ioClassName, "FileAccessFilter");
}

TEST_F(KextInfoTest, TakesClassNameAndPlaceWhenGiven) {
    const auto kext = KextInfo::kextWithName("F", "Io", URL::fileURL("/E"), "id");
    EXPECT_EQ(kext.bundle->location, URL::fileURL("/E/F.kext"));
    EXPECT_EQ(kext.ioClassName, "Io");
}

/// Whether the archive of the record has the key: a property list's string, its length before its characters.
template <class Record>
bool isWrittenWith(const Record& record, const std::string& key) {
    const Base::CodedRecord<Record> object(record);
    const Base::CodedObject* const list[] = {&object};
    const std::vector<std::uint8_t> bytes = Base::archivedArray(list);
    const std::string archive(bytes.begin(), bytes.end());
    return archive.find(static_cast<char>(0x50 + key.size()) + key) != std::string::npos;
}

TEST_F(ProductComponents, APropertyWithoutAValueIsWrittenUnderItsKeyAsNil) {
    EXPECT_TRUE(isWrittenWith(FilesystemItemInfo(), "name"));
    EXPECT_TRUE(isWrittenWith(FilesystemItemInfo(), "location"));
    EXPECT_TRUE(isWrittenWith(BundleInfo(), "bundleId"));
    EXPECT_TRUE(isWrittenWith(LaunchdInfo(), "label"));
    EXPECT_TRUE(isWrittenWith(LaunchdInfo(), "plist"));
    EXPECT_TRUE(isWrittenWith(KextInfo(), "bundle"));
    EXPECT_TRUE(isWrittenWith(KextInfo(), "ioClassName"));
    EXPECT_FALSE(isWrittenWith(KextInfo(), "name"));
}

}  // namespace
