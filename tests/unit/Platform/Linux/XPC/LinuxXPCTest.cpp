#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <cstring>

#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "XPCTestService.h"

namespace {

using namespace XPCTests;
using Lines = std::vector<std::string>;
using Connection = std::shared_ptr<Platform::Linux::LinuxXPCConnection>;

std::vector<Platform::XPCValue> words(const std::string& text) {
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(text);
    return arguments;
}

std::vector<Platform::XPCValue> path(const std::string& text) {
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(Base::URL::fileURL(text));
    return arguments;
}

/// A client whose handlers note in `events`. The handlers share it: a connection may outlive the test's end.
struct Client {
    explicit Client(const TestService& service) : connection(service.client()) { watch(); }
    explicit Client(const std::string& socketPath)
        : connection(std::make_shared<Platform::Linux::LinuxXPCConnection>("test.service", socketPath)) {
        watch();
    }

    void watch() {
        connection->setRemoteObjectInterface(testInterface());
        connection->setInvalidationHandler([events = events] { events->add("invalidated"); });
        connection->setInterruptionHandler([events = events] { events->add("interrupted"); });
    }
    void say(const std::string& text) const {
        connection->remoteObjectProxy()->message("say:", words(text), {});
    }

    std::shared_ptr<Journal> events = std::make_shared<Journal>();
    Connection connection;
};

/// What a synchronous call came to.
std::string ask(const Connection& connection, const std::string& what) {
    std::string outcome = "nothing";
    const auto proxy = connection->synchronousRemoteObjectProxy(
        [&outcome](const Platform::Error& error) { outcome = "failed: " + error.description; });
    proxy->message("ask:", path(what), [&outcome](const std::optional<Platform::Error>& error) {
        outcome = error ? "error " + std::to_string(error->code) + ": " + error->description : "success";
    });
    return outcome;
}

Platform::Posix::Descriptor connectTo(const std::string& path) {
    Platform::Posix::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return socket;
}

TEST(XPCConnection, MessagesArriveInOrder) {
    TestService service;
    service.start();
    const Client client(service);
    client.connection->resume();
    Lines expected;
    for (int i = 0; i < 500; ++i) {
        client.say(std::to_string(i));
        expected.push_back("say " + std::to_string(i));
    }
    EXPECT_EQ(service.received.waitFor(500), expected);
    client.connection->invalidate();
}

TEST(XPCConnection, ALargeMessageArrivesWhole) {
    TestService service;
    service.start();
    const Client client(service);
    client.connection->resume();
    const std::string large(3'000'000, 'x');
    client.say(large);
    EXPECT_EQ(service.received.waitFor(1), Lines{"say " + large});
    client.connection->invalidate();
}

TEST(XPCConnection, AnObjectThatWasPassedIsCalledBack) {
    class Ear final : public Platform::XPCObject {
      public:
        [[nodiscard]] std::string_view protocolName() const override { return "Ear"; }
        void message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                     Platform::XPCReply /*reply*/) override {
            heard.add(std::string(selector) + std::get<std::string>(arguments.at(0)));
        }
        Journal heard;
    };
    TestService service;
    service.start();
    const Client client(service);
    client.connection->resume();
    const auto ear = std::make_shared<Ear>();
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(std::shared_ptr<Platform::XPCObject>(ear));
    arguments.emplace_back(std::int32_t{3});
    client.connection->remoteObjectProxy()->message("callBack:times:", std::move(arguments), {});
    EXPECT_EQ(ear->heard.waitFor(3), (Lines{"say:0", "say:1", "say:2"}));
    client.connection->invalidate();
}

TEST(XPCConnection, ASynchronousCallReturnsWithTheReply) {
    TestService service;
    service.start();
    const Client client(service);
    client.connection->resume();
    EXPECT_EQ(ask(client.connection, "/a b"), "success");
    EXPECT_EQ(service.received.lines(), Lines{"ask /a b"});
    client.connection->invalidate();
}

TEST(XPCConnection, ASynchronousCallReturnsWithTheRepliedError) {
    TestService service;
    service.object->answer = Platform::Error{"no such package", -7};
    service.start();
    const Client client(service);
    client.connection->resume();
    EXPECT_EQ(ask(client.connection, "/p"), "error -7: no such package");
    client.connection->invalidate();
}

