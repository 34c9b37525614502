// What sentrel-inspect says about random Macs, compared with an independent look at the disk, at process 1's
// tables and at the running programs.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <sstream>

#include "LookedAtMac.h"

namespace InspectTest {

namespace {

using Lines = std::vector<std::string>;

/// Paths of the product and what they make of a Mac, written out by hand.
struct Item {
    const char* path;
    bool isProgram;
    bool makesAnInstallation;
};

const std::vector<Item> kItems{
    {"/Applications/Sentrel.app", true, true},
    {"/Applications/Norvik/View Logs.app", true, false},
    {"/Applications/Norvik/Sentrel.app", true, false},
    {"/Applications/NORVIK/SNT/Software Update.app", true, false},
    {"/Applications/NORVIK/SNT/Agent.app", true, false},
    {"/Library/Extensions/FileAccessFilter.kext", true, false},
    {"/Library/Application Support/Norvik/AntiVir/TrayMenu.app", true, false},
    {"/Library/Application Support/Norvik/Antivirus/Agent.app", true, false},
    {"/Library/Application Support/Norvik/AntiVirus/FileAccessDaemon", true, false},
    {"/Library/Application Support/NORVIK/SNT/FileAccessDaemon.bundle", true, false},
    {"/Library/Services/Scan with Sentrel.workflow", false, false},
    {"/Library/Services/Scan with NORVIK Antivirus.workflow", false, false},
    {"/Library/LaunchAgents/com.norvik.TrayMenu.plist", false, false},
    {"/Library/LaunchAgents/com.norvik.NorvikAgent.plist", false, false},
    {"/Library/LaunchAgents/com.norvik.Agent.plist", false, false},
    {"/Library/LaunchDaemons/com.norvik.containmentd.plist", false, false},
    {"/Library/LaunchDaemons/com.norvik.fileaccessd.plist", false, false},
    {"/Library/LaunchDaemons/com.norvik.fileaccessdaemon.plist", false, false},
    {"/Library/LaunchDaemons/com.norvik.FileAccessDaemon.plist", false, false},
    {"/Library/LaunchDaemons/com.norvik.DiagnosticUtilityHelper.plist", false, false},
    {"/Library/LaunchDaemons/com.norvik.InstallerHelper.plist", false, false},
    {"/Library/LaunchDaemons/com.norvik.SolutionUpdaterHelper.plist", false, false},
    {"/Library/LaunchDaemons/com.norvik.UninstallerHelper.plist", false, false},
    {"/Library/LaunchDaemons/com.norvik.SupportPrivilegedHelper.plist", false, false},
    {"/Library/PrivilegedHelperTools/com.norvik.DiagnosticUtilityHelper", false, false},
    {"/Library/PrivilegedHelperTools/com.norvik.InstallerHelper", false, false},
    {"/Library/PrivilegedHelperTools/com.norvik.SolutionUpdaterHelper", false, false},
    {"/Library/PrivilegedHelperTools/com.norvik.UninstallerHelper", false, false},
    {"/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper", false, false},
    {"/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper.package", false, false},
    {"/Users/Shared/Norvik", false, false},
    {"/Applications/Norvik", false, false},
    {"/Applications/NORVIK", false, false},
    {"/Applications/NORVIK/SNT", false, true},
    {"/Library/Application Support/NORVIK", false, false},
    {"/Library/Application Support/NORVIK/SNT", false, true},
    {"/Library/Application Support/Norvik", false, false},
    {"/Library/Application Support/Norvik/AntiVir", false, true},
    {"/Library/Application Support/Norvik/Antivirus", false, true},
};
/// Neighbours of the product that do not count.
const Lines kStrangers{"/Applications/Sentrel.app.old", "/Library/LaunchDaemons/com.norvik.plist",
                       "/Library/PrivilegedHelperTools/com.norvik.installerhelper",
                       "/Library/Application Support/NORVIK2", "/Users/Shared/norvik"};
const Lines kLabels{"com.norvik.fileaccessd",
                    "com.norvik.containmentd",
                    "com.norvik.TrayMenu",
                    "com.norvik.Agent",
                    "com.norvik.InstallerHelper",
                    "com.norvik.SupportPrivilegedHelper",
                    "com.norvik.SolutionUpdaterHelper"};
const Lines kStrangeLabels{"com.norvik", "com.norvik.fileaccessd2", "com.example.daemon"};

/// Writes the shell that makes one random Mac after the other, looks at each in its own way and has
/// sentrel-inspect look at it.
class Script {
  public:
    explicit Script(unsigned seed) : random_(seed) { text_ << "mkdir -p /tmp/out; exec 2>/tmp/out/errors\n"; }

