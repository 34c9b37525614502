#include <gtest/gtest.h>

#include <type_traits>

#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/LaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "unit/InstallCommon/CommandCoding.h"

namespace {

using namespace InstallCommon;
using namespace NorvikCommon;
using Base::URL;
using CommandCodingTests::kJob;

TEST(CommandInitializers, ThatCommandsDoNotOfferDoNotExist) {
    EXPECT_FALSE(std::is_default_constructible_v<CommandConcrete>);
    EXPECT_FALSE((std::is_constructible_v<RemoveCommand, std::string>));
    EXPECT_FALSE((std::is_constructible_v<CopyCommand, std::string>));
    EXPECT_FALSE((std::is_constructible_v<LaunchdJobCommand, std::string>));
    EXPECT_FALSE((std::is_constructible_v<KillProcessCommand, std::string>));
    EXPECT_FALSE((std::is_constructible_v<UnloadKextCommand, std::string>));
    EXPECT_TRUE((std::is_constructible_v<UpdateLaunchServices, std::string>));
}

TEST(CommandInitializers, ConveniencesBuildUnconditionalItems) {
    const RemoveCommand one("d", URL::fileURL("/a"));
    EXPECT_EQ(one.itemsToRemove(), (std::vector<RemoveCommand::Item>{{URL::fileURL("/a"), false}}));
    const RemoveCommand two("d", std::vector{URL::fileURL("/a"), URL::fileURL("/b")});
    EXPECT_EQ(two.itemsToRemove(),
              (std::vector<RemoveCommand::Item>{{URL::fileURL("/a"), false}, {URL::fileURL("/b"), false}}));
    const CopyCommand copy("d", URL::fileURL("/a"), URL::fileURL("/b"));
    EXPECT_EQ(copy.itemsToCopy(), (std::vector<CopyCommand::Item>{{URL::fileURL("/a"), URL::fileURL("/b")}}));
    EXPECT_EQ(copy.weight(), 1);
}

TEST(CommandDeathTest, ExecuteOfTheBaseSaysShouldBeOverriden) {
    EXPECT_DEATH(CommandConcrete("d").execute(), "^Fatal error: Should be overriden by subclasses\\.\n$");
}

TEST(CommandDeathTest, ExecuteOfAPlainJobCommandSaysShouldBeOverriden) {
    EXPECT_DEATH(LaunchdJobCommand("d", kJob, false).execute(),
                 "^Fatal error: Should be overriden by subclasses\\.\n$");
}

}  // namespace
