#include "support/UninstallationByHand.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "support/InstallerLine.h"
#include "support/ProductPlaces.h"

namespace TestSupport {

namespace {

constexpr std::uint32_t kPause = 5;
constexpr int kKill = 9;

class Hand {
  public:
    Hand(FakeMac& mac, FakeLaunchd& launchd) : mac_(mac), launchd_(launchd) {}

    void stopDaemon(const std::string& label) {
        if (launchctl({"print", "system/" + label}, 0) == 0 &&
            launchctl({"bootout", "system", ProductPlaces::daemonPropertyList(label)}, 0) == 0) {
            mac_.clock.sleep(kPause);
        }
    }

    void stopAgent(const std::string& label, std::uint32_t user) {
        line("Disable & bootout agent " + label + " for " + std::to_string(user));
        static_cast<void>(launchctl(
            {"bootout", "gui/" + std::to_string(user), ProductPlaces::agentPropertyList(label)}, user));
    }

    void unloadExtension() {
        const std::int32_t code = mac_.kernelExtensions.unload(ProductPlaces::kExtension);
        if (code != 0) {
            line("Kext " + ProductPlaces::kExtensionBundle +
                 " unload failed. Return code: " + hexadecimal(code));
        }
    }

    /// Of the processes that there were when the first one was looked for.
    void closeProcesses(const std::string& name, const std::vector<FakeProcessTable::Process>& atFirst) {
        for (const FakeProcessTable::Process& process : atFirst) {
            if (process.name != name) {
                continue;
            }
            const int result = mac_.processes.kill(process.pid, kKill);
            line("Kill result for pid " + std::to_string(process.pid) + ": " + std::to_string(result));
            if (result != 0) {
                line("Failed to kill process " + name + ". Return code: " + std::to_string(result) + ".");
            }
        }
    }

    void removeWithRepairCopy(const std::string& path) {
        remove(path);
        remove(ProductPlaces::repairCopy(path));
    }

  private:
    void line(const std::string& text) { mac_.log.log(installerLine(text)); }

    [[nodiscard]] static std::string hexadecimal(std::int32_t code) {
        std::array<char, 16> text{};
        return {text.data(), std::to_chars(text.data(), text.data() + text.size(), code, 16).ptr};
    }

    [[nodiscard]] std::int32_t launchctl(const std::vector<std::string>& arguments, std::uint32_t user) {
        const std::uint32_t effective = mac_.users.refusesChange ? mac_.users.effective : user;
        const auto result = launchd_.run(arguments, mac_.users.real, effective);
        if (!result.error.empty()) {
            mac_.log.log("[SNTM Installer]\nError description: " + result.error + ";\ntermination status: " +
                         std::to_string(result.status) + ";\ntermination reason: exit.");
        }
        if (!result.output.empty()) {
            line("Output: " + result.output);
        }
        return result.status;
    }

    void remove(const std::string& path) {
        const auto error = mac_.files.removeItem(Base::URL::fileURL(path));
        line(error ? "Error removing: " + error->description : "Removed at " + path);
    }

    FakeMac& mac_;
    FakeLaunchd& launchd_;
};

}  // namespace

void uninstallByHand(FakeMac& mac, FakeLaunchd& launchd, const std::vector<std::uint32_t>& users) {
    Hand hand(mac, launchd);
    for (const std::string& label : ProductPlaces::daemons()) {
        hand.stopDaemon(label);
    }
    for (const std::string& label : ProductPlaces::agents()) {
        hand.stopAgent(label, 0);
        for (const std::uint32_t user : users) {
            hand.stopAgent(label, user);
        }
    }
    for (int count = 0; count < ProductPlaces::kUnloads; ++count) {
        hand.unloadExtension();
    }
    const auto processes = mac.processes.processes;
    for (const std::string& name : ProductPlaces::processes()) {
        hand.closeProcesses(name, processes);
    }
    for (const auto* list : {&ProductPlaces::items(), &ProductPlaces::folders(),
                             &ProductPlaces::helperTools(), &ProductPlaces::helperPropertyLists()}) {
        for (const std::string& path : *list) {
            hand.removeWithRepairCopy(path);
        }
    }
}

std::vector<std::uint32_t> usersOfAgents(const std::vector<std::string>& log) {
    const std::string agent = installerLine("Disable & bootout agent ");
    const std::string first = agent + ProductPlaces::agents().front() + " for ";
    std::vector<std::uint32_t> users;
    for (const std::string& line : log) {
        if (line.starts_with(first)) {
            users.push_back(static_cast<std::uint32_t>(std::stoul(line.substr(first.size()))));
        } else if (line.starts_with(agent)) {
            break;
        }
    }
    if (!users.empty()) {
        users.erase(users.begin());
    }
    return users;
}

void sortHelperTools(std::vector<std::string>& log) {
    const auto group = static_cast<std::ptrdiff_t>(2 * ProductPlaces::helperTools().size());
    if (log.size() >= static_cast<std::size_t>(2 * group)) {
        std::sort(log.end() - 2 * group, log.end() - group);
        std::sort(log.end() - group, log.end());
    }
}

}  // namespace TestSupport
