#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "InstallCommon/CurrentInstallationEnvironment.h"
#include "InstallCommon/InstallationUtils.h"
#include "support/FakeMac.h"

namespace {

using InstallCommon::CurrentInstallationEnvironment;
using InstallCommon::InstallationUtils;
using Type = InstallCommon::InstallatedNorvikAntivirusType;
using TestSupport::CallList;
using TestSupport::FakeBundle;
using TestSupport::FakeMac;

const std::string kConsole = "/Applications/Sentrel.app";
const CallList kOtherPaths{"/Applications/Kaspersky Anti-Virus For Mac.app",
                           "/Applications/ESET Cyber Security.app",
                           "/Library/Bitdefender/AVP/AntivirusforMac.app"};
const CallList kProductFolders{
    "/Library/Application Support/NORVIK/SNT", "/Library/Application Support/Norvik/AntiVir",
    "/Library/Application Support/Norvik/Antivirus",
    "/Library/Application Support/NORVIK/SNT/FileAccessDaemon", "/Applications/NORVIK/SNT"};

const std::string kUpdatableLine = "[SNTM Installer] found installed version true, updatable: true";
const std::string kNotUpdatableLine = "[SNTM Installer] found installed version true, updatable: false";

CallList joined(CallList first, const CallList& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

FakeBundle newBundle(const std::map<std::string, std::string>& info) {
    return {Base::URL::fileURL("/Volumes/New/Uninstall Sentrel.app"), info, {}};
}

FakeBundle newBundle(const std::string& shortVersion, const std::string& build) {
    return newBundle({{"CFBundleShortVersionString", shortVersion}, {"CFBundleVersion", build}});
}

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

// Other products

TEST(OtherAntivirus, IsNotFoundOnACleanMac) {
    FakeMac mac;
    mac.processes.processes = {{7, 501, "Finder", "/Finder"}};

    EXPECT_FALSE(CurrentInstallationEnvironment().otherAntivirusInstalled());
    EXPECT_EQ(mac.log.lines, CallList{});
}

TEST(OtherAntivirus, IsNotFoundInAnEmptyProcessList) {
    FakeMac mac;

    EXPECT_FALSE(CurrentInstallationEnvironment().otherAntivirusInstalled());
    EXPECT_EQ(mac.callsOf("listPids"), (CallList{"listPids 1 0"}));
}

TEST(OtherAntivirus, IsFoundByAnyOfItsApplicationsInOrderAndThenNoProcessIsLookedAt) {
    for (std::size_t i = 0; i < kOtherPaths.size(); ++i) {
        FakeMac mac;
        mac.files.addFolder(kOtherPaths[i]);
        mac.processes.processes = {{7, 501, "kav_agent", "/kav_agent"}};

        EXPECT_TRUE(CurrentInstallationEnvironment().otherAntivirusInstalled());

        const CallList tested(kOtherPaths.begin(), kOtherPaths.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        EXPECT_EQ(mac.files.existenceTests, joined(tested, kProductFolders));
        EXPECT_EQ(mac.calls, CallList{});
    }
}

TEST(OtherAntivirus, IsFoundByARunningProcessOnlyWhenNoneOfItsApplicationsExists) {
    for (const char* name : {"kav_agent", "esets_gui", "AntivirusforMac"}) {
        FakeMac mac;
        mac.processes.processes = {{7, 501, "Finder", "/Finder"}, {8, 0, name, "/usr/local/x"}};

        EXPECT_TRUE(CurrentInstallationEnvironment().otherAntivirusInstalled()) << name;

        EXPECT_EQ(mac.callsOf("listPids").size(), 2U);
        EXPECT_EQ(mac.files.existenceTests, joined(kOtherPaths, kProductFolders));
    }
}

TEST(OtherAntivirus, IsNotMatchedByASimilarName) {
    FakeMac mac;
    mac.processes.processes = {{7, 0, "kav_agent2", "/1"},
                               {8, 0, "KAV_AGENT", "/2"},
                               {9, 0, "esets_gu", "/3"},
                               {10, 0, " kav_agent", "/4"}};

    EXPECT_FALSE(CurrentInstallationEnvironment().otherAntivirusInstalled());
}

TEST(OtherAntivirus, IsMatchedByALocationThatIsExactlyAnApplicationsPath) {
    for (const std::string& path : kOtherPaths) {
        FakeMac mac;
        mac.processes.processes = {{7, 0, "x", path}};
        EXPECT_TRUE(CurrentInstallationEnvironment().otherAntivirusInstalled()) << path;
    }
}

TEST(OtherAntivirus, IsNotMatchedByAnExecutableInsideAnApplication) {
    FakeMac mac;
    mac.processes.processes = {{7, 0, "x", kOtherPaths[0] + "/Contents/MacOS/x"}};

    EXPECT_FALSE(CurrentInstallationEnvironment().otherAntivirusInstalled());
}

// The product's folders

TEST(InstalledProduct, IsLookedForInTheSupportFolderAndThenInTheEarlierOnes) {
    FakeMac mac;

    const CurrentInstallationEnvironment environment;

    EXPECT_EQ(mac.files.existenceTests, joined(kOtherPaths, kProductFolders));
    EXPECT_EQ(mac.log.lines, CallList{});
    EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.3", "6.3")), Type::notInstalled);
}

TEST(InstalledProduct, IsFoundByAnyOfItsFoldersAndTheSearchStopsThere) {
    for (std::size_t i = 0; i < kProductFolders.size(); ++i) {
        FakeMac mac;
        mac.files.addFile(kProductFolders[i] + "/x");
        if (i > 0) {
            // Made on the way to another one.
            mac.files.nodes.erase(kProductFolders[0]);
        }

        const CurrentInstallationEnvironment environment;

        CallList tested(kProductFolders.begin(),
                        kProductFolders.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        tested.push_back(kConsole);
        EXPECT_EQ(mac.files.existenceTests, joined(kOtherPaths, tested));
        EXPECT_EQ(mac.log.lines, (CallList{kNotUpdatableLine}));
        EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.3", "6.3")),
                  Type::installedNotUpdateable);
    }
}

TEST(InstalledProduct, IsUpdatableWithItsConsole) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    mac.files.addFolder(kConsole);

    const CurrentInstallationEnvironment environment;

    EXPECT_EQ(mac.log.lines, (CallList{kUpdatableLine}));
}

TEST(InstalledProduct, IsNeitherFoundNorLoggedByItsConsoleAlone) {
    FakeMac mac;
    mac.files.addFolder(kConsole);

    const CurrentInstallationEnvironment environment;

    EXPECT_EQ(mac.log.lines, CallList{});
    EXPECT_EQ(mac.files.existenceTests, joined(kOtherPaths, kProductFolders));
}

// The install type

TEST(InstallType, IsZeroWithNoProductFolderAndNoConsoleBundle) {
    FakeMac mac;

    EXPECT_EQ(CurrentInstallationEnvironment().checkNorvikAntivirusInstallType(newBundle("6.3", "6.3")),
              Type::notInstalled);
    EXPECT_EQ(mac.callsOf("open bundle"), (CallList{"open bundle " + kConsole}));
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

    EXPECT_EQ(mac.callsOf("open bundle"), CallList(4, "open bundle " + kConsole));
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
    EXPECT_EQ(mac.log.lines, (CallList{kUpdatableLine}));
}

// The shared object

TEST(InstallationEnvironment, IsSharedMadeOnFirstUseAndTheSameEverywhere) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    EXPECT_EQ(mac.log.lines, CallList{});

    const InstallCommon::InstallationEnvironment& shared = CurrentInstallationEnvironment::shared();

    EXPECT_EQ(&InstallationUtils::installationEnvironment(), &shared);
    EXPECT_EQ(&CurrentInstallationEnvironment::shared(), &shared);
    EXPECT_EQ(mac.log.lines, (CallList{kNotUpdatableLine}));
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
