#include <gtest/gtest.h>

#include <string>

#include "InstallCommon/CurrentInstallationEnvironment.h"
#include "support/FakeMac.h"
#include "unit/InstallCommon/InstalledProducts.h"

namespace {

using InstallCommon::CurrentInstallationEnvironment;
using Type = InstallCommon::InstallatedNorvikAntivirusType;
using InstalledProductTests::kConsole;
using InstalledProductTests::kNotUpdatableLine;
using InstalledProductTests::kOtherPaths;
using InstalledProductTests::kProductFolders;
using InstalledProductTests::kUpdatableLine;
using TestSupport::CallList;
using TestSupport::FakeMac;
using Lines = std::vector<std::string>;

Lines followedBy(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

using InstalledProductTests::newBundle;

// Other products

TEST(OtherAntivirus, IsNotFoundOnACleanMac) {
    FakeMac mac;
    mac.processes.processes = {{7, 501, "Finder", "/Finder"}};

    EXPECT_FALSE(CurrentInstallationEnvironment().otherAntivirusInstalled());
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(OtherAntivirus, IsNotFoundInAnEmptyProcessList) {
    FakeMac mac;

    EXPECT_FALSE(CurrentInstallationEnvironment().otherAntivirusInstalled());
    EXPECT_EQ(mac.callsOf("listPids"), (CallList{{"listPids", 1, 0}}));
}

TEST(OtherAntivirus, IsFoundByAnyOfItsApplicationsInOrderAndThenNoProcessIsLookedAt) {
    for (std::size_t i = 0; i < kOtherPaths.size(); ++i) {
        FakeMac mac;
        mac.files.addFolder(kOtherPaths[i]);
        mac.processes.processes = {{7, 501, "kav_agent", "/kav_agent"}};

        EXPECT_TRUE(CurrentInstallationEnvironment().otherAntivirusInstalled());

        const Lines tested(kOtherPaths.begin(), kOtherPaths.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        EXPECT_EQ(mac.files.existenceTests, followedBy(tested, kProductFolders));
        EXPECT_EQ(mac.calls, CallList{});
    }
}

TEST(OtherAntivirus, IsFoundByARunningProcessOnlyWhenNoneOfItsApplicationsExists) {
    for (const char* name : {"kav_agent", "esets_gui", "AntivirusforMac"}) {
        FakeMac mac;
        mac.processes.processes = {{7, 501, "Finder", "/Finder"}, {8, 0, name, "/usr/local/x"}};

        EXPECT_TRUE(CurrentInstallationEnvironment().otherAntivirusInstalled()) << name;

        EXPECT_EQ(mac.callsOf("listPids").size(), 2U);
        EXPECT_EQ(mac.files.existenceTests, followedBy(kOtherPaths, kProductFolders));
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

    EXPECT_EQ(mac.files.existenceTests, followedBy(kOtherPaths, kProductFolders));
    EXPECT_EQ(mac.log.lines, Lines{});
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

        Lines tested(kProductFolders.begin(), kProductFolders.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        tested.push_back(kConsole);
        EXPECT_EQ(mac.files.existenceTests, followedBy(kOtherPaths, tested));
        EXPECT_EQ(mac.log.lines, (Lines{kNotUpdatableLine}));
        EXPECT_EQ(environment.checkNorvikAntivirusInstallType(newBundle("6.3", "6.3")),
                  Type::installedNotUpdateable);
    }
}

TEST(InstalledProduct, IsUpdatableWithItsConsole) {
    FakeMac mac;
    mac.files.addFolder(kProductFolders[0]);
    mac.files.addFolder(kConsole);

    const CurrentInstallationEnvironment environment;

    EXPECT_EQ(mac.log.lines, (Lines{kUpdatableLine}));
}

TEST(InstalledProduct, IsNeitherFoundNorLoggedByItsConsoleAlone) {
    FakeMac mac;
    mac.files.addFolder(kConsole);

    const CurrentInstallationEnvironment environment;

    EXPECT_EQ(mac.log.lines, Lines{});
    EXPECT_EQ(mac.files.existenceTests, followedBy(kOtherPaths, kProductFolders));
}

}  // namespace
