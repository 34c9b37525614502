// The exports of both ends of a command list dispatch by selector, even if a protocol gets a second method
// one day.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace {

using Lines = std::vector<std::string>;

class Executor final : public InstallCommon::CommandExecuting {
  public:
    /// Reports each command to the delegate with a different weight.
    void executeWithCommands(InstallCommon::CommandList commands,
                             std::shared_ptr<InstallCommon::CommandExecutingDelegate> delegate) override {
        lists.push_back(std::to_string(commands.size()) + " commands");
        std::int32_t weight = 7;
        for (const auto& command : commands) {
            delegate->commandExecutingDidExecuteCommand(command->commandDescription(), weight++);
        }
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
    void message(std::string_view called, std::vector<Platform::XPCValue> sent,
                 Platform::XPCReply reply) override {
        selector = called;
        arguments = std::move(sent);
        waitsForReply = static_cast<bool>(reply);
    }
    std::string selector;
    std::vector<Platform::XPCValue> arguments;
    bool waitsForReply = false;
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

TEST(ExportedExecutor, RefusesArgumentsThatDoNotFitTheMethod) {
    const auto executor = std::make_shared<Executor>();
    Lines refused;
    const auto exported = InstallCommon::exportedCommandExecuting(
        executor, [&refused](const std::string& why) { refused.push_back(why); });
    exported->message("executeWithCommands:delegate:", report("no list"), {});
    exported->message("executeWithCommands:delegate:", {}, {});
    EXPECT_EQ(executor->lists, Lines());
    EXPECT_EQ(refused, Lines(2, "a message that nothing here understands: executeWithCommands:delegate:"));
}

TEST(ExportedExecutor, RefusesAListWithAnObjectThatIsNotACommand) {
    const auto executor = std::make_shared<Executor>();
    Lines refused;
    const auto exported = InstallCommon::exportedCommandExecuting(
        executor, [&refused](const std::string& why) { refused.push_back(why); });
    Base::CodedObjectList objects;
    objects.push_back(std::make_unique<InstallCommon::KillProcessCommand>("first", "p"));
    objects.push_back(std::make_unique<Base::CodedRecord<NorvikCommon::KextInfo>>(
        NorvikCommon::KextInfo::kextWithName("F", "id")));
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(std::move(objects));
    arguments.emplace_back(std::shared_ptr<Platform::XPCObject>());
    exported->message("executeWithCommands:delegate:", std::move(arguments), {});
    EXPECT_EQ(executor->lists, Lines());
    EXPECT_EQ(refused, Lines{"a list: it contains an object that is not a command"});
}

TEST(ExportedExecutor, ReportsToTheDelegateOfTheClientWithoutWaiting) {
    const auto exported = InstallCommon::exportedCommandExecuting(std::make_shared<Executor>(),
                                                                  [](const std::string&) { FAIL(); });
    const auto client = std::make_shared<Remote>();
    std::vector<Platform::XPCValue> arguments = sentArguments(nullptr);
    arguments.at(1) = std::shared_ptr<Platform::XPCObject>(client);
    exported->message("executeWithCommands:delegate:", std::move(arguments), {});
    EXPECT_EQ(client->selector, "commandExecutingDidExecuteCommand:withWeight:");
    ASSERT_EQ(client->arguments.size(), 2U);
    EXPECT_EQ(std::get<std::string>(client->arguments[0]), "first");
    EXPECT_EQ(std::get<std::int32_t>(client->arguments[1]), 7);
    EXPECT_FALSE(client->waitsForReply);
}

// Over NSXPC a client may send nil.
TEST(ExportedExecutor, ExecutesAListWithoutADelegate) {
    const auto executor = std::make_shared<Executor>();
    const auto exported =
        InstallCommon::exportedCommandExecuting(executor, [](const std::string&) { FAIL(); });
    std::vector<Platform::XPCValue> arguments = sentArguments(nullptr);
    arguments.at(1) = std::shared_ptr<Platform::XPCObject>();
    exported->message("executeWithCommands:delegate:", std::move(arguments), {});
    EXPECT_EQ(executor->lists, Lines{"1 commands"});
}

TEST(ExportedObjects, SayWhichProtocolTheyUnderstand) {
    const auto executor = InstallCommon::exportedCommandExecuting(std::make_shared<Executor>(), {});
    EXPECT_EQ(executor->protocolName(), "CommandExecuting");
    const auto delegate =
        std::get<std::shared_ptr<Platform::XPCObject>>(sentArguments(std::make_shared<Delegate>()).at(1));
    EXPECT_EQ(delegate->protocolName(), "CommandExecutingDelegate");
}

TEST(ExportedObjects, HaveMethodsThatNobodyWaitsFor) {
    const Platform::XPCInterface interface = InstallCommon::CreateCommandExecutingXPCInterface();
    ASSERT_EQ(interface.methods.size(), 1U);
    EXPECT_FALSE(interface.methods[0].replies);
    const auto& delegate = interface.methods[0].arguments.at(1).proxy;
    ASSERT_NE(delegate, nullptr);
    ASSERT_EQ(delegate->methods.size(), 1U);
    EXPECT_FALSE(delegate->methods[0].replies);
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
