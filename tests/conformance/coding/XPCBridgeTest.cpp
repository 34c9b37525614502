#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "BridgeLoop.h"
#include "CodingSamples.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"

// From the port's messages to the methods of the helpers' protocols and back.

namespace {

using namespace InstallCommon;
using Base::URL;
using Foreign = BridgeLoop::Foreign;
using Platform::XPCValue;
using Report = std::pair<std::string, std::int32_t>;

class Delegate final : public CommandExecutingDelegate {
  public:
    void commandExecutingDidExecuteCommand(const std::string& description, std::int32_t withWeight) override {
        reports.emplace_back(description, withWeight);
    }
    std::vector<Report> reports;
};

// Keeps everything that it receives and reports each command, as the helper does.
class Executor final : public CommandExecuting {
  public:
    void executeWithCommands(CommandList commands,
                             std::shared_ptr<CommandExecutingDelegate> delegate) override {
        ++lists;
        for (std::unique_ptr<Command>& command : commands) {
            delegate->commandExecutingDidExecuteCommand(command->commandDescription(), command->weight());
            received.push_back(std::move(command));
        }
    }
    Base::CodedObjectList received;
    int lists = 0;
};

class ExecutorBridge : public testing::Test {
  protected:
    const std::shared_ptr<Executor> executor_ = std::make_shared<Executor>();
    const std::shared_ptr<Delegate> delegate_ = std::make_shared<Delegate>();
    std::vector<std::string> notCommands_;
    BridgeLoop loop_{
        exportedCommandExecuting(executor_, [this](const std::string& why) { notCommands_.push_back(why); }),
        CreateCommandExecutingXPCInterface()};

    [[nodiscard]] std::shared_ptr<CommandExecuting> proxy() { return commandExecutingProxy(loop_.proxy()); }
    void expectEnded(const std::string& why) {
        EXPECT_EQ(loop_.refusals(), std::vector<std::string>{why});
        EXPECT_EQ(loop_.invalidations(), 1);
        EXPECT_EQ(executor_->lists, 0);
    }
};

CommandList commands() {
    CommandList list;
    list.push_back(std::make_unique<KillProcessCommand>("Closing \xC3\xB6...", "process"));
    list.push_back(
        std::make_unique<RemoveCommand>("Removing...", URL::fileURL("/Library/Application Support")));
    return list;
}

TEST_F(ExecutorBridge, DeliversTheCommandsAndTheReportsOnThem) {
    proxy()->executeWithCommands(commands(), delegate_);
    Base::CodedObjectList sent;
    for (std::unique_ptr<Command>& command : commands()) {
        sent.push_back(std::move(command));
    }
    EXPECT_EQ(CodingSamples::archiveOf(executor_->received), CodingSamples::archiveOf(sent));
    EXPECT_EQ(delegate_->reports, (std::vector<Report>{{"Closing \xC3\xB6...", 1}, {"Removing...", 1}}));
    EXPECT_EQ(loop_.refusals(), std::vector<std::string>{});
    EXPECT_EQ(loop_.invalidations(), 0);
}

TEST_F(ExecutorBridge, DeliversTheEmptyList) {
    proxy()->executeWithCommands({}, delegate_);
    EXPECT_EQ(executor_->lists, 1);
    EXPECT_EQ(delegate_->reports, std::vector<Report>{});
}

TEST_F(ExecutorBridge, RefusesAnAbstractCommandAndEndsTheConnectionOnce) {
    for (int i = 0; i < 2; ++i) {
        CommandList list;
        list.push_back(std::make_unique<CommandConcrete>("..."));
        proxy()->executeWithCommands(std::move(list), delegate_);
    }
    ASSERT_EQ(loop_.refusals().size(), 1U) << "what comes after that is of no interest";
    EXPECT_NE(loop_.refusals().front().find("_TtC13InstallCommon15CommandConcrete, which is not allowed"),
              std::string::npos)
        << loop_.refusals().front();
    EXPECT_GE(loop_.invalidations(), 1);
    EXPECT_EQ(executor_->lists, 0);
}

TEST_F(ExecutorBridge, DeliversNothingAfterARefusal) {
    loop_.send(Foreign::noCommands);
    proxy()->executeWithCommands(commands(), delegate_);
    EXPECT_EQ(executor_->lists, 0);
}

TEST_F(ExecutorBridge, RefusesNoListAtAll) {
    loop_.send(Foreign::noCommands);
    expectEnded("executeWithCommands:delegate:, argument 0: it is not an array");
}

TEST_F(ExecutorBridge, RefusesAListOfOtherThings) {
    loop_.send(Foreign::stringsAsCommands);
    expectEnded("executeWithCommands:delegate:, argument 0: command 1: it is not an object of a coded class");
}

TEST_F(ExecutorBridge, RefusesAListWithoutADelegate) {
    loop_.send(Foreign::noDelegate);
    expectEnded("executeWithCommands:delegate:, argument 1: no object");
}

TEST_F(ExecutorBridge, EndsTheProcessAtAMessageThatTheProtocolDoesNotHave) {
    EXPECT_DEATH(loop_.proxy()->message("executeCommands:", {}, {}), "unrecognized selector");
}

// Takes one message of any protocol and answers with an error when it has one.
class Recorder final : public Platform::XPCObject {
  public:
    explicit Recorder(std::optional<Platform::Error> error = {}) : error_(std::move(error)) {}
    [[nodiscard]] std::string_view protocolName() const override { return ""; }
    void message(std::string_view /*selector*/, std::vector<XPCValue> arguments,
                 Platform::XPCReply reply) override {
        received = std::move(arguments);
        if (reply) {
            reply(error_);
        }
    }
    std::vector<XPCValue> received;

