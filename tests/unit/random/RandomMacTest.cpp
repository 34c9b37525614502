// Ten thousand Macs that nobody thought of: the real list of commands against the fakes, compared with an
// uninstallation by hand and with a plain statement of what must be left.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include <rapidcheck/gtest.h>

#include "InstallCommon/CommandSuitsProvider.h"
#include "Platform/ProcessOnce.h"
#include "RandomMac.h"
#include "support/ProductPlaces.h"
#include "support/UninstallationByHand.h"

namespace {

using namespace RandomMacs;
using TestSupport::FakeLaunchd;
using TestSupport::FakeMac;
using TestSupport::LaunchctlCall;
namespace Places = TestSupport::ProductPlaces;
using Lines = std::vector<std::string>;
using Nodes = std::map<std::string, TestSupport::FakeFileManager::Node>;

/// Everything that can be told of a Mac after an uninstallation.
struct Outcome {
    Nodes nodes;
    std::map<FakeLaunchd::Job, std::string> jobs;
    Lines processes;
    std::map<std::string, bool> extensions;
    Lines log;
    std::vector<LaunchctlCall> calls;
    std::size_t pauses = 0;
    std::uint32_t effectiveUser = 0;
};

Outcome outcomeOf(const FakeMac& mac, const FakeLaunchd& launchd) {
    Outcome outcome{mac.files.nodes,
                    launchd.jobs,
                    {},
                    mac.kernelExtensions.loaded.value(),
                    mac.log.lines,
                    launchd.calls,
                    mac.callsOf("sleep", "5").size(),
                    mac.users.effective};
    for (const auto& process : mac.processes.processes) {
        outcome.processes.push_back(process.name);
    }
    return outcome;
}

/// The whole list, in what looks to it like a new process.
void executeCommands() {
    Platform::OnceGuard::resetAll();
    auto commands = InstallCommon::CommandSuitsProvider::makeUninstallCommands();
    std::ranges::move(InstallCommon::CommandSuitsProvider::makeCleanupCommands(),
                      std::back_inserter(commands));
    for (const auto& command : commands) {
        command->execute();
    }
}

std::set<std::uint32_t> localUsers(const RandomMac& random) {
    std::set<std::uint32_t> users;
    for (const Platform::Users::Entry& entry : random.users) {
        if (entry.home.starts_with("/Users")) {
            users.insert(entry.uid);
        }
    }
    return users;
}

bool isAtOrBelow(const std::string& path, const std::string& place) {
    return path.starts_with(place) && (path.size() == place.size() || path[place.size()] == '/');
}

/// What must be left: all that is in no place of the product, and of the product what the system refused to
/// remove, with the folders that hold it.
Nodes survivors(const Nodes& before, const std::map<std::string, int>& refused) {
    Nodes left = before;
    std::erase_if(left, [&refused](const auto& node) {
        const std::string& path = node.first;
        const bool isOurs = std::ranges::any_of(
            Places::everything(), [&path](const std::string& place) { return isAtOrBelow(path, place); });
        const bool stays = std::ranges::any_of(
            refused, [&path](const auto& refusal) { return isAtOrBelow(refusal.first, path); });
        return isOurs && !stays;
    });
    return left;
}

void expectSame(Outcome actual, Outcome expected) {
    TestSupport::sortHelperTools(actual.log);
    TestSupport::sortHelperTools(expected.log);
    for (std::size_t i = 0; i < std::min(actual.log.size(), expected.log.size()); ++i) {
        RC_ASSERT(actual.log[i] == expected.log[i]);
    }
    RC_ASSERT(actual.log.size() == expected.log.size());
    RC_ASSERT(actual.calls == expected.calls);
    RC_ASSERT(actual.pauses == expected.pauses);
    RC_ASSERT(actual.nodes == expected.nodes);
    RC_ASSERT(actual.jobs == expected.jobs);
    RC_ASSERT(actual.processes == expected.processes);
    RC_ASSERT(actual.extensions == expected.extensions);
}

Outcome byHand(const RandomMac& random, const std::vector<std::uint32_t>& users) {
    FakeMac mac;
    FakeLaunchd launchd(mac);
    furnish(random, mac, launchd);
    TestSupport::uninstallByHand(mac, launchd, users);
    return outcomeOf(mac, launchd);
}

RC_GTEST_PROP(RandomMacs, LoseTheProductButWhatTheSystemRefusedAndNothingElse, ()) {
    const RandomMac random = *randomMac();
    Outcome product;
    {
        FakeMac mac;
        FakeLaunchd launchd(mac);
        furnish(random, mac, launchd);
        const Nodes before = mac.files.nodes;
        executeCommands();
        product = outcomeOf(mac, launchd);
        RC_ASSERT(product.nodes == survivors(before, mac.files.resisting));
        RC_ASSERT(product.effectiveUser == 0U);

        mac.log.lines.clear();
        executeCommands();
        const Outcome again = outcomeOf(mac, launchd);
        RC_ASSERT(again.nodes == product.nodes);
        RC_ASSERT(again.jobs == product.jobs);
        RC_ASSERT(again.processes == product.processes);
        RC_ASSERT(again.extensions == product.extensions);
    }
    const std::vector<std::uint32_t> users = TestSupport::usersOfAgents(product.log);
    RC_ASSERT(std::set(users.begin(), users.end()) == localUsers(random));
    expectSame(product, byHand(random, users));
}

}  // namespace
