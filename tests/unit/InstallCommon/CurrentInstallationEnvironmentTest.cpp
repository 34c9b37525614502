#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "InstallCommon/CurrentInstallationEnvironment.h"
#include "InstallCommon/InstallationUtils.h"
#include "support/FakeMac.h"
#include "unit/InstallCommon/InstalledProducts.h"

namespace {

using InstallCommon::CurrentInstallationEnvironment;
using InstallCommon::InstallationUtils;
using Type = InstallCommon::InstallatedNorvikAntivirusType;
using InstalledProductTests::kConsole;
using InstalledProductTests::kNotUpdatableLine;
using InstalledProductTests::kOtherPaths;
using InstalledProductTests::kProductFolders;
using InstalledProductTests::kUpdatableLine;
using InstalledProductTests::newBundle;
using TestSupport::CallList;
using TestSupport::FakeBundle;
using TestSupport::FakeMac;
using Lines = std::vector<std::string>;

void installConsole(FakeMac& mac, const std::string& shortVersion, const std::string& build) {
    mac.files.addFolder(kConsole);
    mac.bundles.install(kConsole, shortVersion, build);
}

// The type

TEST(InstalledType, HasTheRawValuesZeroToFourAndNoOthers) {
    EXPECT_EQ(InstallCommon::installatedNorvikAntivirusType(0), Type::notInstalled);
    EXPECT_EQ(InstallCommon::installatedNorvikAntivirusType(1), Type::installedNotUpdateable);
    EXPECT_EQ(InstallCommon::installatedNorvikAntivirusType(2), Type::installedUpdateable);
    EXPECT_EQ(InstallCommon::installatedNorvikAntivirusType(3), Type::installedSameVersion);
    EXPECT_EQ(InstallCommon::installatedNorvikAntivirusType(4), Type::installedNewerVersion);
    EXPECT_EQ(InstallCommon::installatedNorvikAntivirusType(-1), std::nullopt);
    EXPECT_EQ(InstallCommon::installatedNorvikAntivirusType(5), std::nullopt);
    EXPECT_EQ(InstallCommon::installatedNorvikAntivirusType(INT64_MAX), std::nullopt);
}

// The install type

TEST(InstallType, IsZeroWithNoProductFolderAndNoConsoleBundle) {
    FakeMac mac;

    EXPECT_EQ(CurrentInstallationEnvironment().checkNorvikAntivirusInstallType(newBundle("6.3", "6.3")),
              Type::notInstalled);
    EXPECT_EQ(mac.callsOf("open bundle"), (CallList{{"open bundle", kConsole}}));
}

TEST(InstallType, IsOneWithAProductFolderAndNoConsoleBundle) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);

    EXPECT_EQ(CurrentInstallationEnvironment().checkNorvikAntivirusInstallType(newBundle("6.3", "6.3")),
              Type::installedNotUpdateable);
}

TEST(InstallType, IsThreeForTheSameVersion) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    installConsole(mac, "6.3", "6.3");

    EXPECT_EQ(CurrentInstallationEnvironment().checkNorvikAntivirusInstallType(newBundle("6.3", "6.3")),
              Type::installedSameVersion);
}

TEST(InstallType, IsFourForAnInstalledBuildThatIsNumericallyAfterTheNewOne) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    installConsole(mac, "6.3", "100");

    EXPECT_EQ(CurrentInstallationEnvironment().checkNorvikAntivirusInstallType(newBundle("6.3", "99")),
              Type::installedNewerVersion);
}

TEST(InstallType, IsTwoForAnOlderVersionWhenItsConsoleExists) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    installConsole(mac, "6.9", "6.9");

    EXPECT_EQ(CurrentInstallationEnvironment().checkNorvikAntivirusInstallType(newBundle("6.10", "6.10")),
              Type::installedUpdateable);
}

