// macsim payload and what macsim install demands of one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/ProductMac.h"
#include "support/WholeFile.h"

namespace {

namespace fs = std::filesystem;
using namespace SystemTests;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;
using TestSupport::contentsOf;
using TestSupport::ProgramResult;
using TestSupport::runProgram;

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

void expectOneLine(const ProgramResult& result, const std::string& what) {
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "macsim: " + what + "\n");
}

TEST(Payload, HoldsTheProductUnderTheNamesThatAnInstallationDemands) {
    const ProductMac mac({});
    const std::string payload = mac.makePayload("7.1/7100");
    EXPECT_THAT(namesIn(payload), UnorderedElementsAre("Applications", "LaunchdJobs", "SupportFiles"));
    EXPECT_THAT(namesIn(payload + "/Applications"), ElementsAre("Sentrel.app"));
    EXPECT_THAT(namesIn(payload + "/LaunchdJobs"),
                UnorderedElementsAre("com.norvik.TrayMenu.plist", "com.norvik.NorvikAgent.plist",
                                     "com.norvik.containmentd.plist", "com.norvik.fileaccessd.plist"));
    EXPECT_THAT(namesIn(payload + "/SupportFiles"),
                UnorderedElementsAre("settings.plist", "bases.nvb", "Scan with Sentrel.workflow"));
    const std::string contents = payload + "/Applications/Sentrel.app/Contents";
    for (const std::string& bundle :
         {std::string(), std::string("/Applications/Uninstall Sentrel.app/Contents")}) {
        const std::string information = contentsOf(contents + bundle + "/Info.plist");
        EXPECT_THAT(information, HasSubstr("<string>7.1</string>")) << bundle;
        EXPECT_THAT(information, HasSubstr("<string>7100</string>")) << bundle;
    }
    EXPECT_TRUE(
        fs::exists(contents + "/Applications/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel"));
}

TEST(Payload, HasTheConsoleThatAMacIsCreatedWith) {
    const ProductMac mac({"--installed", "current"});
    const auto listing = [](const std::string& folder) {
        std::set<std::string> names;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
            names.insert(entry.path().string().substr(folder.size()));
        }
        return names;
    };
    EXPECT_EQ(listing(mac.makePayload("6.4/640") + "/Applications/Sentrel.app"),
              listing(mac.path("/Applications/Sentrel.app")));
}

TEST(Payload, OfRealSizeHasTheAmountOfTheProduct) {
    const ProductMac mac({});
    const std::string payload = mac.scratch() + "/payload";
    // On a terminal; it shows how many files there are so far, and wipes the line at the end.
    const auto made =
        runProgram({"script", "-qec", mac.macsim() + " payload '" + payload + "' --size real", "/dev/null"});
    EXPECT_EQ(made.status, 0);
    EXPECT_THAT(made.out,
                testing::AllOf(testing::StartsWith("\r\x1b[K250 files...\r\x1b[K500 files..."),
                               HasSubstr("\r\x1b[K12000 files..."), testing::EndsWith("files...\r\x1b[K")));
    std::size_t files = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(payload)) {
        files += entry.is_regular_file() ? 1 : 0;
    }
    EXPECT_GT(files, 12000U);
    const std::string quiet = mac.scratch() + "/small";
    EXPECT_EQ(runProgram({mac.macsim(), "payload", quiet}).err, "");
    EXPECT_GT(fs::file_size(payload + "/SupportFiles/bases.nvb"), std::uintmax_t{150} << 20);
}

TEST(Payload, IsNeverMadeOverSomethingElse) {
    const ProductMac mac({});
    const std::string folder = mac.scratch() + "/payload";
    fs::create_directory(folder);
    std::ofstream(folder + "/precious") << "keep";
    expectOneLine(runProgram({mac.macsim(), "payload", folder}), folder + " is not empty");
    EXPECT_THAT(namesIn(folder), ElementsAre("precious"));
    fs::remove(folder + "/precious");
    EXPECT_EQ(runProgram({mac.macsim(), "payload", folder}).status, 0);
    EXPECT_TRUE(fs::exists(folder + "/Applications"));
    EXPECT_THAT(namesIn(mac.scratch()), UnorderedElementsAre("mac", "payload"));
}

TEST(Payload, ThatIsNotWholeIsRefusedBeforeTheMacIsTouched) {
    ProductMac mac({});
    const std::string payload = mac.makePayload("6.4/640");
    expectOneLine(mac.install(payload + "/none"), payload + "/none is not a folder");
    fs::remove(payload + "/SupportFiles/bases.nvb");
    expectOneLine(mac.install(payload), payload + " is not a payload: SupportFiles/bases.nvb is missing");
    std::ofstream(payload + "/SupportFiles/bases.nvb") << "bases";
    std::ofstream(payload + "/Applications/Sentrel.app/Contents/Info.plist") << "nonsense";
    expectOneLine(mac.install(payload), payload + " is not a payload: its application has no version");
    EXPECT_TRUE(mac.log().empty());
    EXPECT_TRUE(mac.state().empty());
}

TEST(Payload, GoesIntoNothingButASimulatedMac) {
    ProductMac mac({});
    const std::string payload = mac.makePayload("6.4/640");
    expectOneLine(runProgram({mac.macsim(), "install", payload, "--payload", payload}),
                  payload + " is not a simulated Mac");
    EXPECT_THAT(namesIn(payload), UnorderedElementsAre("Applications", "LaunchdJobs", "SupportFiles"));
}

TEST(Payload, NeverLeavesTheMacThroughALink) {
    ProductMac mac({});
    const std::string outside = mac.scratch() + "/outside";
    fs::create_directory(outside);
    fs::remove(mac.path("/Volumes"));
    fs::create_directory_symlink(outside, mac.path("/Volumes"));
    EXPECT_EQ(mac.install(mac.makePayload("6.4/640")).status, 1);
    EXPECT_TRUE(fs::is_empty(outside));
}

TEST(Payload, OfAnInstallationThatWasKilledIsReplaced) {
    ProductMac mac({});
    mac.put("/Volumes/Install Sentrel/Payload/Applications/left", "behind");
    EXPECT_EQ(mac.install(mac.makePayload("6.4/640"), {"--fault", "authorization"}).status, 1);
    EXPECT_TRUE(fs::is_empty(mac.path("/Volumes")));
}

}  // namespace
