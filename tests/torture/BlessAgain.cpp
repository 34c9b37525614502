// A program with the uninstaller's identity that blesses the helpers again and again while they grow idle:
//   bless-again SHIFT      SHIFT, in milliseconds, is added to every moment
// Each round has the installer helper execute a list, waits, blesses both helpers every few milliseconds
// across the moment when an idle helper leaves, and has a list executed at once. Prints "blessings" and
// "lists" for every one that succeeded, "lost ..." for every other.

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <semaphore>
#include <string>
#include <thread>

#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/IntallHelper.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "NorvikCommon/AuthorizationUtils.h"
#include "NorvikCommon/PrivilegedHelperUtils.h"
#include "Platform/SystemPorts.h"

namespace {

using namespace std::chrono_literals;

constexpr int kRounds = 4;
constexpr auto kFirstBlessing = 1900ms;
constexpr auto kLastBlessing = 2100ms;
constexpr auto kStep = 10ms;
constexpr auto kPatience = 30s;
constexpr auto kLongest = 90s;

class Delegate final : public Platform::XPCObject {
  public:
    [[nodiscard]] std::string_view protocolName() const override { return "CommandExecutingDelegate"; }
    void message(std::string_view /*selector*/, std::vector<Platform::XPCValue> /*arguments*/,
                 Platform::XPCReply /*reply*/) override {
        reported_.release();
    }
    [[nodiscard]] bool wait() { return reported_.try_acquire_for(kPatience); }

  private:
    std::counting_semaphore<> reported_{0};
};

/// Has the helper remove something that is not there, and waits for its report.
bool executeList() {
    const auto connection = Platform::SystemPorts::current().xpc->makeConnection(
        std::string(InstallCommon::InstallHelper::machServiceName), Platform::kXPCConnectionPrivileged);
    connection->setRemoteObjectInterface(InstallCommon::CreateCommandExecutingXPCInterface());
    connection->resume();
    Base::CodedObjectList commands;
    commands.push_back(
        std::make_unique<InstallCommon::RemoveCommand>("Nothing", Base::URL::fileURL("/tmp/nothing")));
    const auto delegate = std::make_shared<Delegate>();
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(std::move(commands));
    arguments.emplace_back(std::shared_ptr<Platform::XPCObject>(delegate));
    connection->remoteObjectProxy()->message("executeWithCommands:delegate:", std::move(arguments), {});
    const bool reported = delegate->wait();
    connection->invalidate();
    return reported;
}

void say(bool succeeded, const char* figure, const std::string& lost) {
    std::cout << (succeeded ? figure : "lost " + lost) << std::endl;
}

void blessBoth(const Platform::SFAuthorization& authorization, long milliseconds) {
    using InstallCommon::SupportPrivilegedHelperClient;
    const std::string when = " after " + std::to_string(milliseconds) + " ms";
    say(NorvikCommon::BlessHelperWithLabel(std::string(InstallCommon::InstallHelper::machServiceName),
                                           authorization),
        "blessings", "a blessing of the installer helper" + when);
    say(SupportPrivilegedHelperClient::blessHelper(authorization), "blessings",
        "a blessing of the support helper" + when);
}

}  // namespace

int main(int argc, char* argv[]) {
    const auto shift = std::chrono::milliseconds(argc > 1 ? std::atol(argv[1]) : 0);
    Platform::SystemPorts::setCurrent(&Platform::createSystemPorts());
    const auto authorization = NorvikCommon::AuthorizationUtils::authorizationForRootAction(false);
    if (authorization == nullptr) {
        return 1;
    }
    blessBoth(*authorization, 0);
    const auto end = std::chrono::steady_clock::now() + kLongest;
    for (int round = 0; round < kRounds && std::chrono::steady_clock::now() < end; ++round) {
        say(executeList(), "lists", "a list after a pause");
        const auto start = std::chrono::steady_clock::now();
        for (auto moment = kFirstBlessing + shift;
             moment < kLastBlessing + shift && std::chrono::steady_clock::now() < end; moment += kStep) {
            std::this_thread::sleep_until(start + moment);
            blessBoth(*authorization, moment.count());
        }
        say(executeList(), "lists", "a list right after a blessing");
    }
    return 0;
}
