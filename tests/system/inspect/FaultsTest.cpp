// A run of the uninstaller under every fault that the simulated Mac knows: what verify says afterwards,
// beside an independent look at the Mac's folder and at process 1's tables.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>

#include "LookedAtMac.h"

namespace InspectTest {

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;
using Names = std::set<std::string>;

/// Two agents, which stop at once, and no daemon, which would be given five seconds.
const Lines kAgents{"--installed", "antivir", "--users", "alice:501"};
/// Daemons and the extension.
const Lines kCurrent{"--installed", "current", "--users", "alice:501"};

const std::string kRun =
    "'/Volumes/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel' --silent 2>/dev/null";

/// A run whose uninstaller would wait for its 60 seconds is ended as soon as the log has this line.
std::string runUntil(const std::string& line) {
    return kRun + " & until grep -q '" + line + "' /var/log/system.log; do sleep 0.05; done; kill -9 $!";
}

struct Row {
    const char* name;
    Lines mac;
    Lines faults;
    std::string run;
    /// What verify says under the fault, and its exit status.
    const char* verdict;
    int status;
    /// Its exit status for the Mac's files alone, after the run.
    int files;
};

std::ostream& operator<<(std::ostream& stream, const Row& row) {
    return stream << row.name;
}

const std::string kUntilDeath = runUntil("Job com.norvik.InstallerHelper was ended by signal 9");
const std::string kUntilLastTool =
    runUntil("Removed at /Library/PrivilegedHelperTools/com.norvik.InstallerHelper");

const std::vector<Row>& rows() {
    static const std::vector<Row> kRows{
        {"NoFault", kAgents, {}, kRun, "nothing", 0, 0},
        {"Authorization", kAgents, {"authorization"}, kRun, "installed", 3, 3},
        {"BlessInstaller", kAgents, {"bless-installer"}, kRun, "installed", 3, 3},
        {"BlessSupport", kAgents, {"bless-support"}, kRun, "installed", 3, 3},
        {"Package", kAgents, {"package"}, kRun, "installed", 3, 3},
        {"DiskFull", kAgents, {"disk-full"}, kRun, "installed", 3, 3},
        {"NoInstallerService",
         kAgents,
         {"no-installer-service"},
         runUntil("found installed version"),
         "installed",
         3,
         3},
        {"HelperExitEarly", kAgents, {"helper-exit-after=20"}, kUntilDeath, "installed", 3, 3},
        {"HelperExitBeforeTools", kAgents, {"helper-exit-after=74"}, kUntilDeath, "leftovers", 4, 4},
        {"HelperExitAtTheEnd", kAgents, {"helper-exit-after=75"}, kRun, "nothing", 0, 0},
        {"HelperMute", kAgents, {"helper-mute"}, kUntilLastTool, "nothing", 0, 0},
        {"HelperPause", kCurrent, {"helper-pause=0"}, kRun, "nothing", 0, 0},
        {"ImmutableData", kAgents, {"immutable=/Users/Shared/Norvik"}, kRun, "leftovers", 4, 4},
        {"ImmutablePrograms",
         kAgents,
         {"immutable=/Library/Application Support/Norvik/AntiVir"},
         kRun,
         "installed",
         3,
         3},
        {"KextBusy", kCurrent, {"kext-busy", "helper-pause=0"}, kRun, "restart", 5, 0},
        {"BootoutFails", kAgents, {"launchctl-fail=bootout"}, kRun, "leftovers", 4, 4},
        {"PrintFails", kAgents, {"launchctl-fail=print"}, kRun, "unknown", 1, 4},
        {"LaunchctlHangs", kAgents, {"launchctl-hang=0.1"}, kRun, "nothing", 0, 0},
        {"UnreadablePasswd", kAgents, {"unreadable-passwd"}, kRun, "unknown", 1, 0},
    };
    return kRows;
}

/// What is there of the product, one thing a line.
struct Things {
    Names items;
    Names jobs;
    Names extensions;
    Names processes;
};

bool isTheProducts(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    return name.find("norvik") != std::string::npos || name.find("sentrel") != std::string::npos ||
           name.find("fileaccess") != std::string::npos;
}

/// The outermost items whose names tell that they are the product's, whatever the catalogue says.
void lookAtFolder(const fs::path& root, const fs::path& path, Names& items) {
    // What the test brought along, the simulator's sockets, and the runtime support, which stays by design.
    static const Names kOthers{"/usr/local/bin/sentrel-inspect", "/Volumes/Uninstall Sentrel.app",
                               "/var/db/receipts", "/var/run/mach"};
    for (const auto& entry : fs::directory_iterator(root / path.relative_path())) {
        const fs::path place = path / entry.path().filename();
        if (kOthers.contains(place.string())) {
            continue;
        }
        if (isTheProducts(place.filename().string())) {
            items.insert(place.string());
        } else if (entry.is_directory() && !entry.is_symlink()) {
            lookAtFolder(root, place, items);
        }
    }
}

/// The Mac's folder, and what process 1 wrote down when the run was over.
Things independentLook(const LookedAtMac& mac) {
    Things things;
    lookAtFolder(mac.path(), "/", things.items);
    const auto state = mac.state();
    for (const auto& [domain, jobs] : state.at("jobs").items()) {
        for (const auto& job : jobs) {
            const auto label = job.at("label").get<std::string>();
            if (isTheProducts(label)) {
                things.jobs.insert(fs::path(domain) / label);
            }
        }
    }
    for (const auto& extension : state.at("kexts")) {
        things.extensions.insert(extension.get<std::string>());
    }
    for (const auto& process : state.at("processes")) {
        const auto path = process.at("path").get<std::string>();
        if (isTheProducts(path)) {
            things.processes.insert(path);
        }
    }
    return things;
}

/// The lines "found: ..." of verify.
Things foundBy(const std::string& verify) {
    Things things;
    std::istringstream lines(verify);
    for (std::string line; std::getline(lines, line);) {
        const auto rest = [&line](const std::string& start, const std::string& end) {
            return line.starts_with(start) ? line.substr(start.size(), line.find(end) - start.size()) : "";
        };
        for (const char* kind : {"file ", "folder ", "link ", "other "}) {
            things.items.insert(rest(std::string("found: ") + kind, "\n"));
        }
        things.jobs.insert(rest("found: job ", ","));
        things.extensions.insert(rest("found: loaded kernel extension ", "\n"));
        if (line.starts_with("found: process ")) {
            things.processes.insert(line.substr(line.find('/')));
        }
    }
    for (Names* names : {&things.items, &things.jobs, &things.extensions, &things.processes}) {
        names->erase("");
    }
    return things;
}

class RunUnderAFault : public testing::TestWithParam<Row> {};

TEST_P(RunUnderAFault, LeavesWhatVerifySays) {
    const Row& row = GetParam();
    LookedAtMac mac(row.mac);
    ASSERT_EQ(TestSupport::runProgram({"cp", "-R", SENTREL_BINARIES "/Uninstall Sentrel.app",
                                       mac.path("/Volumes/Uninstall Sentrel.app")})
                  .status,
              0);
    const auto result = mac.run(row.faults, {"sh", "-c", row.run + "; sentrel-inspect verify --wait 120"});
    EXPECT_EQ(result.status, row.status) << result.out << result.err;
    const std::string last = std::string("result: ") + row.verdict + ", ";
    EXPECT_NE(("\n" + result.out).find("\n" + last), std::string::npos) << result.out;

    const Things there = independentLook(mac);
    const Things found = foundBy(result.out);
    EXPECT_TRUE(std::includes(found.items.begin(), found.items.end(), there.items.begin(), there.items.end()))
        << result.out << testing::PrintToString(there.items);
    for (const std::string& item : found.items) {
        EXPECT_TRUE(fs::exists(fs::symlink_status(mac.path(item)))) << item;
    }
    const bool looksAtJobs = result.out.find("could not look: ") == std::string::npos;
    EXPECT_EQ(looksAtJobs, row.status != 1) << result.out;
    if (looksAtJobs) {
        EXPECT_EQ(found.jobs, there.jobs);
    }
    EXPECT_EQ(found.extensions, there.extensions);
    EXPECT_EQ(found.processes, there.processes);

    const auto outside = mac.inspectFolder({"verify"});
    EXPECT_EQ(outside.status, row.files) << outside.out;
    EXPECT_EQ(foundBy(outside.out).items, found.items);
}

INSTANTIATE_TEST_SUITE_P(All, RunUnderAFault, testing::ValuesIn(rows()),
                         [](const auto& info) { return info.param.name; });

TEST(RunsUnderFaults, LeaveNoFaultOut) {
    Names tried;
    for (const Row& row : rows()) {
        for (const std::string& fault : row.faults) {
            tried.insert(fault.substr(0, fault.find('=')));
        }
    }
    Names known;
    std::istringstream lines(
        TestSupport::runProgram({TestSupport::SimulatedMac::macsim(), "list-faults"}).out);
    for (std::string line; std::getline(lines, line);) {
        known.insert(line.substr(0, line.find_first_of("= ")));
    }
    EXPECT_FALSE(known.empty());
    EXPECT_EQ(tried, known);
}

}  // namespace

}  // namespace InspectTest
