#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "BridgeLoop.h"
#include "CodingSamples.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "ListenerDouble.h"
#include "Litter.h"
#include "SystemArchives.h"
#include "SystemDoubles.h"

// Calls from threads that have no autorelease pool, as most of the program's come: nothing stays behind.

namespace {

using namespace InstallCommon;
using Base::URL;

/// Calls `work` on a thread of its own, which Foundation does not know.
template <class Work>
void onForeignThread(Work work) {
    std::thread(work).join();
}

/// How many objects stay of what `work` leaves behind on such a thread.
template <class Work>
int litterOf(Work work) {
    const int before = Litter::count();
    onForeignThread(work);
    return Litter::count() - before;
}

TEST(ForeignThread, LeavesNothingBehindOnAConnection) {
    EXPECT_EQ(litterOf([] {
                  const auto client = SystemDoubles::makeClient();
                  client->setRemoteObjectInterface(SupportPrivilegedHelperClient::xpcInterface());
                  client->setExportedObject(CreateCommandExecutingXPCInterface(), nullptr);
                  client->resume();
                  client->invalidate();
              }),
              0);
}

TEST(ForeignThread, LeavesNothingBehindOfAConnectionThatIsNeverResumed) {
    EXPECT_EQ(litterOf([] { static_cast<void>(SystemDoubles::makeClient()); }), 0);
}

TEST(ForeignThread, LeavesNothingBehindOfAProxy) {
    int replies = 0;
    EXPECT_EQ(
        litterOf([&replies] {
            const auto client = SystemDoubles::makeClient();
            client->setRemoteObjectInterface(SupportPrivilegedHelperClient::xpcInterface());
            for (const auto& proxy :
                 {client->remoteObjectProxy(), client->synchronousRemoteObjectProxy([](const auto&) {})}) {
                std::vector<Platform::XPCValue> arguments;
                arguments.emplace_back(URL::fileURL("/a.pkg"));
                proxy->message(SupportPrivilegedHelperClient::installPackage.selector(), std::move(arguments),
                               [&replies](const auto& error) { replies += error ? 0 : 1; });
            }
        }),
        0);
    EXPECT_EQ(replies, 2);
}

TEST(ForeignThread, LeavesNothingBehindOfAReply) {
    EXPECT_EQ(litterOf([] {
                  const Platform::XPCReply reply = SystemDoubles::makeReply();
                  reply(std::nullopt);
                  reply(Platform::Error{"It failed.", 1});
              }),
              0);
}

TEST(ForeignThread, LeavesNothingBehindOfAListener) {
    EXPECT_EQ(litterOf([] {
                  ListenerDouble world;
                  world.listener().run([](const auto&, const auto&) { return true; },
                                       [](const std::string&) {}, 0);
                  EXPECT_TRUE(world.isPeerAdmitted());
                  EXPECT_EQ(world.suspended(), 1);
              }),
              0);
}

CommandList shortList() {
    CommandList list;
    list.push_back(std::make_unique<KillProcessCommand>("Closing \xC3\xB6...", "process"));
    list.push_back(
        std::make_unique<RemoveCommand>("Removing...", URL::fileURL("/Library/Application Support")));
    return list;
}

/// Reports each command and keeps none.
class ForgetfulExecutor final : public CommandExecuting {
  public:
    void executeWithCommands(CommandList list, std::shared_ptr<CommandExecutingDelegate> delegate) override {
        for (const std::unique_ptr<Command>& command : list) {
            delegate->commandExecutingDidExecuteCommand(command->commandDescription(), command->weight());
        }
    }
};

class Counter final : public CommandExecutingDelegate {
  public:
    void commandExecutingDidExecuteCommand(const std::string& /*description*/,
                                           std::int32_t /*withWeight*/) override {
        ++reports;
    }
    int reports = 0;
};

constexpr int kLists = 1000;

TEST(ForeignThread, KeepsNoObjectOfAThousandLists) {
    const auto counter = std::make_shared<Counter>();
    const BridgeLoop loop(
        exportedCommandExecuting(std::make_shared<ForgetfulExecutor>(), [](const std::string&) {}),
        CreateCommandExecutingXPCInterface());
    const auto send = [&] { commandExecutingProxy(loop.proxy())->executeWithCommands(shortList(), counter); };
    onForeignThread([&] {
        // The first one makes what stays for the process's life.
        send();
        const long before = Litter::moreObjects();
        for (int i = 0; i < kLists; ++i) {
            send();
        }
        EXPECT_EQ(Litter::moreObjects(), before);
    });
    EXPECT_EQ(counter->reports, 2 * (kLists + 1));
}

TEST(ForeignThread, KeepsNoObjectOfAThousandArchives) {
    const auto travel = [] {
        Base::CodedObjectList list;
        for (std::unique_ptr<Command>& command : shortList()) {
            list.push_back(std::move(command));
        }
        std::string refusal;
        const auto arrived = SystemArchives::read(SystemArchives::archive(std::move(list)),
                                                  allowedCommandListClasses(), refusal);
        return arrived ? arrived->size() : 0;
    };
    onForeignThread([&] {
        std::size_t count = travel();
        const long before = Litter::moreObjects();
        for (int i = 0; i < kLists; ++i) {
            count += travel();
        }
        EXPECT_EQ(Litter::moreObjects(), before);
        EXPECT_EQ(count, 2U * (kLists + 1));
    });
}

}  // namespace
