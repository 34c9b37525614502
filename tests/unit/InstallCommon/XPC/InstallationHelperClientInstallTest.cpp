#include "InstallCommon/XPC/InstallationHelperClient.h"

#include <gtest/gtest.h>

#include "InstallCommon/CommandLists.h"
#include "support/CommandText.h"
#include "support/InstallerLine.h"
#include "unit/InstallCommon/XPC/HelperClient.h"

namespace {

using HelperClientTests::HelperClient;
using InstallCommon::InstallationHelperClient;
using TestSupport::installerLine;

// Installing.

using Check = InstallationHelperClient::EnvironmentCheck;
using Lines = std::vector<std::string>;

const std::string kFoundWithConsole = installerLine("found installed version true, updatable: true");
const std::string kFoundWithoutConsole = installerLine("found installed version true, updatable: false");

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
    EXPECT_EQ(mac_.log.lines, (Lines{kFoundWithConsole, installerLine("Has same or newer Norvik installed."),
                                     installerLine("Can not install antivirus.")}));
    EXPECT_TRUE(mac_.xpc.connections.empty());
    EXPECT_TRUE(client_->canUninstall());
}

TEST_F(InstallClient, ANewerVersionRefusesBothInstallationAndUninstallation) {
    installedWithConsole("6.5", "650");
    runInstaller();
    EXPECT_EQ(mac_.log.lines, (Lines{kFoundWithConsole, installerLine("Has same or newer Norvik installed."),
                                     installerLine("Can not install antivirus.")}));
    EXPECT_FALSE(client_->canUninstall());
}

TEST_F(InstallClient, AnotherAntivirusRefusesTheInstallationRegardlessOfTheInstalledType) {
    mac_.files.addFolder("/Applications/ESET Cyber Security.app");
    installedWithConsole("6.3", "630");
    runInstaller();
    EXPECT_EQ(mac_.log.lines, (Lines{kFoundWithConsole, installerLine("There is other antivirus installed."),
                                     installerLine("Can not install antivirus.")}));
    EXPECT_TRUE(mac_.xpc.connections.empty());
    EXPECT_TRUE(client_->canUninstall());
}

TEST_F(InstallClient, CleanInstallSendsPreInstallInstallAndLaunchServices) {
    runInstaller();
    EXPECT_EQ(mac_.log.lines, Lines{installerLine("Clean install...")});
    EXPECT_EQ(sent(), TestSupport::commandTexts(InstallCommon::CommandLists::cleanInstallation(payload_)));
    EXPECT_EQ(client_->totalCommandsWeight(), 13);
}

TEST_F(InstallClient, UpdateSendsUninstallInstallAndLaunchServicesOnly) {
    installedWithConsole("6.3", "630");
    runInstaller();
    EXPECT_EQ(mac_.log.lines, (Lines{kFoundWithConsole, installerLine("Update...")}));
    EXPECT_EQ(sent(), TestSupport::commandTexts(InstallCommon::CommandLists::update(payload_)));
    EXPECT_EQ(client_->totalCommandsWeight(), 73 + 10 + 1);
}

TEST_F(InstallClient, OverinstallSendsAllFivePieces) {
    mac_.files.addFolder("/Applications/NORVIK/SNT");
    runInstaller();
    EXPECT_EQ(mac_.log.lines, (Lines{kFoundWithoutConsole, installerLine("Overinstall...")}));
    EXPECT_EQ(sent(), TestSupport::commandTexts(InstallCommon::CommandLists::overInstallation(payload_)));
    EXPECT_EQ(client_->totalCommandsWeight(), 75 + 2 + 10 + 1);
}

TEST_F(InstallClient, TheOwnerForcesTheOverInstallListEvenOnACleanMachine) {
    EXPECT_FALSE(client_->shouldOverinstall());
    client_->setShouldOverinstall(true);
    runInstaller();
    EXPECT_EQ(mac_.log.lines, Lines{installerLine("Overinstall...")});
    EXPECT_EQ(sent().size(), 88U);
}

}  // namespace