TEST(XPCConnection, AServiceThatDoesNotExistShowsWhenSomethingIsSent) {
    const Client client(testing::TempDir() + "no-such-service");
    client.connection->resume();
    EXPECT_NE(client.connection->remoteObjectProxy(), nullptr);
    EXPECT_EQ(client.events->lines(), Lines());
    client.say("hello");
    EXPECT_EQ(client.events->waitFor(1), Lines{"invalidated"});
}

TEST(XPCConnection, ASynchronousCallToAServiceThatDoesNotExistFails) {
    const Client client(testing::TempDir() + "no-such-service");
    client.connection->resume();
    EXPECT_EQ(ask(client.connection, "/p"),
              "failed: The connection to service named test.service was invalidated.");
    EXPECT_EQ(ask(client.connection, "/p"),
              "failed: The connection to service named test.service was invalidated.");
}

TEST(XPCConnection, InvalidateCallsTheHandlerOnceAndLaterMessagesGoNowhere) {
    TestService service;
    service.start();
    const Client client(service);
    client.connection->resume();
    client.say("one");
    EXPECT_EQ(service.received.waitFor(1).size(), 1U);
    client.connection->invalidate();
    EXPECT_EQ(client.events->waitFor(1), Lines{"invalidated"});
    client.say("two");
    client.connection->invalidate();
    EXPECT_EQ(service.received.lines().size(), 1U);
    EXPECT_EQ(client.events->lines(), Lines{"invalidated"});
}

TEST(XPCConnection, APeerThatGoesAwayInterruptsAndTheNextMessageConnectsAnew) {
    TestService service;
    service.start();
    const Client client(service);
    client.connection->resume();
    client.say("one");
    EXPECT_EQ(service.received.waitFor(1).size(), 1U);
    service.dropConnections();
    EXPECT_EQ(client.events->waitFor(1), Lines{"interrupted"});
    client.say("two");
    EXPECT_EQ(service.received.waitFor(2), (Lines{"say one", "say two"}));
    client.connection->invalidate();
}

TEST(XPCConnection, APeerThatGoesAwayFailsThePendingSynchronousCall) {
    TestService service;
    service.object->keepsReplies = true;
    service.start();
    const Client client(service);
    client.connection->resume();
    std::thread killer([&service] {
        EXPECT_EQ(service.received.waitFor(1).size(), 1U);
        service.dropConnections();
    });
    EXPECT_EQ(ask(client.connection, "/p"),
              "failed: The connection to service named test.service was interrupted.");
    killer.join();
    client.connection->invalidate();
}

TEST(XPCConnection, DroppingAResumedConnectionDoesNotInvalidateIt) {
    TestService service;
    service.start();
    auto client = std::make_unique<Client>(service);
    client->connection->resume();
    client->say("one");
    EXPECT_EQ(service.received.waitFor(1).size(), 1U);
    const std::weak_ptr<Platform::Linux::LinuxXPCConnection> weak = client->connection;
    const auto events = client->events;
    client.reset();
    EXPECT_FALSE(weak.expired());
    EXPECT_EQ(events->lines(), Lines());
    weak.lock()->invalidate();
}

TEST(XPCConnection, HasNoProxyWithoutARemoteInterface) {
    const auto connection = std::make_shared<Platform::Linux::LinuxXPCConnection>("s", "/nowhere");
    EXPECT_EQ(connection->remoteObjectProxy(), nullptr);
    EXPECT_EQ(connection->synchronousRemoteObjectProxy({}), nullptr);
}

TEST(XPCListener, ReturnsWhenNobodyIsConnectedForItsIdleTime) {
    const auto start = std::chrono::steady_clock::now();
    {
        TestService service;
        service.start();
    }
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
}

