#include "Verdict.h"

#include <gtest/gtest.h>

namespace {

using Inventory::Leftover;
using Inventory::leftoversOf;
using Inventory::Place;
using Inventory::Role;
using Inventory::shellWord;
using Inventory::UninstallerAnswer;
using Inventory::Verdict;
using Inventory::verdictOf;
using Inventory::Version;
using Platform::ItemKind;

const Version kOwn{"6.4", "640"};

Place place(const std::string& path, Role role, ItemKind kind = ItemKind::folder) {
    return {{path}, kind, {}, role, {}};
}

/// The console, with a version.
Inventory::Inventory installed(const std::optional<Version>& version) {
    Inventory::Inventory inventory;
    inventory.hasConsole = true;
    inventory.version = version;
    inventory.places = {place("/Applications/Sentrel.app", Role::application)};
    return inventory;
}

TEST(Verdict, IsNothingWhereNothingWasFound) {
    EXPECT_EQ(verdictOf({}, kOwn), Verdict::nothing);
}

TEST(Verdict, IsNeverNothingWhereSomethingCouldNotBeLookedAt) {
    Inventory::Inventory inventory;
    inventory.blind = {"something"};
    EXPECT_EQ(verdictOf(inventory, kOwn), Verdict::unknown);
    inventory.places = {place("/Users/Shared/Norvik", Role::data)};
    EXPECT_EQ(verdictOf(inventory, kOwn), Verdict::unknown);
    inventory.places.clear();
    inventory.extensions = {"com.norvik.kext.FileAccessFilter"};
    EXPECT_EQ(verdictOf(inventory, kOwn), Verdict::unknown);
}

TEST(Verdict, IsInstalledAlsoWhereMoreCouldNotBeLookedAt) {
    auto inventory = installed(std::nullopt);
    inventory.blind = {"something"};
    EXPECT_EQ(verdictOf(inventory, kOwn), Verdict::installed);
}

TEST(Verdict, IsInstalledForAProgramThatTheUninstallerGoesFor) {
    for (const Role role : {Role::application, Role::agent, Role::daemon, Role::kernelExtension}) {
        Inventory::Inventory inventory;
        inventory.places = {place("/program", role)};
        EXPECT_EQ(verdictOf(inventory, kOwn), Verdict::leftovers) << nameOf(role);
        inventory.hasInstallationFolder = true;
        EXPECT_EQ(verdictOf(inventory, kOwn), Verdict::installed) << nameOf(role);
    }
}

TEST(Verdict, IsLeftoversForAnythingButAProgram) {
    for (const Role role : {Role::finderService, Role::launchdJob, Role::data, Role::helperTool}) {
        Inventory::Inventory inventory;
        inventory.hasInstallationFolder = true;
        inventory.places = {place("/item", role)};
        EXPECT_EQ(verdictOf(inventory, kOwn), Verdict::leftovers) << nameOf(role);
    }
    Inventory::Inventory process;
    process.processes = {{7, 0, "/Applications/Sentrel.app/Contents/MacOS/Sentrel"}};
    EXPECT_EQ(verdictOf(process, kOwn), Verdict::leftovers);
}

TEST(Verdict, IsRestartForJobsWithoutFiles) {
    Inventory::Inventory job;
    job.jobs = {{"system", "com.norvik.InstallerHelper", std::nullopt, "", "", true}};
    EXPECT_EQ(verdictOf(job, kOwn), Verdict::restart);
    job.jobs.push_back({"system", "com.norvik.Agent", std::nullopt, "/p", "/q", false});
    EXPECT_EQ(verdictOf(job, kOwn), Verdict::leftovers);
    Inventory::Inventory extension;
    extension.extensions = {"com.norvik.kext.FileAccessFilter"};
    EXPECT_EQ(verdictOf(extension, kOwn), Verdict::restart);
}

TEST(Verdict, DoesNotCountWhatStaysByDesign) {
    Inventory::Inventory inventory;
    inventory.hasRuntimeSupport = true;
    inventory.overrides = {{"system", "com.norvik.Agent", true}};
    inventory.notLookedAt = {"jobs"};
    EXPECT_EQ(verdictOf(inventory, kOwn), Verdict::nothing);
}

TEST(Verdict, HasANameAndAnExitStatus) {
    const std::vector<std::pair<std::string, int>> expected{
        {"nothing", 0}, {"unknown", 1}, {"installed", 3}, {"leftovers", 4}, {"restart", 5}};
    std::vector<std::pair<std::string, int>> actual;
    for (const Verdict verdict :
         {Verdict::nothing, Verdict::unknown, Verdict::installed, Verdict::leftovers, Verdict::restart}) {
        actual.emplace_back(nameOf(verdict), exitStatusOf(verdict));
    }
    EXPECT_EQ(actual, expected);
}

TEST(UninstallersAnswer, DependsOnWhatTheUninstallerLooksAt) {
    EXPECT_EQ(uninstallerAnswer({}, kOwn), UninstallerAnswer::refusesAbsent);
    Inventory::Inventory folder;
    folder.hasInstallationFolder = true;
    EXPECT_EQ(uninstallerAnswer(folder, kOwn), UninstallerAnswer::uninstalls);
    EXPECT_EQ(uninstallerAnswer(installed(std::nullopt), kOwn), UninstallerAnswer::uninstalls);
    EXPECT_EQ(uninstallerAnswer(installed(Version{"6.4", "639"}), kOwn), UninstallerAnswer::uninstalls);
    EXPECT_EQ(uninstallerAnswer(installed(kOwn), kOwn), UninstallerAnswer::uninstalls);
    EXPECT_EQ(uninstallerAnswer(installed(Version{"6.4", "641"}), kOwn), UninstallerAnswer::refusesNewer);
    EXPECT_EQ(uninstallerAnswer(installed(Version{"6.10", "1"}), kOwn), UninstallerAnswer::refusesNewer);
}

TEST(UninstallersAnswer, HasAName) {
    EXPECT_EQ(nameOf(UninstallerAnswer::uninstalls), "uninstalls");
    EXPECT_EQ(nameOf(UninstallerAnswer::refusesAbsent), "refuses: not installed");
    EXPECT_EQ(nameOf(UninstallerAnswer::refusesNewer), "refuses: newer version installed");
}

TEST(Generations, ComeInTheirOwnOrderAndOnce) {
    Inventory::Inventory inventory;
    inventory.places = {place("/a", Role::application), place("/b", Role::agent), place("/c", Role::agent)};
    inventory.places[0].generations = {"current"};
    inventory.places[1].generations = {"antivirus", "antivir"};
    inventory.places[2].generations = {"antivir"};
    EXPECT_EQ(generationsOf(inventory), (std::vector<std::string>{"antivir", "antivirus", "current"}));
}

TEST(Leftovers, GoInTheOrderOfJobsProcessesExtensionsItems) {
    Inventory::Inventory inventory;
    inventory.jobs = {{"gui/501", "com.norvik.Agent", 5, "/p", "/q", false}};
    inventory.processes = {{7, 0, "/opt/x"}};
    inventory.extensions = {"com.norvik.kext.FileAccessFilter"};
    inventory.places = {place("/Library/Application Support/Norvik", Role::data),
                        place("/Library/it's", Role::helperTool, ItemKind::file),
                        place("/link", Role::data, ItemKind::link),
                        place("/socket", Role::data, ItemKind::other)};
    EXPECT_EQ(leftoversOf(inventory, Verdict::leftovers),
              (std::vector<Leftover>{
                  {"job gui/501/com.norvik.Agent", "sudo launchctl bootout gui/501/com.norvik.Agent", "job",
                   "gui/501/com.norvik.Agent"},
                  {"process 7 /opt/x", "sudo kill -9 7", "process", "7"},
                  {"loaded kernel extension com.norvik.kext.FileAccessFilter (or restart the Mac)",
                   "sudo kextunload -b com.norvik.kext.FileAccessFilter", "extension",
                   "com.norvik.kext.FileAccessFilter"},
                  {"folder /Library/Application Support/Norvik",
                   "sudo rm -rf '/Library/Application Support/Norvik'", "folder",
                   "/Library/Application Support/Norvik"},
                  {"file /Library/it's", "sudo rm -f '/Library/it'\\''s'", "file", "/Library/it's"},
                  {"link /link", "sudo rm -f /link", "link", "/link"},
                  {"item /socket", "sudo rm -f /socket", "item", "/socket"}}));
}

TEST(Leftovers, NameAnItemInsideAnotherOneWithThatOne) {
    Inventory::Inventory inventory;
    inventory.places = {place("/Applications/Norvik/View Logs.app", Role::application),
                        place("/Applications/Norvik", Role::data),
                        place("/Applications/Norvik2", Role::data)};
    // The outer folder under its other spelling.
    inventory.places[1].paths = {"/Applications/NORVIK", "/Applications/Norvik"};
    EXPECT_EQ(leftoversOf(inventory, Verdict::leftovers),
              (std::vector<Leftover>{
                  {"folder /Applications/NORVIK", "sudo rm -rf /Applications/NORVIK /Applications/Norvik",
                   "folder", "/Applications/NORVIK"},
                  {"folder /Applications/Norvik2", "sudo rm -rf /Applications/Norvik2", "folder",
                   "/Applications/Norvik2"}}));
}

TEST(Leftovers, LieBelowTheFolderThatWasLookedAt) {
    Inventory::Inventory inventory;
    inventory.root = "/Volumes/Macintosh HD";
    inventory.places = {place("/Users/Shared/Norvik", Role::data)};
    EXPECT_EQ(leftoversOf(inventory, Verdict::leftovers),
              (std::vector<Leftover>{{"folder /Volumes/Macintosh HD/Users/Shared/Norvik",
                                      "sudo rm -rf '/Volumes/Macintosh HD/Users/Shared/Norvik'", "folder",
                                      "/Volumes/Macintosh HD/Users/Shared/Norvik"}}));
}

TEST(Leftovers, AreEmptyUnlessNothingElseIsLeft) {
    auto inventory = installed(std::nullopt);
    for (const Verdict verdict : {Verdict::nothing, Verdict::unknown, Verdict::installed}) {
        EXPECT_TRUE(leftoversOf(inventory, verdict).empty());
    }
    EXPECT_EQ(leftoversOf(inventory, Verdict::restart).size(), 1U);
}

TEST(ShellWord, IsOneWordWhateverItHolds) {
    EXPECT_EQ(shellWord("/Library/a_b-c.plist"), "/Library/a_b-c.plist");
    EXPECT_EQ(shellWord(""), "''");
    EXPECT_EQ(shellWord("a b"), "'a b'");
    EXPECT_EQ(shellWord("$HOME`x`\n"), "'$HOME`x`\n'");
    EXPECT_EQ(shellWord("'"), "''\\'''");
    EXPECT_EQ(shellWord("\xC3\xA9"), "'\xC3\xA9'");
}

}  // namespace
