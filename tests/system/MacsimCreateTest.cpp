#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/PropertyList.h"
#include "support/SimulatedMac.h"

namespace {

namespace fs = std::filesystem;
using TestSupport::SimulatedMac;

std::vector<std::string> productPaths(SimulatedMac& mac) {
    EXPECT_EQ(mac.run({}, {"true"}).status, 0);
    return mac.state().at("productPaths").get<std::vector<std::string>>();
}

bool contains(const std::vector<std::string>& list, const std::string& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

struct GenerationCase {
    const char* generation;
    std::vector<const char*> items;
    const char* absent;
};

class MacsimGeneration : public ::testing::TestWithParam<GenerationCase> {};

TEST_P(MacsimGeneration, LiesInItsOwnPlacesWithTheCommonData) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create({"--installed", GetParam().generation, "--without-uninstaller"}).status, 0);
    for (const char* item : GetParam().items) {
        EXPECT_TRUE(mac.exists(item)) << item;
    }
    EXPECT_FALSE(mac.exists(GetParam().absent)) << GetParam().absent;
    for (const char* item :
         {"/Users/Shared/Norvik", "/Library/Application Support/NORVIK/SNT/Quarantine",
          "/Library/Application Support/NORVIK/SNT/settings.plist",
          "/Library/Application Support/NORVIK/SNT/bases.nvb",
          "/Library/Application Support/NORVIK/SNT/Repair/Applications/Sentrel.app/Contents/MacOS/Sentrel",
          "/Library/PrivilegedHelperTools/com.norvik.UninstallerHelper",
          "/Library/LaunchDaemons/com.norvik.SolutionUpdaterHelper.plist"}) {
        EXPECT_TRUE(mac.exists(item)) << item;
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, MacsimGeneration,
    ::testing::Values(
        GenerationCase{
            "current",
            {"/Applications/Sentrel.app/Contents/MacOS/Sentrel",
             "/Applications/Sentrel.app/Contents/Private/FileAccessDaemon.bundle/Contents/Resources/"
             "FileAccessFilter.kext/Contents/Info.plist",
             "/Library/LaunchAgents/com.norvik.NorvikAgent.plist",
             "/Library/Services/Scan with Sentrel.workflow"},
            "/Library/Extensions/FileAccessFilter.kext"},
        GenerationCase{"norvik-apps",
                       {"/Applications/Norvik/Sentrel.app/Contents/MacOS/NORVIK Antivirus",
                        "/Applications/Norvik/Sentrel Scanner.app",
                        "/Library/Services/Scan with NORVIK Antivirus.workflow"},
                       "/Applications/Sentrel.app"},
        GenerationCase{"antivir",
                       {"/Library/Application Support/Norvik/AntiVir/Agent.app/Contents/MacOS/Agent",
                        "/Library/LaunchAgents/com.norvik.TrayMenu.plist"},
                       "/Library/Application Support/Norvik/Antivirus"},
        GenerationCase{"antivirus",
                       {"/Library/Application Support/Norvik/Antivirus/TrayMenu.app",
                        "/Library/Application Support/Norvik/AntiVirus/FileAccessDaemon",
                        "/Library/LaunchDaemons/com.norvik.fileaccessdaemon.plist"},
                       "/Library/Application Support/Norvik/AntiVir"},
        GenerationCase{"snt-plain",
                       {"/Library/Application Support/NORVIK/SNT/FileAccessDaemon",
                        "/Library/LaunchDaemons/com.norvik.FileAccessDaemon.plist"},
                       "/Applications/NORVIK"},
        GenerationCase{
            "snt-folder",
            {"/Library/Application Support/NORVIK/SNT/FileAccessDaemon/Agent.app/Contents/MacOS/Agent"},
            "/Library/LaunchDaemons/com.norvik.FileAccessDaemon.plist"},
        GenerationCase{
            "snt-bundle",
            {"/Library/Application Support/NORVIK/SNT/FileAccessDaemon.bundle/Contents/MacOS/fileaccessd",
             "/Applications/NORVIK/SNT/View Logs.app", "/Applications/NORVIK/SNT/TrayMenu.app",
             "/Library/Extensions/FileAccessFilter.kext"},
            "/Applications/Norvik"}),
    [](const auto& info) {
        std::string name = info.param.generation;
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

TEST(MacsimCreate, AllGenerationsTogetherMakeEveryCataloguePathExist) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create({"--installed", "all", "--without-uninstaller"}).status, 0);
    EXPECT_EQ(productPaths(mac).size(), 55U);
    EXPECT_TRUE(fs::is_directory(mac.path("/Library/Application Support/NORVIK/SNT/FileAccessDaemon")));
}

TEST(MacsimCreate, AnEmptyMacHasNothingOfTheProduct) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create({"--empty"}).status, 0);
    EXPECT_TRUE(productPaths(mac).empty());
    EXPECT_TRUE(mac.jobs("system").empty());
    EXPECT_TRUE(mac.processes().empty());
}

