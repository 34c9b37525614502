// The product's installer in simulated Macs: what each kind of installation does, and that the uninstaller
// takes all of it away again.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <sstream>
#include <string_view>

#include "support/InstallerLine.h"
#include "support/ProductMac.h"

namespace {

using TestSupport::installerLine;
using namespace SystemTests;
using Lines = std::vector<std::string>;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;
using testing::UnorderedElementsAre;

const std::string kData = "/Library/Application Support/NORVIK/SNT";
const std::string kRepair = kData + "/Repair";
const std::string kPayload = "/Volumes/Install Sentrel/Payload/";
const std::string kUpdatable = installerLine("found installed version true, updatable: ");

/// What an installation copies: where from, below the payload, and where to.
struct Copied {
    std::string source;
    std::string destination;
};

const std::vector<Copied> kDataCopies{{"SupportFiles/settings.plist", kData + "/settings.plist"},
                                      {"SupportFiles/bases.nvb", kData + "/bases.nvb"}};
const std::vector<Copied> kProgramCopies{
    {"Applications/Sentrel.app", "/Applications/Sentrel.app"},
    {"LaunchdJobs/com.norvik.containmentd.plist", "/Library/LaunchDaemons/com.norvik.containmentd.plist"},
    {"LaunchdJobs/com.norvik.fileaccessd.plist", "/Library/LaunchDaemons/com.norvik.fileaccessd.plist"},
    {"LaunchdJobs/com.norvik.TrayMenu.plist", "/Library/LaunchAgents/com.norvik.TrayMenu.plist"},
    {"LaunchdJobs/com.norvik.NorvikAgent.plist", "/Library/LaunchAgents/com.norvik.NorvikAgent.plist"},
    {"SupportFiles/Scan with Sentrel.workflow", "/Library/Services/Scan with Sentrel.workflow"}};

std::vector<Copied> everything() {
    std::vector<Copied> all = kDataCopies;
    all.insert(all.end(), kProgramCopies.begin(), kProgramCopies.end());
    return all;
}

std::string lineOfParts(std::initializer_list<std::string_view> parts) {
    std::string line = installerLine("");
    for (const std::string_view part : parts) {
        line += part;
    }
    return line;
}

/// The helper's lines for copies that all succeed.
Lines copyLines(const std::vector<Copied>& copies) {
    Lines lines;
    for (const Copied& copy : copies) {
        const std::string& item = copy.destination;
        lines.push_back(lineOfParts({"Copy source ", kPayload, copy.source, "; destination: ", item}));
        lines.push_back(lineOfParts({"Backup source: ", item, ", destination: ", kRepair, item}));
        lines.push_back(lineOfParts({"Copy source ", item, "; destination: ", kRepair, item}));
    }
    return lines;
}

Lines linesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string quoted(const std::string& path) {
    return "'" + path + "' ";
}

/// Boots the Mac again and checks the result of an installation: owners, modes, repair copies.
void expectFilesOfAnInstallation(ProductMac& mac, const std::vector<Copied>& copies) {
    std::string items;
    std::string comparisons;
    std::string plists;
    for (const Copied& copy : copies) {
        items += quoted(copy.destination);
        comparisons +=
            "diff -r --no-dereference " + quoted(copy.destination) + quoted(kRepair + copy.destination) + ";";
        if (copy.source.starts_with("LaunchdJobs")) {
            plists += quoted(copy.destination);
        }
    }
    const auto foreign = mac.shell("find " + items + quoted(kRepair) + "! -uid 0 -print -o ! -gid 0 -print;" +
                                   comparisons + "stat -c '%a %u:%g' " + quoted(kRepair) + plists);
    EXPECT_EQ(foreign.err, "");
    // Nothing of another owner, no repair copy that differs; then the modes.
    EXPECT_EQ(linesOf(foreign.out), (Lines{"0 0:0", "1204 0:0", "1204 0:0", "1204 0:0", "1204 0:0"}))
        << foreign.out;
}

/// The product runs, as the end of the last run says.
void expectRunning(const ProductMac& mac, const Lines& users) {
    EXPECT_THAT(mac.jobs("system"), IsSupersetOf({"com.norvik.containmentd", "com.norvik.fileaccessd"}));
    for (const std::string& user : users) {
        EXPECT_THAT(mac.jobs("gui/" + user),
                    UnorderedElementsAre("com.norvik.NorvikAgent", "com.norvik.TrayMenu"));
    }
    const Lines processes = mac.processes();
    for (const char* name : {"containmentd", "fileaccessd"}) {
        EXPECT_THAT(processes, Contains(name).Times(1));
    }
    for (const char* name : {"NorvikAgent", "TrayMenu"}) {
        EXPECT_THAT(processes, Contains(name).Times(static_cast<int>(users.size())));
    }
}

/// The uninstaller of the installed product leaves nothing.
void expectUninstallsClean(ProductMac& mac) {
    EXPECT_EQ(mac.uninstall().status, 0);
    mac.expectClean();
    ASSERT_FALSE(mac.uninstallerLog().empty());
    EXPECT_EQ(mac.uninstallerLog().back(), installerLine("Uninstallation finished."));
}

std::set<std::string> inventoryOfAnEmptyMac() {
    ProductMac bare({});
    EXPECT_EQ(bare.shell("true").status, 0);
    return bare.inventory();
}

TEST(Installation, OnAnEmptyMacPutsEverythingIntoPlaceAndIsRemovedWhole) {
    ProductMac mac({"--users", "alice:501,bob:502"});
    EXPECT_EQ(mac.shell("true").status, 0);
    const std::set<std::string> before = mac.inventory();
    const auto result = mac.install(mac.makePayload("6.4/640"));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(linesOf(result.out),
                ElementsAre("  7.7 %  Installing settings...", " 15.4 %  Installing AV bases...",
                            " 23.1 %  Installing user application Sentrel.app...",
                            " 30.8 %  Adding launchd job com.norvik.containmentd...",
                            " 38.5 %  Adding launchd job com.norvik.fileaccessd...",
                            " 46.2 %  Adding launchd job com.norvik.TrayMenu...",
                            " 53.8 %  Adding launchd job com.norvik.NorvikAgent...",
                            " 61.5 %  Installing resource Scan with Sentrel.workflow...",
                            " 69.2 %  Starting user agent com.norvik.TrayMenu...",
                            " 76.9 %  Starting user agent com.norvik.NorvikAgent...",
                            " 84.6 %  Starting daemon com.norvik.containmentd...",
                            " 92.3 %  Starting daemon com.norvik.fileaccessd...",
                            "100.0 %  Updating system databases..."));
    EXPECT_EQ(mac.installerLog(), Lines{installerLine("Clean install...")});
    EXPECT_EQ(mac.helperLog(), copyLines(everything()));
    EXPECT_EQ(mac.contents("/var/db/lsregister.log"), "-r\t-f\t" + kData + "\n");
    EXPECT_TRUE(std::filesystem::is_empty(mac.path("/Volumes")));
    expectRunning(mac, {"501", "502"});
    expectFilesOfAnInstallation(mac, everything());
    // That was another boot: the jobs are back, and the kernel extension is loaded.
    expectRunning(mac, {"501", "502"});
    EXPECT_EQ(mac.state().at("kexts"), nlohmann::json::array({"com.norvik.kext.FileAccessFilter"}));
    expectUninstallsClean(mac);
    EXPECT_EQ(mac.inventory(), before);
}

TEST(Installation, OverAnOlderVersionWithAConsoleUpdatesItAndKeepsTheData) {
    ProductMac mac({"--installed", "current", "--version", "6.3/630", "--running", "Sentrel"});
    mac.put(kData + "/Quarantine/kept.nvq", "caught long ago");
    mac.put(kData + "/settings.plist", "the user's own");
    mac.put("/Applications/Sentrel.app/Contents/Resources/of the older version", "old");
    const std::string payload = mac.makePayload("6.4/640");
    const auto result = mac.install(payload);
    EXPECT_EQ(result.status, 0) << result.err;
    const Lines progress = linesOf(result.out);
    EXPECT_EQ(progress.size(), 84U);
    EXPECT_EQ(progress.back(), "100.0 %  Updating system databases...");
    EXPECT_EQ(mac.installerLog(), (Lines{kUpdatable + "true", installerLine("Update...")}));
    EXPECT_THAT(mac.helperLog(), IsSupersetOf(copyLines(kProgramCopies)));
    EXPECT_EQ(mac.contents(kData + "/Quarantine/kept.nvq"), "caught long ago");
    EXPECT_EQ(mac.contents(kData + "/settings.plist"), "the user's own");
    EXPECT_FALSE(mac.exists("/Applications/Sentrel.app/Contents/Resources/of the older version"));
    expectRunning(mac, {"501", "502", "503"});
    EXPECT_THAT(mac.processes(), Not(Contains("Sentrel")));
    expectFilesOfAnInstallation(mac, kProgramCopies);

    // Now it is the same version, and a newer one than an older payload's.
    const std::set<std::string> before = mac.inventory();
    const std::string refused = "Install Sentrel: the installation was refused; the system log says why\n";
    for (const std::string& again : {payload, mac.makePayload("6.3.9/639")}) {
        const std::size_t logged = mac.installerLog().size();
        const auto second = mac.install(again);
        EXPECT_EQ(second.status, 1);
        EXPECT_EQ(second.out, "");
        EXPECT_EQ(second.err, refused);
        const Lines log = mac.installerLog();
        EXPECT_EQ(Lines(log.begin() + static_cast<std::ptrdiff_t>(logged), log.end()),
                  (Lines{kUpdatable + "true", installerLine("Has same or newer Norvik installed."),
                         installerLine("Can not install antivirus.")}));
        EXPECT_EQ(mac.inventory(), before);
    }
    expectUninstallsClean(mac);
    EXPECT_EQ(mac.inventory(), inventoryOfAnEmptyMac());
}

/// Over-installs and looks at what it did.
void expectOverInstalls(ProductMac& mac, const Lines& installerLog, const Lines& options = {}) {
    const auto result = mac.install(mac.makePayload("6.4/640"), options);
    EXPECT_EQ(result.status, 0) << result.err;
    const Lines progress = linesOf(result.out);
    EXPECT_EQ(progress.size(), 88U);
    EXPECT_EQ(progress.back(), "100.0 %  Updating system databases...");
    EXPECT_EQ(mac.installerLog(), installerLog);
    EXPECT_THAT(mac.helperLog(), IsSupersetOf(copyLines(everything())));
    expectRunning(mac, {"501", "502", "503"});
    // The list deletes every helper tool, also the one that executes it.
    EXPECT_THAT(mac.jobs("system"),
                UnorderedElementsAre("com.norvik.containmentd", "com.norvik.fileaccessd"));
    EXPECT_TRUE(std::filesystem::is_empty(mac.path("/Library/PrivilegedHelperTools")));
    expectFilesOfAnInstallation(mac, everything());
}

TEST(Installation, OverAProductWithoutItsConsoleBeginsAnew) {
    ProductMac mac({"--installed", "current", "--version", "6.3/630"});
    mac.put(kData + "/Quarantine/lost.nvq", "caught long ago");
    std::filesystem::remove_all(mac.path("/Applications/Sentrel.app"));
    expectOverInstalls(mac, {kUpdatable + "false", installerLine("Overinstall...")});
    EXPECT_FALSE(mac.exists(kData + "/Quarantine"));
    expectUninstallsClean(mac);
    EXPECT_EQ(mac.inventory(), inventoryOfAnEmptyMac());
}

TEST(Installation, OverEveryEarlierGenerationBeginsAnew) {
    Lines options;
    for (const char* generation :
         {"norvik-apps", "antivir", "antivirus", "snt-plain", "snt-folder", "snt-bundle"}) {
        options.insert(options.end(), {"--installed", generation});
    }
    ProductMac mac(options);
    mac.put(kData + "/Quarantine/lost.nvq", "caught long ago");
    expectOverInstalls(mac, {kUpdatable + "false", installerLine("Overinstall...")});
    EXPECT_FALSE(mac.exists(kData + "/Quarantine"));
    // Nothing of the earlier ones is left beside what a clean installation brings.
    ProductMac clean({});
    EXPECT_EQ(clean.install(clean.makePayload("6.4/640")).status, 0);
    std::set<std::string> expected = clean.inventory();
    for (const std::string label : {"com.norvik.InstallerHelper", "com.norvik.SupportPrivilegedHelper"}) {
        expected.erase("file /Library/PrivilegedHelperTools/" + label);
        expected.erase("file /Library/LaunchDaemons/" + label + ".plist");
    }
    EXPECT_EQ(mac.inventory(), expected);
    expectUninstallsClean(mac);
}

TEST(Installation, ByForceBeginsAnewOnAnEmptyMacToo) {
    ProductMac mac({});
    expectOverInstalls(mac, {installerLine("Overinstall...")}, {"--force-overinstall"});
    expectUninstallsClean(mac);
    EXPECT_EQ(mac.inventory(), inventoryOfAnEmptyMac());
}

}  // namespace
