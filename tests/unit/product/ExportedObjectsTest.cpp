// What the two ends of a command list export dispatches by selector, also when a protocol gets a second
// method one day.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"

namespace {

using Lines = std::vector<std::string>;

class Executor final : public InstallCommon::CommandExecuting {
  public:
    void executeWithCommands(InstallCommon::CommandList commands,
                             std::shared_ptr<InstallCommon::CommandExecutingDelegate> /*delegate*/) override {
        lists.push_back(std::to_string(commands.size()) + " commands");
    }
    Lines lists;
};

class Delegate final : public InstallCommon::CommandExecutingDelegate {
  public:
    void commandExecutingDidExecuteCommand(const std::string& description, std::int32_t withWeight) override {
        reports.push_back(description + " " + std::to_string(withWeight));
    }
    Lines reports;
};

/// The other end's executor; keeps the arguments that it was sent.
class Remote final : public Platform::XPCObject {
  public:
    [[nodiscard]] std::string_view protocolName() const override { return "CommandExecuting"; }
    void message(std::string_view /*selector*/, std::vector<Platform::XPCValue> sent,
                 Platform::XPCReply /*reply*/) override {
        arguments = std::move(sent);
    }
    std::vector<Platform::XPCValue> arguments;
};

/// What a client sends for a list of one command.
std::vector<Platform::XPCValue> sentArguments(const std::shared_ptr<Delegate>& delegate) {
    const auto remote = std::make_shared<Remote>();
    InstallCommon::CommandList commands;
    commands.push_back(std::make_unique<InstallCommon::KillProcessCommand>("first", "p"));
    InstallCommon::commandExecutingProxy(remote)->executeWithCommands(std::move(commands), delegate);
    return std::move(remote->arguments);
}

std::vector<Platform::XPCValue> report(const std::string& description) {
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(description);
    arguments.emplace_back(std::int32_t{1});
    return arguments;
}

TEST(ExportedExecutor, RefusesAMessageWithAnotherSelector) {
    const auto executor = std::make_shared<Executor>();
    Lines refused;
    const auto exported = InstallCommon::exportedCommandExecuting(
        executor, [&refused](const std::string& why) { refused.push_back(why); });
    const auto delegate = std::make_shared<Delegate>();
    exported->message("cancelWithCommands:delegate:", sentArguments(delegate), {});
    EXPECT_EQ(executor->lists, Lines());
    EXPECT_EQ(refused, Lines{"a message that nothing here understands: cancelWithCommands:delegate:"});
    exported->message("executeWithCommands:delegate:", sentArguments(delegate), {});
    EXPECT_EQ(executor->lists, Lines{"1 commands"});
    EXPECT_EQ(refused.size(), 1U);
}

TEST(ExportedDelegate, IgnoresAMessageWithAnotherSelector) {
    const auto delegate = std::make_shared<Delegate>();
    const auto exported = std::get<std::shared_ptr<Platform::XPCObject>>(sentArguments(delegate).at(1));
    exported->message("commandExecutingWillExecuteCommand:withWeight:", report("a"), {});
    EXPECT_EQ(delegate->reports, Lines());
    exported->message("commandExecutingDidExecuteCommand:withWeight:", report("b"), {});
    EXPECT_EQ(delegate->reports, Lines{"b 1"});
}

}  // namespace