    void addState(int number) {
        reset();
        const bool isBare = chance(20);
        if (!isBare) {
            for (unsigned count = upTo(3); count > 0; --count) {
                makeItem(kItems[upTo(kItems.size() - 1)].path);
            }
            for (unsigned count = upTo(chance(50) ? 0 : 2); count > 0; --count) {
                makeJob(kLabels[upTo(kLabels.size() - 1)]);
            }
            if (chance(20)) {
                makeProcess();
            }
        }
        if (chance(50)) {
            makeItem(kStrangers[upTo(kStrangers.size() - 1)]);
        }
        if (chance(30)) {
            makeJob(kStrangeLabels[upTo(kStrangeLabels.size() - 1)]);
        }
        look(std::to_string(number));
    }
    void unloadExtension() {
        text_ << "/usr/local/bin/client unload-kext com.norvik.kext.FileAccessFilter\n";
    }

    [[nodiscard]] std::string text() const { return text_.str(); }

  private:
    std::size_t upTo(std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(random_);
    }
    bool chance(std::size_t percent) { return upTo(99) < percent; }

    void reset() {
        text_ << "[ -z \"$p\" ] || kill -9 $p; p=; wait\n";
        for (const Lines* labels : {&kLabels, &kStrangeLabels}) {
            for (const std::string& label : *labels) {
                made_.contains(label) ? text_ << "launchctl bootout system/" << label
                                              << "; launchctl bootout gui/501/" << label << "\n"
                                      : text_;
            }
        }
        made_.clear();
        text_ << "rm -rf /tmp/jobs";
        for (const Item& item : kItems) {
            text_ << " '" << item.path << "'";
        }
        for (const std::string& stranger : kStrangers) {
            text_ << " '" << stranger << "'";
        }
        text_ << "\nmkdir /tmp/jobs\n";
    }

    void makeItem(const std::string& path) {
        text_ << "mkdir -p '" << path.substr(0, path.rfind('/')) << "'; ";
        switch (upTo(3)) {
            case 0:
                text_ << "echo x >'" << path << "'\n";
                break;
            case 1:
                text_ << "ln -s /nowhere '" << path << "'\n";
                break;
            default:
                text_ << "mkdir '" << path << "'\n";
        }
    }

    void makeJob(const std::string& label) {
        made_.insert(label);
        const std::string plist = "/tmp/jobs/" + label + ".plist";
        const std::string program = "/tmp/jobs/" + label;
        text_ << "echo '#!/bin/sh' >" << program << "; chmod 755 " << program
              << "; echo '<plist><dict><key>Label</key><string>" << label
              << "</string><key>Program</key><string>" << program << "</string></dict></plist>' >" << plist
              << "; launchctl bootstrap " << (chance(50) ? "system" : "gui/501") << " " << plist << "\n";
        if (chance(60)) {
            text_ << "rm " << plist << "\n";
            if (chance(70)) {
                text_ << "rm " << program << "\n";
            }
        }
    }

    void makeProcess() {
        const bool isProducts = chance(70);
        const std::string folder = isProducts ? "/Users/Shared/Norvik" : "/opt";
        text_ << "rm -rf '" << folder << "'; mkdir -p '" << folder << "'; cp /usr/bin/sleep '" << folder
              << "/Sentrel'\n"
              << TestSupport::SimulatedMac::startOf(folder + "/Sentrel");
        if (chance(60)) {
            text_ << "rm -rf '" << folder << "'\n";
        }
    }

