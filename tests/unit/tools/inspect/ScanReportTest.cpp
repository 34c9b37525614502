#include "ScanReport.h"

#include <gtest/gtest.h>

#include "PlainFacts.h"

namespace {

using Inspect::Scan;
using Inspect::scanJson;
using Inspect::scanText;
using Inspect::verifyText;
using Inventory::Role;
using Inventory::Version;
using Platform::ItemKind;

/// Something of everything.
Scan fullScan() {
    Scan scan;
    scan.uninstaller = {"6.4", "640"};
    Inventory::Inventory& found = scan.inventory;
    found.hasConsole = true;
    found.hasInstallationFolder = true;
    found.version = Version{"6.3", "630"};
    found.places = {{{"/Applications/Sentrel.app"}, ItemKind::folder, {}, Role::application, {"current"}},
                    {{"/Applications/Norvik", "/Applications/NORVIK"}, ItemKind::folder, {}, Role::data, {}},
                    {{"/Library/LaunchDaemons/a.plist"}, ItemKind::file, {}, Role::launchdJob, {}},
                    {{"/Users/Shared/Norvik"}, ItemKind::link, {}, Role::data, {}}};
    scan.sizes = {
        {123, 4, 0, 0, 12'345'678, 0}, {1, 1, 0, 0, 999, 2}, {1, 0, 0, 0, 512, 0}, {0, 0, 1, 0, 0, 0}};
    found.jobs = {{"system", "com.norvik.fileaccessd", 51, "/p.plist", "/program", false},
                  {"gui/501", "com.norvik.Agent", std::nullopt, "", "", true}};
    found.processes = {{51, 0, "/Applications/Sentrel.app/x"}};
    found.extensions = {"com.norvik.kext.FileAccessFilter"};
    found.overrides = {{"system", "com.norvik.a", true}, {"gui/501", "com.norvik.b", false}};
    found.hasRuntimeSupport = true;
    found.notLookedAt = {"launchd overrides in gui/502"};
    found.blind = {"\"/odd\x1bname\" could not be looked at: Permission denied"};
    return scan;
}

Scan leftoverScan() {
    Scan scan;
    scan.uninstaller = {"6.4", "640"};
    scan.inventory.jobs = {{"system", "com.norvik.InstallerHelper", std::nullopt, "/p", "/q", false}};
    scan.inventory.places = {{{"/Library/PrivilegedHelperTools/com.norvik.InstallerHelper"},
                              ItemKind::file,
                              {},
                              Role::helperTool,
                              {}}};
    return scan;
}

TEST(ScanReport, ShowsAnInstallation) {
    EXPECT_EQ(scanText(fullScan(), false),
              "Sentrel 6.3 (630) is installed on this Mac.\n"
              "Generations: current\n"
              "\n"
              "Items\n"
              "  kind         size   files  path\n"
              "  folder    12.3 MB     123  /Applications/Sentrel.app\n"
              "  folder     >999 B       1  /Applications/Norvik\n"
              "                             = /Applications/NORVIK\n"
              "  file        512 B          /Library/LaunchDaemons/a.plist\n"
              "  link          0 B          /Users/Shared/Norvik\n"
              "\n"
              "Jobs\n"
              "  system/com.norvik.fileaccessd, running as process 51\n"
              "  gui/501/com.norvik.Agent, not running, its files are gone\n"
              "\n"
              "Processes\n"
              "  51, user 0, /Applications/Sentrel.app/x\n"
              "\n"
              "Loaded kernel extensions\n"
              "  com.norvik.kext.FileAccessFilter\n"
              "\n"
              "Launchd overrides (launchd keeps them; they do no harm)\n"
              "  system/com.norvik.a, disabled\n"
              "  gui/501/com.norvik.b, enabled\n"
              "\n"
              "Runtime support (stays: other programs may use it)\n"
              "  /usr/local/lib/swift\n"
              "\n"
              "Not looked at\n"
              "  launchd overrides in gui/502\n"
              "\n"
              "Could not look\n"
              "  \"/odd\\x1bname\" could not be looked at: Permission denied\n");
}

TEST(ScanReport, SaysThatTheUninstallerRefusesANewerVersion) {
    Scan scan = fullScan();
    scan.inventory.version = Version{"6.5", "650"};
    EXPECT_TRUE(scanText(scan, false)
                    .starts_with("Sentrel 6.5 (650) is installed on this Mac.\n"
                                 "The uninstaller 6.4 (640) refuses it: it is newer.\n"
                                 "Generations: current\n"));
}

TEST(ScanReport, ShowsLeftoversWithTheLinesThatTakeThemAway) {
    EXPECT_EQ(scanText(leftoverScan(), false),
              "Sentrel is not installed on this Mac, but something of it is left.\n"
              "\n"
              "Items\n"
              "  file    /Library/PrivilegedHelperTools/com.norvik.InstallerHelper\n"
              "\n"
              "Jobs\n"
              "  system/com.norvik.InstallerHelper, not running\n"
              "\n"
              "These lines remove what is left\n"
              "  sudo launchctl bootout system/com.norvik.InstallerHelper\n"
              "  sudo rm -f /Library/PrivilegedHelperTools/com.norvik.InstallerHelper\n");
    EXPECT_EQ(removalLines(leftoverScan()),
              "sudo launchctl bootout system/com.norvik.InstallerHelper\n"
              "sudo rm -f /Library/PrivilegedHelperTools/com.norvik.InstallerHelper\n");
    EXPECT_EQ(removalLines(fullScan()), "");
}

TEST(ScanReport, GivesAShellOneFactOnEachLine) {
    EXPECT_EQ(Inspect::plainFacts(fullScan()),
              "verdict\tinstalled\n"
              "uninstaller\tuninstalls\n"
              "version\t6.3\t630\n"
              "helper\tidle\n"
              "item\tfolder\t/Applications/Sentrel.app\n"
              "item\tfolder\t/Applications/Norvik\n"
              "item\tfile\t/Library/LaunchDaemons/a.plist\n"
              "item\tlink\t/Users/Shared/Norvik\n"
              "job\tsystem/com.norvik.fileaccessd\t51\n"
              "job\tgui/501/com.norvik.Agent\t-\n"
              "process\t/Applications/Sentrel.app/x\t51\n"
              "extension\tcom.norvik.kext.FileAccessFilter\n"
              "could-not-look\t\"/odd\\x1bname\" could not be looked at: Permission denied\n");
    EXPECT_EQ(Inspect::plainFacts(leftoverScan()),
              "verdict\tleftovers\n"
              "uninstaller\trefuses: not installed\n"
              "helper\tidle\n"
              "item\tfile\t/Library/PrivilegedHelperTools/com.norvik.InstallerHelper\n"
              "job\tsystem/com.norvik.InstallerHelper\t-\n"
              "leftover\tjob\tsystem/com.norvik.InstallerHelper\n"
              "leftover\tfile\t/Library/PrivilegedHelperTools/com.norvik.InstallerHelper\n");
}

TEST(ScanReport, GivesAShellNoWordThatIsEmptyOrLeavesItsPlace) {
    Scan scan = leftoverScan();
    scan.inventory.version = Version{"", "6\t4\n"};
    scan.inventory.processes = {{7, 0, "/Users/Shared/Norvik/\nleftover\tfolder\t/etc"}};
    scan.inventory.jobs[0].pid = 7;
    const std::string facts = Inspect::plainFacts(scan);
    EXPECT_TRUE(
        facts.starts_with("verdict\tleftovers\n"
                          "uninstaller\trefuses: not installed\n"
                          "version\t-\t6\\x094\\x0a\n"
                          "helper\trunning\n"
                          "item\tfile\t/Library/PrivilegedHelperTools/com.norvik.InstallerHelper\n"
                          "job\tsystem/com.norvik.InstallerHelper\t7\n"
                          "process\t/Users/Shared/Norvik/\\x0aleftover\\x09folder\\x09/etc\t7\n"
                          "leftover\tjob\t"))
        << facts;
}

TEST(ScanReport, HasASentenceForEveryVerdict) {
    Scan scan;
    EXPECT_EQ(scanText(scan, false), "Nothing of Sentrel is on this Mac.\n");
    scan.inventory.root = "/Volumes/a\nb";
    EXPECT_EQ(scanText(scan, false), "Nothing of Sentrel is in /Volumes/a\\x0ab.\n");
    scan.inventory.blind = {"x"};
    EXPECT_EQ(scanText(scan, false),
              "It is unknown whether any part of Sentrel is in /Volumes/a\\x0ab.\n\nCould not look\n  x\n");
    scan.inventory = {};
    scan.inventory.extensions = {"com.norvik.kext"};
    EXPECT_TRUE(
        scanText(scan, false)
            .starts_with("Sentrel is not installed on this Mac; a restart removes what is left of it.\n"));
    Scan unversioned = fullScan();
    unversioned.inventory.version.reset();
    EXPECT_TRUE(scanText(unversioned, false).starts_with("Sentrel is installed on this Mac.\n"));
}

TEST(ScanReport, ColoursTheSentenceByTheVerdict) {
    Scan scan;
    EXPECT_EQ(scanText(scan, true), "\x1b[32mNothing of Sentrel is on this Mac.\x1b[0m\n");
    EXPECT_TRUE(scanText(fullScan(), true).starts_with("\x1b[32mSentrel 6.3"));
    EXPECT_TRUE(scanText(leftoverScan(), true).starts_with("\x1b[33mSentrel is not"));
    scan.inventory.extensions = {"x"};
    EXPECT_TRUE(scanText(scan, true).starts_with("\x1b[33m"));
    scan.inventory.blind = {"x"};
    EXPECT_TRUE(scanText(scan, true).starts_with("\x1b[31m"));
}

TEST(ScanReport, KeepsWithinTheWidthButForLinesOfShell) {
    const std::string place = "/Library/Application Support/NORVIK/SNT/FileAccessDaemon/TrayMenu.app";
    Scan scan;
    scan.inventory.places = {{{place}, ItemKind::folder, {}, Role::data, {}}};
    scan.sizes = {{999'999, 1, 0, 0, 999'900'000'000, 1}};
    const std::string item = "  folder  >999.9 GB  999999  " + place + "\n";
    EXPECT_EQ(item.size() - 1, 98U);
    const std::string shell = "  sudo rm -rf '" + place + "'\n";
    const std::string text = scanText(scan, false);
    EXPECT_NE(text.find(item), std::string::npos) << text;
    EXPECT_NE(text.find(shell), std::string::npos) << text;
    const std::string narrow = scanText(scan, false, 60);
    EXPECT_NE(narrow.find("  folder  >999.9 GB  999999  /Library/Application Support/\n"
                          "      NORVIK/SNT/FileAccessDaemon/TrayMenu.app\n"),
              std::string::npos)
        << narrow;
    EXPECT_NE(narrow.find(shell), std::string::npos) << narrow;
}

TEST(VerifyReport, HasALineForEverythingAndTheResultLast) {
    EXPECT_EQ(verifyText(fullScan()),
              "found: folder /Applications/Sentrel.app\n"
              "found: folder /Applications/Norvik\n"
              "found: file /Library/LaunchDaemons/a.plist\n"
              "found: link /Users/Shared/Norvik\n"
              "found: job system/com.norvik.fileaccessd, running as process 51\n"
              "found: job gui/501/com.norvik.Agent, not running, its files are gone\n"
              "found: process 51, user 0, /Applications/Sentrel.app/x\n"
              "found: loaded kernel extension com.norvik.kext.FileAccessFilter\n"
              "not looked at: launchd overrides in gui/502\n"
              "could not look: \"/odd\\x1bname\" could not be looked at: Permission denied\n"
              "result: installed, 8 found, exit status 3\n");
    EXPECT_EQ(verifyText({}), "result: nothing, 0 found, exit status 0\n");
}

TEST(ScanJson, HoldsEverything) {
    const Inspect::Json expected = Inspect::Json::parse(R"({
        "formatVersion": 1,
        "root": null,
        "verdict": "installed",
        "exitStatus": 3,
        "version": {"short": "6.3", "build": "630"},
        "uninstallerVersion": {"short": "6.4", "build": "640"},
        "uninstaller": "uninstalls",
        "generations": ["current"],
        "items": [
            {"path": "/Applications/Sentrel.app", "alsoSpelled": [], "kind": "folder", "role": "application",
             "generations": ["current"], "bytes": 12345678, "files": 123, "isComplete": true},
            {"path": "/Applications/Norvik", "alsoSpelled": ["/Applications/NORVIK"], "kind": "folder",
             "role": "data", "generations": [], "bytes": 999, "files": 1, "isComplete": false},
            {"path": "/Library/LaunchDaemons/a.plist", "alsoSpelled": [], "kind": "file",
             "role": "launchd job", "generations": [], "bytes": 512, "files": 1, "isComplete": true},
            {"path": "/Users/Shared/Norvik", "alsoSpelled": [], "kind": "link", "role": "data",
             "generations": [], "bytes": 0, "files": 0, "isComplete": true}],
        "jobs": [
            {"domain": "system", "label": "com.norvik.fileaccessd", "pid": 51, "plist": "/p.plist",
             "program": "/program", "filesAreGone": false},
            {"domain": "gui/501", "label": "com.norvik.Agent", "pid": null, "plist": null, "program": null,
             "filesAreGone": true}],
        "processes": [{"pid": 51, "uid": 0, "path": "/Applications/Sentrel.app/x"}],
        "loadedExtensions": ["com.norvik.kext.FileAccessFilter"],
        "overrides": [
            {"domain": "system", "label": "com.norvik.a", "isDisabled": true},
            {"domain": "gui/501", "label": "com.norvik.b", "isDisabled": false}],
        "hasRuntimeSupport": true,
        "leftovers": [],
        "notLookedAt": ["launchd overrides in gui/502"],
        "couldNotLook": ["\"/odd\u001bname\" could not be looked at: Permission denied"]})");
    EXPECT_EQ(Inspect::jsonText(scanJson(fullScan())), Inspect::jsonText(expected));
}

TEST(ScanJson, NamesLeftoversAndLeavesSizesOutThatWereNotCounted) {
    const Inspect::Json json = scanJson(leftoverScan());
    EXPECT_EQ(json.at("leftovers").dump(),
              R"([{"what":"job system/com.norvik.InstallerHelper",)"
              R"("line":"sudo launchctl bootout system/com.norvik.InstallerHelper"},)"
              R"({"what":"file /Library/PrivilegedHelperTools/com.norvik.InstallerHelper",)"
              R"("line":"sudo rm -f /Library/PrivilegedHelperTools/com.norvik.InstallerHelper"}])");
    EXPECT_FALSE(json.at("items").at(0).contains("bytes"));
    EXPECT_EQ(json.at("version"), nullptr);
    EXPECT_EQ(json.at("uninstaller"), "refuses: not installed");
}

}  // namespace
