#include "InstallCommon/XPC/InstallationHelperClient.h"

#include <gtest/gtest.h>

#include <limits>

#include "InstallCommon/CommandLists.h"
#include "InstallCommon/CommandSuitsProvider.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/IntallHelper.h"
#include "support/CommandText.h"
#include "support/FakeHelper.h"
#include "support/FakeMac.h"

namespace {

using InstallCommon::CommandList;
using InstallCommon::InstallationHelperClient;

class HelperClient : public testing::Test {
  protected:
    HelperClient() { helper_.serve(mac_); }

    void install(const std::string& shortVersion, const std::string& build) {
        mac_.bundles.install("/Applications/Sentrel.app", shortVersion, build);
    }

    struct Report {
        std::string description;
        std::int32_t total;
        std::int32_t executed;
        friend bool operator==(const Report&, const Report&) = default;
    };

    void recordReports() {
        client_->setProgressNotificationBlock(
            [this](const std::string& description, std::int32_t total, std::int32_t executed) {
                reports_.push_back({description, total, executed});
            });
    }

    TestSupport::FakeMac mac_;
    TestSupport::FakeHelper helper_;
    std::shared_ptr<InstallationHelperClient> client_ = std::make_shared<InstallationHelperClient>();
    std::vector<Report> reports_;
};

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
    EXPECT_EQ(mac_.calls,
              (TestSupport::CallList{"connection com.norvik.InstallerHelper 4096", "set invalidation handler",
                                     "set interruption handler", "interface CommandExecuting",
                                     "resume com.norvik.InstallerHelper", "proxy"}));
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

using Check = InstallationHelperClient::EnvironmentCheck;
using Lines = std::vector<std::string>;

const std::string kFoundWithConsole = "[SNTM Installer] found installed version true, updatable: true";
const std::string kFoundWithoutConsole = "[SNTM Installer] found installed version true, updatable: false";

class InstallClient : public HelperClient {
  protected:
    InstallClient() {
        mac_.bundles.mainInfo = {{"CFBundleShortVersionString", "6.4"}, {"CFBundleVersion", "640"}};
    }

    void installedWithConsole(const std::string& shortVersion, const std::string& build) {
        mac_.files.addFolder("/Library/Application Support/NORVIK/SNT");
        mac_.files.addFolder("/Applications/Sentrel.app");
        install(shortVersion, build);
    }
    void runInstaller() { client_->install(Base::URL::fileURL("/payload"), "Apps", "Jobs", "Support"); }
    [[nodiscard]] Lines sent() const { return helper_.lists.empty() ? Lines() : helper_.lists.at(0); }

