#include "Helpers/CommandExecutor.h"

#include <gtest/gtest.h>

#include "FakeListener.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using HelperTests::FakeListener;
using TestSupport::installerLine;

/// Records its calls and, for the end of a list, whether another one waits.
class RecordingObserver final : public Helpers::ListObserver {
  public:
    explicit RecordingObserver(TestSupport::CallList& calls) : calls_(calls) {}
    void listBegins() override { calls_.push_back({"list begins"}); }
    void listEnds(const std::function<bool()>& isAnotherWaiting) override {
        calls_.push_back(isAnotherWaiting() ? TestSupport::Call("list ends", "another waits")
                                            : TestSupport::Call("list ends"));
    }

  private:
    TestSupport::CallList& calls_;
};

class RecordingDelegate final : public InstallCommon::CommandExecutingDelegate {
  public:
    explicit RecordingDelegate(TestSupport::CallList& calls) : calls_(calls) {}
    void commandExecutingDidExecuteCommand(const std::string& description, std::int32_t withWeight) override {
        calls_.push_back({"did", description, withWeight});
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
    RecordingObserver observer(mac.calls);
    Helpers::CommandExecutor executor(listener, observer);
    mac.calls.clear();
    executor.executeWithCommands(twoRemovals(), std::make_shared<RecordingDelegate>(mac.calls));
    EXPECT_EQ(mac.calls,
              (TestSupport::CallList{{"async"},
                                     {"list begins"},
                                     {"remove", "/a"},
                                     {"remove", "/Library/Application Support/NORVIK/SNT/Repair/a"},
                                     {"did", "first", 1},
                                     {"remove", "/b"},
                                     {"remove", "/Library/Application Support/NORVIK/SNT/Repair/b"},
                                     {"list ends"},
                                     {"did", "second", 1}}));
    EXPECT_EQ(mac.log.lines.at(0), installerLine("Error removing: \"/a\" does not exist"));
}

TEST(CommandExecutor, ExecutesOnOneSerialQueue) {
    TestSupport::FakeMac mac;
    FakeListener listener;
    RecordingObserver observer(mac.calls);
    const Helpers::CommandExecutor executor(listener, observer);
    EXPECT_EQ(mac.callsOf("serial queue").size(), 1U);
}

TEST(CommandExecutor, HoldsATransactionUntilTheListIsDone) {
    TestSupport::FakeMac mac;
    FakeListener listener;
    RecordingObserver observer(mac.calls);
    Helpers::CommandExecutor executor(listener, observer);
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

TEST(CommandExecutor, TellsWhetherAnotherListWaitsAtTheEndOfEach) {
    TestSupport::FakeMac mac;
    FakeListener listener;
    RecordingObserver observer(mac.calls);
    mac.dispatch.keepsBlocks = true;
    Helpers::CommandExecutor executor(listener, observer);
    const auto delegate = std::make_shared<RecordingDelegate>(mac.calls);
    executor.executeWithCommands(twoRemovals(), delegate);
    executor.executeWithCommands(twoRemovals(), delegate);
    EXPECT_EQ(listener.open, 2);
    mac.dispatch.runKept();
    EXPECT_EQ(mac.callsOf("list ends"),
              (TestSupport::CallList{{"list ends", "another waits"}, {"list ends"}}));
    EXPECT_EQ(listener.open, 0);
}

TEST(CommandExecutor, AnEmptyListReportsNothing) {
    TestSupport::FakeMac mac;
    FakeListener listener;
    RecordingObserver observer(mac.calls);
    Helpers::CommandExecutor executor(listener, observer);
    mac.calls.clear();
    executor.executeWithCommands({}, std::make_shared<RecordingDelegate>(mac.calls));
    EXPECT_EQ(mac.calls, (TestSupport::CallList{{"async"}, {"list begins"}}));
}

}  // namespace
