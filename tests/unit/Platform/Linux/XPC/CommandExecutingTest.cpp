#include <gtest/gtest.h>

#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "XPCTestClient.h"
#include "XPCTestService.h"

namespace {

using namespace XPCTests;
using Lines = std::vector<std::string>;
using Connection = std::shared_ptr<Platform::Linux::LinuxXPCConnection>;

/// Records the commands and reports them, as the installer helper does.
class Executor final : public InstallCommon::CommandExecuting {
  public:
    explicit Executor(Journal& journal) : journal_(journal) {}
    void executeWithCommands(InstallCommon::CommandList commands,
                             std::shared_ptr<InstallCommon::CommandExecutingDelegate> delegate) override {
        for (const auto& command : commands) {
            journal_.add(command->commandDescription());
            delegate->commandExecutingDidExecuteCommand(command->commandDescription(), command->weight());
        }
    }

  private:
    Journal& journal_;
};

class Delegate final : public InstallCommon::CommandExecutingDelegate {
  public:
    void commandExecutingDidExecuteCommand(const std::string& description, std::int32_t withWeight) override {
        reports.add(description + " " + std::to_string(withWeight));
    }
    Journal reports;
};

struct CommandService : TestService {
    CommandService() {
        interface = InstallCommon::CreateCommandExecutingXPCInterface();
        exported = InstallCommon::exportedCommandExecuting(
            std::make_shared<Executor>(received), [this](const std::string& why) { refused.add(why); });
        start();
    }
};

Connection commandClient(const TestService& service, const std::shared_ptr<Journal>& events) {
    Connection connection = service.client();
    connection->setRemoteObjectInterface(InstallCommon::CreateCommandExecutingXPCInterface());
    connection->setInvalidationHandler([events] { events->add("invalidated"); });
    connection->resume();
    return connection;
}

TEST(CommandExecutingOverXPC, ListGoesOutAndOneReportPerCommandComesBackInOrder) {
    CommandService service;
    const Connection connection = commandClient(service, std::make_shared<Journal>());
    const auto delegate = std::make_shared<Delegate>();
    InstallCommon::CommandList commands;
    commands.push_back(std::make_unique<InstallCommon::KillProcessCommand>("first", "p"));
    commands.push_back(std::make_unique<InstallCommon::KillProcessCommand>("second", "q"));
    InstallCommon::commandExecutingProxy(connection->remoteObjectProxy())
        ->executeWithCommands(std::move(commands), delegate);
    EXPECT_EQ(delegate->reports.waitFor(2), (Lines{"first 1", "second 1"}));
    connection->invalidate();
}

TEST(CommandExecutingOverXPC, AListWithABaseInstanceIsRefusedWholeAndTheConnectionInvalidated) {
    CommandService service;
    const auto events = std::make_shared<Journal>();
    const Connection connection = commandClient(service, events);
    InstallCommon::CommandList commands;
    commands.push_back(std::make_unique<InstallCommon::KillProcessCommand>("first", "p"));
    commands.push_back(std::make_unique<InstallCommon::CommandConcrete>("base"));
    InstallCommon::commandExecutingProxy(connection->remoteObjectProxy())
        ->executeWithCommands(std::move(commands), std::make_shared<Delegate>());
    EXPECT_EQ(events->waitFor(1), Lines{"invalidated"});
    const Lines refused = service.refused.waitFor(1);
    ASSERT_EQ(refused.size(), 1U);
    EXPECT_NE(refused[0].find("executeWithCommands:delegate:"), std::string::npos) << refused[0];
    EXPECT_NE(refused[0].find("_TtC13InstallCommon15CommandConcrete"), std::string::npos) << refused[0];
    EXPECT_EQ(service.received.lines(), Lines());
}

TEST(CommandExecutingOverXPC, GoesOnServingOthersAfterARefusal) {
    CommandService service;
    const auto events = std::make_shared<Journal>();
    const Connection bad = commandClient(service, events);
    InstallCommon::CommandList commands;
    commands.push_back(std::make_unique<InstallCommon::CommandConcrete>("base"));
    InstallCommon::commandExecutingProxy(bad->remoteObjectProxy())
        ->executeWithCommands(std::move(commands), std::make_shared<Delegate>());
    EXPECT_EQ(events->waitFor(1), Lines{"invalidated"});
    const Connection good = commandClient(service, std::make_shared<Journal>());
    const auto delegate = std::make_shared<Delegate>();
    InstallCommon::CommandList more;
    more.push_back(std::make_unique<InstallCommon::KillProcessCommand>("after", "p"));
    InstallCommon::commandExecutingProxy(good->remoteObjectProxy())
        ->executeWithCommands(std::move(more), delegate);
    EXPECT_EQ(delegate->reports.waitFor(1), Lines{"after 1"});
    good->invalidate();
}

}  // namespace
