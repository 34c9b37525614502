#include "Find.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/FakeMac.h"

namespace {

using Inspect::find;
using Inspect::FindResult;
using Inspect::FoundRecord;
using Inspect::FoundStep;
using Lines = std::vector<std::string>;

class Find : public testing::Test {
  protected:
    static std::vector<std::size_t> steps(const std::string& what) {
        std::vector<std::size_t> numbers;
        for (const FoundStep& step : find(what).steps) {
            numbers.push_back(step.number);
        }
        return numbers;
    }

    TestSupport::FakeMac mac;
};

using Numbers = std::vector<std::size_t>;

TEST_F(Find, KnowsAJobByItsLabel) {
    const FindResult found = find("com.norvik.NorvikAgent");
    EXPECT_EQ(found.records, (std::vector<FoundRecord>{
                                 {"ComponentPathProvider.userAgent", "launchd.label", "", "current"},
                                 {"ComponentPathProvider.userAgent", "app.bundle.bundleId", "", "current"}}));
    EXPECT_EQ(found.steps, (std::vector<FoundStep>{{8, "StopLaunchdJobCommand",
                                                    "Unloading user agent com.norvik.NorvikAgent..."}}));
}

TEST_F(Find, KnowsAPropertyListByItsPath) {
    const std::string plist = "/Library/LaunchDaemons/com.norvik.FileAccessDaemon.plist";
    EXPECT_EQ(find(plist).records, (std::vector<FoundRecord>{{"ComponentPathProvider.legacyVersionsDaemons 2",
                                                              "launchd.plist.location", "", "snt-plain"}}));
    EXPECT_EQ(steps(plist), (Numbers{4, 71}));
}

TEST_F(Find, KnowsWhatLiesInsideAFolderOfTheProduct) {
    const FindResult found = find("/Users/Shared/Norvik/recent.txt");
    EXPECT_EQ(found.records, (std::vector<FoundRecord>{
                                 {"FeaturePathProvider.preferencesFolder", "", "/Users/Shared/Norvik", ""}}));
    EXPECT_EQ(steps("/Users/Shared/Norvik/recent.txt"), Numbers{74});
    EXPECT_EQ(steps("/Users/Shared/Norvik2"), Numbers{});
}

TEST_F(Find, KnowsAProcessByItsName) {
    const FindResult found = find("NORVIK Antivirus");
    EXPECT_EQ(found.records, (std::vector<FoundRecord>{{"ComponentPathProvider.legacyVersionsGuiApps 11",
                                                        "executable.name", "", "norvik-apps"}}));
    EXPECT_EQ(steps("NORVIK Antivirus"), Numbers{30});
}

TEST_F(Find, KnowsTheExtensionByIdentifierClassAndPath) {
    EXPECT_EQ(steps("com.norvik.kext.FileAccessFilter"), (Numbers{17, 18}));
    EXPECT_EQ(steps("FileAccessFilter"), (Numbers{17, 18}));
    EXPECT_EQ(steps("/Library/Extensions/FileAccessFilter.kext"), (Numbers{17, 45}));
    EXPECT_EQ(steps("/Library/Extensions/FileAccessFilter.kext/Contents/Info.plist"), (Numbers{17, 45}));
}

TEST_F(Find, TellsTheGenerationOfAnEarlierVersionsRecord) {
    const auto generationOf = [](const std::string& what) {
        const auto records = find(what).records;
        return std::find_if(records.begin(), records.end(),
                            [](const FoundRecord& record) { return record.inside.empty(); })
            ->generation;
    };
    EXPECT_EQ(generationOf("/Library/Application Support/Norvik/AntiVir/Agent.app"), "antivir");
    EXPECT_EQ(generationOf("/Library/Application Support/Norvik/Antivirus/TrayMenu.app"), "antivirus");
    EXPECT_EQ(generationOf("/Applications/NORVIK/SNT/View Logs.app"), "snt-bundle");
    EXPECT_EQ(generationOf("/Applications/Norvik/View Logs.app"), "norvik-apps");
    EXPECT_EQ(generationOf("/Applications/Sentrel.app"), "current");
    EXPECT_EQ(generationOf("/Users/Shared/Norvik"), "");
}

TEST_F(Find, KnowsTheHelperThatIsInNoList) {
    const FindResult found = find("com.norvik.SupportPrivilegedHelper");
    EXPECT_EQ(found.records, (std::vector<FoundRecord>{{"SupportPrivilegedHelper", "label", "", ""}}));
    EXPECT_TRUE(found.steps.empty());
    EXPECT_EQ(find("/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper").records,
              (std::vector<FoundRecord>{{"SupportPrivilegedHelper", "location", "", ""}}));
    const std::string package = "/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper.package";
    EXPECT_EQ(find(package + "/x").records,
              (std::vector<FoundRecord>{{"SupportPrivilegedHelper", "location", package, ""}}));
}

TEST_F(Find, KnowsNothingOfTheSystemsPlacesAndOfStrangers) {
    for (const char* what : {"/Library/LaunchDaemons", "/Applications", "/bin/launchctl", "com.example", "",
                             "/", "com.norvik", "COM.NORVIK.TRAYMENU"}) {
        EXPECT_TRUE(find(what).isEmpty()) << what;
    }
}

TEST_F(Find, ShowsWhatItFound) {
    EXPECT_EQ(findText(find("/Users/Shared/Norvik/a")),
              "Records\n"
              "  FeaturePathProvider.preferencesFolder\n"
              "    inside /Users/Shared/Norvik\n"
              "Steps of an uninstallation that touch it\n"
              "  74  Deleting support files and directories...\n");
    EXPECT_EQ(findText(find("com.norvik.SupportPrivilegedHelper")),
              "Records\n"
              "  SupportPrivilegedHelper, label\n"
              "No step of an uninstallation touches it.\n");
    EXPECT_EQ(findText(find("com.norvik.NorvikAgent")),
              "Records\n"
              "  ComponentPathProvider.userAgent, launchd.label, generation current\n"
              "  ComponentPathProvider.userAgent, app.bundle.bundleId, generation current\n"
              "Steps of an uninstallation that touch it\n"
              "   8  Unloading user agent com.norvik.NorvikAgent...\n");
}

TEST_F(Find, HoldsEverythingInJson) {
    EXPECT_EQ(findJson(find("/Users/Shared/Norvik/a")).dump(),
              R"({"formatVersion":1,"what":"/Users/Shared/Norvik/a","records":[{"record":)"
              R"("FeaturePathProvider.preferencesFolder","field":null,"inside":"/Users/Shared/Norvik",)"
              R"("generation":null}],"steps":[{"number":74,"class":"RemoveCommand","description":)"
              R"("Deleting support files and directories..."}]})");
    EXPECT_EQ(findJson(find("NORVIK Antivirus")).at("records").dump(),
              R"([{"record":"ComponentPathProvider.legacyVersionsGuiApps 11","field":"executable.name",)"
              R"("inside":null,"generation":"norvik-apps"}])");
}

}  // namespace