  private:
    std::optional<Platform::Error> error_;
};

TEST(DelegateBridge, RefusesAReportWithoutText) {
    const Platform::XPCInterface executing = CreateCommandExecutingXPCInterface();
    const auto recorder = std::make_shared<Recorder>();
    const BridgeLoop loop(recorder, *executing.methods.front().arguments.at(1).proxy);
    loop.send(Foreign::noText);
    EXPECT_EQ(loop.refusals(),
              std::vector<std::string>{"commandExecutingDidExecuteCommand:withWeight:, argument 0: no text"});
    EXPECT_TRUE(recorder->received.empty());
}

using Replies = std::vector<std::optional<Platform::Error>>;

Replies install(const BridgeLoop& loop, const URL& package) {
    Replies replies;
    SupportPrivilegedHelperClient::installPackage.send(
        *loop.proxy(), package,
        [&replies](const std::optional<Platform::Error>& error) { replies.push_back(error); });
    return replies;
}

TEST(SupportHelperBridge, DeliversTheURLAndASuccess) {
    const auto helper = std::make_shared<Recorder>();
    const BridgeLoop loop(helper, SupportPrivilegedHelperClient::xpcInterface());
    const URL package = URL::fileURL("/Odd; paths & 100%/a?b#c.pkg");
    EXPECT_EQ(install(loop, package), Replies{std::nullopt});
    ASSERT_EQ(helper->received.size(), 1U);
    EXPECT_EQ(std::get<URL>(helper->received.front()), package);
}

TEST(SupportHelperBridge, DeliversAnErrorWithItsTextAndNumber) {
    const Platform::Error error{"It could not be installed.", 7};
    const BridgeLoop loop(std::make_shared<Recorder>(error), SupportPrivilegedHelperClient::xpcInterface());
    EXPECT_EQ(install(loop, URL::fileURL("/a.pkg")), Replies{error});
}

TEST(SupportHelperBridge, RefusesWhatNamesNoFile) {
    for (const Foreign message : {Foreign::noURL, Foreign::webURL}) {
        const auto helper = std::make_shared<Recorder>();
        const BridgeLoop loop(helper, SupportPrivilegedHelperClient::xpcInterface());
        loop.send(message);
        EXPECT_EQ(loop.refusals(),
                  std::vector<std::string>{"installSwiftSupportPackage:completion:, argument 0: a URL that "
                                           "names no file, or no completion"});
        EXPECT_EQ(loop.invalidations(), 1);
        EXPECT_TRUE(helper->received.empty());
    }
}

}  // namespace
