#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "XPCTestClient.h"
#include "XPCTestService.h"
#include "support/SystemCalls.h"

namespace {

constexpr int kNoLimit = -2;
/// How long this test program's last wait for a descriptor may take, in milliseconds; for ever if negative.
std::atomic<int> lastLimit{kNoLimit};

}  // namespace

/// Takes the place of the C library's.
extern "C" int poll(pollfd* descriptors, nfds_t count, int limit) {
    lastLimit = limit;
    lastLimit.notify_all();
    const timespec duration{limit / 1000, limit % 1000 * 1'000'000L};
    return static_cast<int>(
        ::syscall(SYS_ppoll, descriptors, count, limit < 0 ? nullptr : &duration, nullptr, 0));
}

namespace {

using namespace XPCTests;
using Lines = std::vector<std::string>;

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

/// An object to pass; notes what it hears, and its end.
class Ear final : public Platform::XPCObject {
  public:
    explicit Ear(std::shared_ptr<Journal> heard) : heard_(std::move(heard)) {}
    ~Ear() override { heard_->add("let go of"); }

    [[nodiscard]] std::string_view protocolName() const override { return "Ear"; }
    void message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                 Platform::XPCReply /*reply*/) override {
        heard_->add(std::string(selector) + std::get<std::string>(arguments.at(0)));
    }

  private:
    std::shared_ptr<Journal> heard_;
};

/// Passes an ear, which hears so many words. Returns what it notes.
std::shared_ptr<Journal> passEar(const Client& client, std::int32_t words) {
    auto heard = std::make_shared<Journal>();
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(std::shared_ptr<Platform::XPCObject>(std::make_shared<Ear>(heard)));
    arguments.emplace_back(words);
    client.connection->remoteObjectProxy()->message("callBack:times:", std::move(arguments), {});
    return heard;
}

TEST(XPCConnection, AnObjectThatWasPassedIsCalledBack) {
    TestService service;
    service.start();
    const Client client(service);
    client.connection->resume();
    EXPECT_EQ(passEar(client, 3)->waitFor(3), (Lines{"say:0", "say:1", "say:2"}));
    client.connection->invalidate();
}

TEST(XPCConnection, AnObjectThatWasPassedIsLetGoOfWhenThePeerGoesAway) {
    TestService service;
    service.start();
    const Client client(service);
    client.connection->resume();
    const std::shared_ptr<Journal> heard = passEar(client, 1);
    EXPECT_EQ(heard->waitFor(1), Lines{"say:0"});
    service.dropConnections();
    EXPECT_EQ(heard->waitFor(2), (Lines{"say:0", "let go of"}));
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

TEST(XPCConnection, SleepsWhileThereIsNothingToSend) {
    const Client client(testing::TempDir() + "no-such-service");
    lastLimit = kNoLimit;
    client.connection->resume();
    lastLimit.wait(kNoLimit);
    EXPECT_EQ(lastLimit, -1);
    client.connection->invalidate();
}

TEST(XPCConnection, ReadsOnAfterAnInterruption) {
    TestService service;
    service.start();
    for (const int code : {EINTR, EAGAIN}) {
        int reads = 0;
        PlatformTests::askAboutEachCall(
            [&](long call) { return call == SYS_recvfrom && ++reads <= 3 ? code : 0; },
            [&] {
                const Client client(service);
                client.connection->resume();
                EXPECT_EQ(ask(client.connection, "/a"), "success");
                EXPECT_EQ(client.events->lines(), Lines());
                client.connection->invalidate();
            });
        EXPECT_GT(reads, 3);
    }
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

TEST(XPCConnection, LeavesNoSocketToChildren) {
    EXPECT_EQ(PlatformTests::descriptorsLeftToChildren([] {
                  TestService service;
                  service.start();
                  const Client client(service);
                  client.connection->resume();
                  EXPECT_EQ(ask(client.connection, "/a"), "success");
                  client.connection->invalidate();
              }),
              0);
}

TEST(XPCConnectionDeathTest, AMessageThatTheInterfaceDoesNotHaveIsFatal) {
    const Client client(testing::TempDir() + "no-such-service");
    const auto proxy = client.connection->remoteObjectProxy();
    EXPECT_DEATH(proxy->message("shout:", words("x"), {}),
                 "^Fatal error: unrecognized selector sent to a remote object: shout:\n$");
    EXPECT_DEATH(proxy->message("say:", {}, {}),
                 "^Fatal error: a message with the wrong number of arguments\n$");
}

}  // namespace
