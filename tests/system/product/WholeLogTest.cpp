// Every line of the helper's log, predicted from the contents of the Mac before the run.

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "MacInventory.h"
#include "support/ProductMac.h"
#include "support/UninstallationByHand.h"

namespace {

using namespace SystemTests;
using Lines = std::vector<std::string>;
using Node = TestSupport::FakeFileManager::Node;

/// The label that a job's property list names.
std::string labelIn(const std::string& propertyList) {
    static const std::regex label("<key>Label</key>\\s*<string>([^<]*)</string>");
    std::smatch found;
    return std::regex_search(propertyList, found, label) ? found[1].str() : "";
}

void copyFiles(const MacInventory& inventory, TestSupport::FakeFileManager& files) {
    for (const auto& [path, facts] : inventory) {
        Node& node = files.nodes[path];
        node.kind = facts.kind == 'd'   ? Node::Kind::folder
                    : facts.kind == 'l' ? Node::Kind::link
                                        : Node::Kind::file;
        node.mode = static_cast<std::uint16_t>(facts.mode);
        node.owner = facts.owner;
        node.group = facts.group;
        node.target = facts.kind == 'l' ? facts.contents : "";
        node.contents = path.ends_with(".plist") ? labelIn(facts.contents) : "";
    }
}

/// What launchctl says of a running job of the system.
std::string printed(const std::string& domain, const nlohmann::json& job, const std::string& program) {
    return domain + "/" + job.at("label").get<std::string>() +
           " = {\n\tpath = " + job.at("plist").get<std::string>() +
           "\n\tstate = running\n\tprogram = " + program + "\n\tpid = PID\n}\n";
}

void copyState(const nlohmann::json& state, TestSupport::FakeMac& mac, TestSupport::FakeLaunchd& launchd) {
    std::map<int, std::string> programs;
    for (const auto& process : state.at("processes")) {
        programs[process.at("pid")] = process.at("path");
        mac.processes.processes.push_back({process.at("pid").get<std::int32_t>(), process.at("uid"),
                                           process.at("name"), process.at("path"), true});
    }
    for (const auto& [domain, jobs] : state.at("jobs").items()) {
        if (domain.starts_with("gui/")) {
            launchd.sessions.insert(static_cast<std::uint32_t>(std::stoul(domain.substr(4))));
        }
        for (const auto& job : jobs) {
            const std::string program = job.at("pid").is_null() ? "" : programs[job.at("pid")];
            launchd.jobs[{domain, job.at("label")}] = printed(domain, job, program);
        }
    }
    mac.kernelExtensions.loaded.emplace();
    for (const auto& extension : state.at("kexts")) {
        (*mac.kernelExtensions.loaded)[extension] = false;
    }
}

/// A line as the real log has it: with the real file manager's words, without process ids and the line breaks
/// at the end.
std::string asLogged(std::string line) {
    static const std::string kFakeWords = "\" does not exist";
    if (line.ends_with(kFakeWords)) {
        line.replace(line.size() - kFakeWords.size(), kFakeWords.size(),
                     "\" could not be removed: No such file or directory");
    }
    line = std::regex_replace(line, std::regex("(\\n\\tpid = |Kill result for pid )[0-9]+"), "$1PID");
    line.erase(line.find_last_not_of('\n') + 1);
    return line;
}

Lines asLogged(Lines lines) {
    std::ranges::transform(lines, lines.begin(), [](const std::string& line) { return asLogged(line); });
    TestSupport::sortHelperTools(lines);
    return lines;
}

/// Foretells, runs, compares.
void expectWholeLog(ProductMac& mac, const std::vector<std::uint32_t>& localUsers, const Lines& faults,
                    const std::map<std::string, int>& resisting) {
    // The state of a booted Mac: the next boot brings the same.
    ASSERT_EQ(mac.shell("true").status, 0);
    const MacInventory before = inventoryOf(mac);
    const nlohmann::json state = mac.state();
    ASSERT_EQ(mac.uninstall(faults).status, 0);
    EXPECT_EQ(mac.uninstallerLog(), kSuccess);
    const Lines actual = mac.helperLog();

    auto users = TestSupport::usersOfAgents(actual);
    EXPECT_TRUE(std::ranges::is_permutation(users, localUsers));
    TestSupport::FakeMac fake;
    TestSupport::FakeLaunchd launchd(fake);
    copyFiles(before, fake.files);
    fake.files.resisting = resisting;
    copyState(state, fake, launchd);
    for (auto& [extension, inUse] : *fake.kernelExtensions.loaded) {
        inUse = std::ranges::find(faults, "kext-busy") != faults.end();
    }
    TestSupport::uninstallByHand(fake, launchd, users);

    const Lines expected = asLogged(fake.log.lines);
    const Lines compared = asLogged(actual);
    for (std::size_t i = 0; i < std::min(compared.size(), expected.size()); ++i) {
        ASSERT_EQ(compared[i], expected[i]) << "line " << i;
    }
    EXPECT_EQ(compared.size(), expected.size());
}

TEST(WholeLog, OfAMacWithEveryGenerationIsForetold) {
    ProductMac mac({"--installed", "all", "--users", "alice:501,bob:502:logged-out,carol:503", "--running",
                    "Sentrel,NORVIK Antivirus"});
    expectWholeLog(mac, {501, 502, 503}, {}, {});
}

TEST(WholeLog, OfTheCurrentGenerationWithoutUsersInSessionsIsForetold) {
    ProductMac mac({"--installed", "current", "--users", "alice:501:logged-out"});
    expectWholeLog(mac, {501}, {}, {});
}

TEST(WholeLog, OfRefusedOperationsIsForetold) {
    const std::string stuck = "/Library/Application Support/NORVIK/SNT/settings.plist";
    ProductMac mac({"--installed", "snt-bundle", "--installed", "current", "--users", "alice:501"});
    expectWholeLog(mac, {501}, {"kext-busy", "immutable=" + stuck}, {{stuck, EPERM}});
}

}  // namespace