TEST(InstallType, IsOneForAnOlderVersionWhoseConsoleWasMissingAtTheStart) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    const CurrentInstallationEnvironment environment;
    installConsole(mac, "6.9", "6.9");

    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.10", "6.10")),
              Type::installedNotUpdateable);
}

TEST(InstallType, IsOneWhenOneOfTheFourVersionsIsMissing) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    installConsole(mac, "6.3", "6.3");
    const CurrentInstallationEnvironment environment;

    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle({{"CFBundleVersion", "6.3"}})),
              Type::installedNotUpdateable);
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle({{"CFBundleShortVersionString", "6.3"}})),
              Type::installedNotUpdateable);
    mac.bundles.infoByPath[kConsole].erase("CFBundleVersion");
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.3", "6.3")),
              Type::installedNotUpdateable);
    mac.bundles.infoByPath[kConsole].clear();
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.3", "6.3")),
              Type::installedNotUpdateable);
}

TEST(InstallType, FollowsTheVersionsWithTheConsoleBundleAndNoneOfTheProductFolders) {
    FakeMac mac;
    installConsole(mac, "6.3", "6.3");
    const CurrentInstallationEnvironment environment;

    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.3", "6.3")),
              Type::installedSameVersion);
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.2", "6.2")),
              Type::installedNewerVersion);
    // Without a folder the console was not looked for, so it does not count as updatable.
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.4", "6.4")),
              Type::installedNotUpdateable);
}

TEST(InstallType, ReadsTheBundleAfreshOnEveryCall) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    installConsole(mac, "6.3", "6.3");
    const CurrentInstallationEnvironment environment;
    const FakeBundle offered = newBundle("6.4", "6.4");

    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(offered), Type::installedUpdateable);
    mac.bundles.install(kConsole, "6.4", "6.4");
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(offered), Type::installedSameVersion);
    mac.bundles.install(kConsole, "6.5", "6.5");
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(offered), Type::installedNewerVersion);
    mac.bundles.infoByPath.clear();
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(offered), Type::installedNotUpdateable);

    EXPECT_EQ(mac.callsOf("open bundle"), CallList(4, TestSupport::Call("open bundle", kConsole)));
}

TEST(InstallationEnvironment, KeepsTheFactsThatItTookWhenItWasMade) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    mac.files.addFolder(kOtherPaths[1]);
    installConsole(mac, "6.3", "6.3");
    const CurrentInstallationEnvironment environment;

    mac.files.nodes.clear();

    EXPECT_TRUE(environment.otherAntivirusInstalled());
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.4", "6.4")),
              Type::installedUpdateable);
    mac.bundles.infoByPath.clear();
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.4", "6.4")),
              Type::installedNotUpdateable);
    EXPECT_EQ(mac.log.lines, (Lines{kUpdatableLine}));
}

// The shared object

TEST(InstallationEnvironment, IsSharedMadeOnFirstUseAndTheSameEverywhere) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    EXPECT_EQ(mac.log.lines, Lines{});

    const InstallCommon::InstallationEnvironment& shared = CurrentInstallationEnvironment::shared();

    EXPECT_EQ(&InstallationUtils::installationEnvironment(), &shared);
    EXPECT_EQ(&CurrentInstallationEnvironment::shared(), &shared);
    EXPECT_EQ(mac.log.lines, (Lines{kNotUpdatableLine}));
}

TEST(InstallationEnvironment, KeepsItsSharedFactsForTheProcess) {
    FakeMac mac;
    EXPECT_FALSE(InstallationUtils::installationEnvironment().otherAntivirusInstalled());

    mac.files.addFolder(kOtherPaths[0]);
    mac.files.addFolder(kProductFolders[0]);

    EXPECT_FALSE(InstallationUtils::installationEnvironment().otherAntivirusInstalled());
    EXPECT_EQ(
        InstallationUtils::installationEnvironment().checkNorvikAntivirusInstallType(newBundle("1", "1")),
        Type::notInstalled);
}

}  // namespace
