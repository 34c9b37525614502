#include "Helpers/CommandExecutor.h"

#include <gtest/gtest.h>

#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "support/FakeMac.h"

namespace {

/// Counts open transactions.
class FakeListener final : public Platform::XPCListener {
  public:
    void run(const Accept& /*accept*/, const Refused& /*refused*/, std::uint32_t /*idleSeconds*/) override {}
    [[nodiscard]] std::shared_ptr<void> transaction() override {
        ++opened;
        ++open;
        return {this, [this](void*) { --open; }};
    }

    int opened = 0;
    int open = 0;
};

class RecordingDelegate final : public InstallCommon::CommandExecutingDelegate {
  public:
    explicit RecordingDelegate(TestSupport::CallList& calls) : calls_(calls) {}
    void commandExecutingDidExecuteCommand(const std::string& description, std::int32_t withWeight) override {
        calls_.push_back("did " + description + " " + std::to_string(withWeight));
    }

  private:
    TestSupport::CallList& calls_;
};

InstallCommon::CommandList twoRemovals() {
    InstallCommon::CommandList commands;
    commands.push_back(std::make_unique<InstallCommon::RemoveCommand>("first", Base::URL::fileURL("/a")));
    commands.push_back(std::make_unique<InstallCommon::RemoveCommand>("second", Base::URL::fileURL("/b")));
    return commands;
}

TEST(CommandExecutor, ReportsEachCommandAfterItRanAlsoWhenItsWorkFailed) {
    TestSupport::FakeMac mac;
    mac.files.addFile("/b");
    FakeListener listener;
    Helpers::CommandExecutor executor(listener);
    mac.calls.clear();
    executor.executeWithCommands(twoRemovals(), std::make_shared<RecordingDelegate>(mac.calls));
    EXPECT_EQ(mac.calls, (TestSupport::CallList{
                             "async", "remove /a", "remove /Library/Application Support/NORVIK/SNT/Repair/a",
                             "did first 1", "remove /b",
                             "remove /Library/Application Support/NORVIK/SNT/Repair/b", "did second 1"}));
    EXPECT_EQ(mac.log.lines.at(0), "[SNTM Installer] Error removing: \"/a\" does not exist");
}

TEST(CommandExecutor, ExecutesOnOneSerialQueue) {
    TestSupport::FakeMac mac;
    FakeListener listener;
    const Helpers::CommandExecutor executor(listener);
    EXPECT_EQ(mac.callsOf("serial queue").size(), 1U);
}

TEST(CommandExecutor, HoldsATransactionUntilTheListIsDone) {
    TestSupport::FakeMac mac;
    FakeListener listener;
    Helpers::CommandExecutor executor(listener);
    int openWhileExecuting = -1;
    class Watcher final : public InstallCommon::CommandExecutingDelegate {
      public:
        Watcher(FakeListener& listener, int& seen) : listener_(listener), seen_(seen) {}
        void commandExecutingDidExecuteCommand(const std::string&, std::int32_t) override {
            seen_ = listener_.open;
        }

      private:
        FakeListener& listener_;
        int& seen_;
    };
    executor.executeWithCommands(twoRemovals(), std::make_shared<Watcher>(listener, openWhileExecuting));
    EXPECT_EQ(openWhileExecuting, 1);
    EXPECT_EQ(listener.opened, 1);
    EXPECT_EQ(listener.open, 0);
}

TEST(CommandExecutor, AnEmptyListReportsNothing) {
    TestSupport::FakeMac mac;
    FakeListener listener;
    Helpers::CommandExecutor executor(listener);
    mac.calls.clear();
    executor.executeWithCommands({}, std::make_shared<RecordingDelegate>(mac.calls));
    EXPECT_EQ(mac.calls, TestSupport::CallList{"async"});
}

}  // namespace
