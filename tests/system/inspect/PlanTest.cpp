// sentrel-inspect plan on simulated Macs, compared with their contents and with the effects of a run.

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "LookedAtMac.h"
#include "support/InstallerLine.h"
#include "support/ProductMac.h"

namespace InspectTest {

namespace {

using TestSupport::installerLine;

namespace fs = std::filesystem;
using SystemTests::kInstalledUninstaller;
using TestSupport::ProgramResult;
using Lines = std::vector<std::string>;
using Names = std::set<std::string>;

struct Amount {
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
};

/// Counts the files of a tree again, in another way.
void count(const fs::path& tree, Amount& amount) {
    for (const auto& entry : fs::recursive_directory_iterator(tree)) {
        if (entry.is_regular_file() && !entry.is_symlink()) {
            ++amount.files;
            amount.bytes += entry.file_size();
        }
    }
}

/// Everything that the steps find and no earlier step removes, under one key.
Names found(const nlohmann::json& plan, const char* key) {
    Names names;
    for (const auto& step : plan.at("steps")) {
        for (const auto& finding : step.at("finds")) {
            if (finding.contains(key) && finding.at("goneWithStep").is_null()) {
                names.insert(finding.at(key).get<std::string>());
            }
        }
    }
    return names;
}

TEST(PlanOfAMac, ForetellsWhatARunTakesAway) {
    LookedAtMac mac({"--installed", "all", "--running", "Sentrel", "--users", "alice:501"});
    const ProgramResult result =
        mac.shell("sentrel-inspect plan --json; '" + kInstalledUninstaller + "' --silent");
    EXPECT_EQ(result.status, 0) << result.err;
    const auto plan = nlohmann::json::parse(result.out);
    EXPECT_EQ(plan.at("stepCount"), 75);
    EXPECT_EQ(plan.at("couldNotLook"), nlohmann::json::array());
    EXPECT_EQ(plan.at("isComplete"), true);
    Names removed;
    Names killed;
    const std::string kRemoved = installerLine("Removed at ");
    for (const std::string& line : mac.messages("com.norvik.InstallerHelper")) {
        if (line.starts_with(kRemoved)) {
            removed.insert(line.substr(kRemoved.size()));
        }
    }
    EXPECT_EQ(found(plan, "item"), removed);
    EXPECT_EQ(found(plan, "process"), Names{"/Applications/Sentrel.app/Contents/MacOS/Sentrel"});
    EXPECT_EQ(found(plan, "loadedExtension"), Names{"com.norvik.kext.FileAccessFilter"});
    // Two current labels and two earlier ones.
    EXPECT_EQ(plan.at("pauseSeconds"), 5 * 4);
}

TEST(PlanOfAMac, CountsEveryFileOnce) {
    const LookedAtMac mac({"--installed", "all"});
    const ProgramResult result = mac.inspectFolder({"plan", "--json", "--all"});
    EXPECT_EQ(result.status, 0) << result.err;
    const auto plan = jsonOf(result);
    EXPECT_EQ(plan.at("steps").size(), 75U);
    Amount expected;
    for (const char* folder :
         {"/Applications", "/Library/Application Support", "/Library/Extensions", "/Library/LaunchAgents",
          "/Library/LaunchDaemons", "/Library/PrivilegedHelperTools", "/Library/Services", "/Users/Shared"}) {
        count(mac.path(folder), expected);
    }
    EXPECT_EQ(plan.at("files"), expected.files);
    EXPECT_EQ(plan.at("bytes"), expected.bytes);
}

TEST(PlanOfAMac, ShowsASentenceWhereNothingIs) {
    LookedAtMac mac({"--empty"});
    const ProgramResult result = mac.inspect({"plan"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out,
              "0 of 75 steps find something: 0 B in 0 files.\n"
              "It takes a few seconds.\n");
}

TEST(PlanOfAMac, SaysWhatItCouldNotLookAt) {
    LookedAtMac mac({"--empty", "--users", "alice:501"});
    ASSERT_EQ(mac.shell("mkdir -p /Applications/NORVIK/SNT; chmod 700 /Applications/NORVIK").status, 0);
    const ProgramResult result = mac.inspect({"plan", "--json"}, "alice");
    EXPECT_EQ(result.status, 1);
    const auto plan = jsonOf(result);
    EXPECT_EQ(plan.at("isComplete"), false);
    const auto blind = plan.at("couldNotLook").get<Lines>();
    EXPECT_EQ(std::count(blind.begin(), blind.end(),
                         "\"/Applications/NORVIK/SNT\" could not be looked at: Permission denied"),
              1);
}

}  // namespace

}  // namespace InspectTest