    void look(const std::string& number) {
        const std::string out = "/tmp/out/" + number;
        text_ << "{ for i in";
        for (const Item& item : kItems) {
            text_ << " '" << item.path << "'";
        }
        text_ << "; do if [ -e \"$i\" ] || [ -L \"$i\" ]; then echo \"item $i\"; fi; done\n"
              << "launchctl list | sed -n 's/.*\\t\\(com\\.norvik\\..*\\)/job \\1/p'\n"
              << "launchctl print gui/501 | sed -n 's/.*\\t\\(com\\.norvik\\..*\\)/job \\1/p'\n"
              << "for i in /tmp/jobs/*; do echo \"file $i\"; done\n"
              << "[ -z \"$p\" ] || echo \"process $(readlink /proc/$p/exe)\"; } >" << out << ".look\n"
              << "sentrel-inspect verify >" << out << ".verify; echo $? >" << out << ".status\n";
    }

    std::mt19937 random_;
    std::ostringstream text_;
    std::set<std::string> made_;
};

/// What the independent look comes to, as an exit status.
int expectedStatus(const std::string& look, bool extensionIsLoaded) {
    std::set<std::string> files;
    bool hasItem = false;
    bool hasProgram = false;
    bool hasInstallation = false;
    bool hasProcess = false;
    Lines jobs;
    std::istringstream lines(look);
    for (std::string line; std::getline(lines, line);) {
        const std::string kind = line.substr(0, line.find(' '));
        const std::string value = line.substr(kind.size() + 1);
        const auto item = std::find_if(kItems.begin(), kItems.end(),
                                       [&value](const Item& each) { return value == each.path; });
        if (kind == "item") {
            hasItem = true;
            hasProgram = hasProgram || item->isProgram;
            hasInstallation = hasInstallation || item->makesAnInstallation;
        } else if (kind == "job" && std::find(kLabels.begin(), kLabels.end(), value) != kLabels.end()) {
            jobs.push_back(value);
        } else if (kind == "file") {
            files.insert(value);
        } else if (kind == "process") {
            hasProcess = value.starts_with("/Users/Shared/Norvik/");
        }
    }
    const bool hasLiveJob = std::any_of(jobs.begin(), jobs.end(), [&files](const std::string& label) {
        return files.contains("/tmp/jobs/" + label) || files.contains("/tmp/jobs/" + label + ".plist");
    });
    if (hasProgram && hasInstallation) {
        return 3;
    }
    if (hasItem || hasProcess || hasLiveJob) {
        return 4;
    }
    return jobs.empty() && !extensionIsLoaded ? 0 : 5;
}

class RandomMacs : public testing::TestWithParam<unsigned> {};

TEST_P(RandomMacs, AreCalledWhatAnIndependentLookSays) {
    constexpr int kStates = 35;
    constexpr int kUnloadedFrom = 17;
    const bool startsLoaded = GetParam() % 2 == 1;
    LookedAtMac mac({"--empty", "--users", "alice:501"});
    mac.putCopy("/usr/local/bin/client", SENTREL_FIXTURES "/macsim_client");
    if (startsLoaded) {
        mac.put("/Library/Extensions/FileAccessFilter.kext/Contents/Info.plist",
                "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>"
                "com.norvik.kext.FileAccessFilter</string></dict></plist>");
    }
    Script script(GetParam());
    for (int state = 0; state < kStates; ++state) {
        if (state == kUnloadedFrom) {
            script.unloadExtension();
        }
        script.addState(state);
    }
    mac.put("/tmp/script", script.text());
    ASSERT_EQ(mac.shell(". /tmp/script; [ -z \"$p\" ] || kill -9 $p").status, 0);
    std::set<int> seen;
    for (int state = 0; state < kStates; ++state) {
        const std::string out = "/tmp/out/" + std::to_string(state);
        const std::string look = mac.contents(out + ".look");
        const int expected = expectedStatus(look, startsLoaded && state < kUnloadedFrom);
        seen.insert(expected);
        EXPECT_EQ(mac.contents(out + ".status"), std::to_string(expected) + "\n")
            << "state " << state << "\n"
            << look << mac.contents(out + ".verify");
    }
    // The states are worth looking at. Without a loaded extension a missing restart is rare.
    const std::set<int> worthwhile = startsLoaded ? std::set<int>{0, 3, 4, 5} : std::set<int>{0, 3, 4};
    EXPECT_TRUE(std::includes(seen.begin(), seen.end(), worthwhile.begin(), worthwhile.end()));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomMacs, testing::Values(1U, 2U, 3U, 4U, 5U, 6U));

}  // namespace

}  // namespace InspectTest