    const InstallCommon::PayloadLocations payload_ = InstallCommon::PayloadLocations::inDirectory(
        Base::URL::fileURL("/payload"), "Apps", "Jobs", "Support");
};

TEST_F(InstallClient, ACleanMacAllowsACleanInstall) {
    EXPECT_EQ(client_->checkInstallationEnvironment(), (Check{true, false, false}));
    EXPECT_EQ(mac_.log.lines, Lines());
}

TEST_F(InstallClient, AnOlderVersionWithItsConsoleIsUpdated) {
    installedWithConsole("6.3", "630");
    EXPECT_EQ(client_->checkInstallationEnvironment(), (Check{true, true, false}));
}

TEST_F(InstallClient, AnInstallationWithoutItsConsoleIsOverinstalled) {
    mac_.files.addFolder("/Library/Application Support/NORVIK/SNT");
    EXPECT_EQ(client_->checkInstallationEnvironment(), (Check{true, false, true}));
}

TEST_F(InstallClient, TheSameVersionRefusesTheInstallation) {
    installedWithConsole("6.4", "640");
    runInstaller();
    EXPECT_EQ(mac_.log.lines,
              (Lines{kFoundWithConsole, "[SNTM Installer] Has same or newer Norvik installed.",
                     "[SNTM Installer] Can not install antivirus."}));
    EXPECT_TRUE(mac_.xpc.connections.empty());
    EXPECT_TRUE(client_->canUninstall());
}

TEST_F(InstallClient, ANewerVersionRefusesBothInstallationAndUninstallation) {
    installedWithConsole("6.5", "650");
    runInstaller();
    EXPECT_EQ(mac_.log.lines,
              (Lines{kFoundWithConsole, "[SNTM Installer] Has same or newer Norvik installed.",
                     "[SNTM Installer] Can not install antivirus."}));
    EXPECT_FALSE(client_->canUninstall());
}

TEST_F(InstallClient, AnotherAntivirusRefusesTheInstallationRegardlessOfTheInstalledType) {
    mac_.files.addFolder("/Applications/ESET Cyber Security.app");
    installedWithConsole("6.3", "630");
    runInstaller();
    EXPECT_EQ(mac_.log.lines,
              (Lines{kFoundWithConsole, "[SNTM Installer] There is other antivirus installed.",
                     "[SNTM Installer] Can not install antivirus."}));
    EXPECT_TRUE(mac_.xpc.connections.empty());
    EXPECT_TRUE(client_->canUninstall());
}

TEST_F(InstallClient, CleanInstallSendsPreInstallInstallAndLaunchServices) {
    runInstaller();
    EXPECT_EQ(mac_.log.lines, Lines{"[SNTM Installer] Clean install..."});
    EXPECT_EQ(sent(), TestSupport::commandTexts(InstallCommon::CommandLists::cleanInstallation(payload_)));
    EXPECT_EQ(client_->totalCommandsWeight(), 13);
}

TEST_F(InstallClient, UpdateSendsUninstallInstallAndLaunchServicesOnly) {
    installedWithConsole("6.3", "630");
    runInstaller();
    EXPECT_EQ(mac_.log.lines, (Lines{kFoundWithConsole, "[SNTM Installer] Update..."}));
    EXPECT_EQ(sent(), TestSupport::commandTexts(InstallCommon::CommandLists::update(payload_)));
    EXPECT_EQ(client_->totalCommandsWeight(), 73 + 10 + 1);
}

TEST_F(InstallClient, OverinstallSendsAllFivePieces) {
    mac_.files.addFolder("/Applications/NORVIK/SNT");
    runInstaller();
    EXPECT_EQ(mac_.log.lines, (Lines{kFoundWithoutConsole, "[SNTM Installer] Overinstall..."}));
    EXPECT_EQ(sent(), TestSupport::commandTexts(InstallCommon::CommandLists::overInstallation(payload_)));
    EXPECT_EQ(client_->totalCommandsWeight(), 75 + 2 + 10 + 1);
}

TEST_F(InstallClient, TheOwnerForcesTheOverInstallListEvenOnACleanMachine) {
    EXPECT_FALSE(client_->shouldOverinstall());
    client_->setShouldOverinstall(true);
    runInstaller();
    EXPECT_EQ(mac_.log.lines, Lines{"[SNTM Installer] Overinstall..."});
    EXPECT_EQ(sent().size(), 88U);
}

using HelperClientDeathTest = HelperClient;

TEST_F(HelperClientDeathTest, TheOtherInitializerIsUnimplemented) {
    EXPECT_DEATH(
        InstallationHelperClient("name", true),
        "^Fatal error: Use of unimplemented initializer 'init\\(machServiceName:isServicePrivileged:\\)' for "
        "class 'InstallCommon.InstallationHelperClient'\n$");
}

TEST_F(HelperClientDeathTest, AnOverflowOfTheTotalWeightIsFatal) {
    EXPECT_DEATH(client_->send(weighing({std::numeric_limits<std::int32_t>::max(), 1})), "^Fatal error: ");
}

TEST_F(HelperClientDeathTest, AnOverflowOfTheExecutedWeightIsFatal) {
    client_->commandExecutingDidExecuteCommand("d", std::numeric_limits<std::int32_t>::max());
    EXPECT_DEATH(client_->commandExecutingDidExecuteCommand("d", 1), "^Fatal error: ");
}

}  // namespace
