#include <gtest/gtest.h>

#include <chrono>

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "XPCTestClient.h"
#include "XPCTestService.h"

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

}  // namespace
