#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/FakeMac.h"
#include "support/InstallerLine.h"
#include "unit/InstallCommon/CommandArchives.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;
using InstallCommon::UpdateLaunchServices;
using TestSupport::afterTheWire;
using TestSupport::CallList;
using TestSupport::FakeMac;
using TestSupport::ForeignCommand;

const std::string kTool =
    "/System/Library/Frameworks/CoreServices.framework/Frameworks/LaunchServices.framework/Support/"
    "lsregister";
const std::string kRegistered = "/Library/Application Support/NORVIK/SNT";

TEST(UpdateLaunchServices, RunsTheRegistrationToolWithExactlyThreeArguments) {
    FakeMac mac;

    UpdateLaunchServices("Updating system databases...").execute();

    ASSERT_EQ(mac.tasks.argumentVectors.size(), 1U);
    EXPECT_EQ(mac.tasks.argumentVectors.front(), (std::vector<std::string>{"-r", "-f", kRegistered}));
    EXPECT_EQ(
        mac.calls,
        (CallList{{"launch", kTool + " -r -f " + kRegistered}, {"wait"}, {"read output"}, {"read error"}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(UpdateLaunchServices, SucceedsWhateverTheToolReturns) {
    FakeMac mac;
    mac.tasks.results[kTool + " -r -f " + kRegistered] = {"scanned", "failed to scan", 2};

    UpdateLaunchServices("").execute();

    EXPECT_EQ(mac.calls.size(), 4U);
    EXPECT_EQ(mac.log.lines,
              (Lines{"[SNTM Installer]\nError description: failed to scan;\ntermination status: "
                     "2;\ntermination reason: exit.",
                     installerLine("Output: scanned")}));
}

TEST(UpdateLaunchServices, HasWeightOneAndKeepsItsDescriptionOnTheWire) {
    const UpdateLaunchServices sent("Updating system databases...");
    EXPECT_EQ(sent.weight(), 1);

    const auto received = afterTheWire<UpdateLaunchServices>(sent);

    ASSERT_NE(received, nullptr);
    EXPECT_EQ(received->commandDescription(), "Updating system databases...");
    EXPECT_EQ(received->weight(), 1);
}

TEST(UpdateLaunchServices, DoesNotDecodeWithoutADescription) {
    const ForeignCommand archived(UpdateLaunchServices::staticClass(), [](Base::Coder&) {});

    EXPECT_EQ(afterTheWire<UpdateLaunchServices>(archived), nullptr);
}

}  // namespace