TEST(MacsimCreate, GivesBundlesTheVersionAsked) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create({"--installed", "current", "--without-uninstaller", "--version", "6.3/1234"}).status,
              0);
    for (const char* bundle : {"", "/Contents/Applications/View Logs.app"}) {
        const auto info = Simulator::parsePropertyList(
            mac.contents(std::string("/Applications/Sentrel.app") + bundle + "/Contents/Info.plist"));
        ASSERT_TRUE(info.has_value());
        EXPECT_EQ(Simulator::stringOf(*info, "CFBundleShortVersionString"), "6.3");
        EXPECT_EQ(Simulator::stringOf(*info, "CFBundleVersion"), "1234");
    }
}

TEST(MacsimCreate, WritesInformationListsInBothForms) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create({"--installed", "current", "--without-uninstaller"}).status, 0);
    EXPECT_TRUE(mac.contents("/Applications/Sentrel.app/Contents/Info.plist").starts_with("<?xml"));
    EXPECT_TRUE(
        mac.contents("/Applications/Sentrel.app/Contents/Applications/View Logs.app/Contents/Info.plist")
            .starts_with("bplist00"));
}

TEST(MacsimCreate, CopiesTheUninstallerAsRootsAlone) {
    SimulatedMac mac;
    const std::string bundle = mac.scratch() + "/Some.app/Contents/MacOS";
    fs::create_directories(bundle);
    fs::copy_file(SimulatedMac::macsim(), bundle + "/Uninstall Sentrel");
    fs::permissions(bundle + "/Uninstall Sentrel", fs::perms::all);
    std::ofstream(mac.scratch() + "/Some.app/Contents/Info.plist") << "<plist/>";
    ASSERT_EQ(mac.create({"--installed", "current", "--uninstaller", mac.scratch() + "/Some.app"}).status, 0);
    struct stat status {};
    ASSERT_EQ(
        ::stat(
            mac.path("/Applications/Sentrel.app/Contents/Applications/Uninstall Sentrel.app/Contents/MacOS/"
                     "Uninstall Sentrel")
                .c_str(),
            &status),
        0);
    EXPECT_EQ(status.st_mode & 07777U, 0755U);
}

TEST(MacsimCreate, MakesTheUsersAsked) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create({"--users", "dora:601,emil:602:logged-out"}).status, 0);
    const auto result =
        mac.shell("getent passwd 601 602; ls -ld /Users/dora | cut -d' ' -f3; launchctl print gui/602");
    EXPECT_EQ(result.out,
              "dora:x:601:20:dora:/Users/dora:/bin/sh\nemil:x:602:20:emil:/Users/emil:/bin/sh\ndora\n");
    EXPECT_EQ(result.status, 112);
    EXPECT_TRUE(mac.state().at("jobs").contains("gui/601"));
    EXPECT_FALSE(mac.state().at("jobs").contains("gui/602"));
}

TEST(MacsimCreate, RunsTheApplicationsAskedAsTheFirstUser) {
    SimulatedMac mac;
    ASSERT_EQ(
        mac.create({"--installed", "current", "--without-uninstaller", "--running", "Sentrel,View Logs"})
            .status,
        0);
    ASSERT_EQ(mac.run({}, {"true"}).status, 0);
    std::vector<std::string> ofAlice;
    const auto state = mac.state();
    for (const auto& process : state.at("processes")) {
        if (process.at("uid") == 501) {
            ofAlice.push_back(process.at("name"));
        }
    }
    EXPECT_TRUE(contains(ofAlice, "Sentrel"));
    EXPECT_TRUE(contains(ofAlice, "View Logs"));
    EXPECT_FALSE(contains(ofAlice, "Run Diagnostics"));
}

TEST(MacsimCreate, LaysDownOtherAntivirusProducts) {
    SimulatedMac mac;
    ASSERT_EQ(mac.create({"--other-antivirus", "app", "--other-antivirus", "process", "--other-antivirus",
                          "kav_agent2", "--other-antivirus", "/Library/Bitdefender/AVP/AntivirusforMac.app"})
                  .status,
              0);
    ASSERT_EQ(mac.run({}, {"true"}).status, 0);
    EXPECT_TRUE(mac.exists("/Applications/ESET Cyber Security.app"));
    EXPECT_TRUE(mac.exists("/Library/Bitdefender/AVP/AntivirusforMac.app"));
    EXPECT_EQ(mac.processes(), (std::vector<std::string>{"esets_gui", "kav_agent2"}));
}

}  // namespace
