#include "InstallCommon/XPC/InstallationHelperClient.h"

#include <gtest/gtest.h>

#include <limits>

#include "InstallCommon/CommandSuitsProvider.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/IntallHelper.h"
#include "support/CommandText.h"
#include "support/FakeMac.h"
#include "unit/InstallCommon/XPC/HelperClient.h"

namespace {

using HelperClientTests::HelperClient;
using InstallCommon::CommandList;
using InstallCommon::InstallationHelperClient;

CommandList weighing(std::initializer_list<std::int32_t> weights) {
    CommandList commands;
    for (const std::int32_t weight : weights) {
        auto command =
            std::make_unique<InstallCommon::KillProcessCommand>("weighs " + std::to_string(weight), "p");
        command->setWeight(weight);
        commands.push_back(std::move(command));
    }
    return commands;
}

TEST_F(HelperClient, StartsWithItsInitialValuesAndThePrivilegedInstallerHelper) {
    EXPECT_EQ(client_->machServiceName(), "com.norvik.InstallerHelper");
    EXPECT_EQ(InstallCommon::InstallHelper::machServiceName, "com.norvik.InstallerHelper");
    EXPECT_TRUE(client_->isServicePrivileged());
    EXPECT_FALSE(client_->progressNotificationBlock());
    EXPECT_EQ(client_->remoteObject(), nullptr);
    EXPECT_EQ(client_->totalCommandsWeight(), 0);
    EXPECT_EQ(client_->connection(), nullptr);
}

TEST_F(HelperClient, UninstallSendsTheUninstallAndCleanupListInOneMessage) {
    client_->uninstall();
    CommandList expected = InstallCommon::CommandSuitsProvider::makeUninstallCommands();
    for (auto& command : InstallCommon::CommandSuitsProvider::makeCleanupCommands()) {
        expected.push_back(std::move(command));
    }
    ASSERT_EQ(helper_.lists.size(), 1U);
    EXPECT_EQ(helper_.lists[0], TestSupport::commandTexts(expected));
    EXPECT_EQ(helper_.lists[0].size(), 75U);
    EXPECT_EQ(client_->totalCommandsWeight(), 75);
}

TEST_F(HelperClient, UninstallSetsTheInterfaceBeforeResumingAndTakesTheProxyAfterwards) {
    client_->uninstall();
    EXPECT_EQ(mac_.calls, (TestSupport::CallList{{"connection", "com.norvik.InstallerHelper", 4096},
                                                 {"set invalidation handler"},
                                                 {"set interruption handler"},
                                                 {"interface", "CommandExecuting"},
                                                 {"resume", "com.norvik.InstallerHelper"},
                                                 {"proxy"}}));
    EXPECT_NE(client_->remoteObject(), nullptr);
}

TEST_F(HelperClient, ReportsEachCommandWithTotalAndExecutedWeight) {
    recordReports();
    client_->send(weighing({2, 3, 5}));
    EXPECT_EQ(reports_,
              (std::vector<Report>{{"weighs 2", 10, 2}, {"weighs 3", 10, 5}, {"weighs 5", 10, 10}}));
}

TEST_F(HelperClient, ReportsNothingWithoutAProgressBlock) {
    client_->send(weighing({1}));
    EXPECT_EQ(reports_, std::vector<Report>());
    EXPECT_EQ(helper_.lists.size(), 1U);
}

TEST_F(HelperClient, AnEmptyListSendsAnEmptyArrayGivesTotal0AndNoReports) {
    recordReports();
    client_->send({});
    ASSERT_EQ(helper_.lists.size(), 1U);
    EXPECT_TRUE(helper_.lists[0].empty());
    EXPECT_EQ(client_->totalCommandsWeight(), 0);
    EXPECT_EQ(reports_, std::vector<Report>());
}

TEST_F(HelperClient, ASecondRunCountsOnFromTheFirstOnesSum) {
    recordReports();
    client_->send(weighing({1, 1}));
    client_->send(weighing({1}));
    ASSERT_EQ(reports_.size(), 3U);
    EXPECT_EQ(reports_[2], (Report{"weighs 1", 1, 3}));
    EXPECT_EQ(mac_.xpc.connections.size(), 2U);
}

TEST_F(HelperClient, WithoutAProxyOfTheRightProtocolNothingIsSentOrReported) {
    mac_.xpc.protocolOfProxies = "SomethingElse";
    recordReports();
    client_->uninstall();
    EXPECT_EQ(client_->remoteObject(), nullptr);
    EXPECT_TRUE(helper_.lists.empty());
    EXPECT_EQ(reports_, std::vector<Report>());
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
    EXPECT_EQ(client_->totalCommandsWeight(), 75);
}

TEST_F(HelperClient, ASecondConnectionWithoutAProxySendsNothingOverTheFirst) {
    client_->send(weighing({1}));
    EXPECT_NE(client_->remoteObject(), nullptr);
    mac_.xpc.protocolOfProxies = "SomethingElse";
    client_->send(weighing({1}));
    EXPECT_EQ(client_->remoteObject(), nullptr);
    EXPECT_EQ(mac_.xpc.connections.size(), 2U);
    EXPECT_EQ(helper_.lists.size(), 1U);
}

TEST_F(HelperClient, CannotUninstallWithNoInstallation) {
    EXPECT_FALSE(client_->canUninstall());
}

TEST_F(HelperClient, CanUninstallWhatMustBeOverinstalled) {
    mac_.files.addFolder("/Library/Application Support/NORVIK/SNT");
    EXPECT_TRUE(client_->canUninstall());
}

class HelperClientWithVersion : public HelperClient {
  protected:
    HelperClientWithVersion() {
        mac_.bundles.mainInfo = {{"CFBundleShortVersionString", "6.4"}, {"CFBundleVersion", "640"}};
        mac_.files.addFolder("/Library/Application Support/NORVIK/SNT");
        mac_.files.addFolder("/Applications/Sentrel.app");
    }
};

TEST_F(HelperClientWithVersion, CanUninstallAnOlderVersion) {
    install("6.3", "630");
    EXPECT_TRUE(client_->canUninstall());
}

TEST_F(HelperClientWithVersion, CanUninstallTheSameVersion) {
    install("6.4", "640");
    EXPECT_TRUE(client_->canUninstall());
}

TEST_F(HelperClientWithVersion, CannotUninstallANewerVersion) {
    install("6.5", "650");
    EXPECT_FALSE(client_->canUninstall());
}

TEST_F(HelperClientWithVersion, CanUninstallDoesNotLookAtOtherAntivirusProducts) {
    install("6.4", "640");
    mac_.files.addFolder("/Applications/ESET Cyber Security.app");
    EXPECT_TRUE(client_->canUninstall());
}

// Installing.

using HelperClientDeathTest = HelperClient;

TEST_F(HelperClientDeathTest, TheOtherInitializerIsUnimplemented) {
    EXPECT_DEATH(
        InstallationHelperClient("name", true),
        "^Fatal error: Use of unimplemented initializer 'init\\(machServiceName:isServicePrivileged:\\)' for "
        "class 'InstallCommon.InstallationHelperClient'\n$");
}

TEST_F(HelperClientDeathTest, AnOverflowOfTheTotalWeightIsFatal) {
    EXPECT_DEATH(client_->send(weighing({std::numeric_limits<std::int32_t>::max(), 1})),
                 "^Fatal error: 32-bit sum overflow\n$");
}

TEST_F(HelperClientDeathTest, AnOverflowOfTheExecutedWeightIsFatal) {
    client_->commandExecutingDidExecuteCommand("d", std::numeric_limits<std::int32_t>::max());
    EXPECT_DEATH(client_->commandExecutingDidExecuteCommand("d", 1), "^Fatal error: 32-bit sum overflow\n$");
}

}  // namespace