TEST(XPCListener, StaysWhileATransactionIsOpen) {
    Journal journal;
    auto service = std::make_unique<TestService>();
    auto transaction = service->listener().transaction();
    service->start();
    std::thread waiter([&] {
        service.reset();
        journal.add("returned");
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_EQ(journal.lines(), Lines());
    transaction.reset();
    EXPECT_EQ(journal.waitFor(1), Lines{"returned"});
    waiter.join();
}

constexpr std::uint32_t kAnHour = 3600;

TEST(XPCListener, ReturnsAtOnceWhenItIsStoppedAndNobodyIsConnected) {
    TestService service("com.norvik.test", kAnHour);
    service.start();
    service.listener().stop();
}

TEST(XPCListener, StopsAtOnceWhenTheLastPeerHasLeft) {
    TestService service("com.norvik.test", kAnHour);
    service.start();
    const Client client(service);
    client.connection->resume();
    EXPECT_EQ(ask(client.connection, "/a"), "success");
    service.listener().stop();
    EXPECT_EQ(ask(client.connection, "/b"), "success");
    client.connection->invalidate();
}

TEST(XPCListener, TakesAPeerThatCameBeforeItWasStopped) {
    TestService service("com.norvik.test", kAnHour);
    const Platform::Posix::Descriptor peer = connectTo(service.socketPath());
    service.listener().stop();
    service.start();
    char first = 0;
    EXPECT_EQ(::recv(peer.get(), &first, 1, 0), 1);
}

TEST(XPCListener, APeerThatStaysConnectedDoesNotKeepAListenerThatDisregardsPeers) {
    auto service = std::make_unique<TestService>("com.norvik.test", 0);
    std::shared_ptr<void> work = service->listener().transaction();
    service->start();
    const Client client(*service);
    client.connection->resume();
    EXPECT_EQ(ask(client.connection, "/a"), "success");
    service->listener().disregardPeers();
    work.reset();
    // Waits until it has returned.
    service.reset();
    EXPECT_EQ(client.events->lines(), Lines());
    client.connection->invalidate();
}

TEST(XPCListener, ATransactionKeepsAStoppedListenerWhichGoesOnServing) {
    TestService service("com.norvik.test", 0);
    std::shared_ptr<void> work = service.listener().transaction();
    service.start();
    service.listener().stop();
    const Client client(service);
    client.connection->resume();
    EXPECT_EQ(ask(client.connection, "/a"), "success");
    work.reset();
}

TEST(XPCListener, RefusesAPeerOfAnotherIdentityBeforeReadingAByteAndGoesOnServing) {
    TestService service("com.somebody.else");
    service.start();
    const Client client(service);
    client.connection->resume();
    client.say("hello");
    EXPECT_EQ(client.events->waitFor(1), Lines{"invalidated"});
    const std::string peer =
        "process " + std::to_string(::getpid()) + " of user " + std::to_string(::geteuid());
    EXPECT_EQ(service.refused.waitFor(1), Lines{peer + ": its identity is not an authorized client's"});
    EXPECT_EQ(service.received.lines(), Lines());
    const Client second(service);
    second.connection->resume();
    second.say("hello");
    EXPECT_EQ(service.refused.waitFor(2).size(), 2U);
}

TEST(XPCListener, RefusesAPeerWithoutAnIdentity) {
    TestService service(std::nullopt);
    service.start();
    const Client client(service);
    client.connection->resume();
    EXPECT_EQ(ask(client.connection, "/p"),
              "failed: The connection to service named test.service was invalidated.");
    const std::string peer =
        "process " + std::to_string(::getpid()) + " of user " + std::to_string(::geteuid());
    EXPECT_EQ(service.refused.waitFor(1), Lines{peer + ": its code has no identity that can be trusted"});
}

TEST(XPCListener, APeerThatItsOwnerDoesNotTakeIsInvalidated) {
    TestService service;
    service.accepts = false;
    service.start();
    const Client client(service);
    client.connection->resume();
    client.say("hello");
    EXPECT_EQ(client.events->waitFor(1), Lines{"invalidated"});
    EXPECT_EQ(service.received.lines(), Lines());
}

TEST(Requirement, NamesItsIdentifier) {
    using Platform::Linux::identifierOfRequirement;
    EXPECT_EQ(identifierOfRequirement(R"(identifier "a.b" and anchor apple generic)"), "a.b");
    EXPECT_EQ(identifierOfRequirement(R"(anchor apple and identifier "a.b")"), "a.b");
    EXPECT_EQ(identifierOfRequirement("anchor apple generic"), std::nullopt);
    EXPECT_EQ(identifierOfRequirement(R"(identifier "a.b)"), std::nullopt);
}

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
