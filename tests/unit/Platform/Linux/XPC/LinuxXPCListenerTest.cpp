#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/syscall.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "RawPeer.h"
#include "XPCTestClient.h"
#include "XPCTestService.h"
#include "support/SystemCalls.h"

namespace {

using namespace XPCTests;
using Lines = std::vector<std::string>;

TEST(XPCListener, ReturnsWhenNobodyIsConnectedForItsIdleTime) {
    TestService service("com.norvik.test", 1);
    service.start();
}

TEST(XPCListener, WaitsItsIdleTimeInMillisecondsOrAsLongAsItCan) {
    EXPECT_EQ(Platform::Linux::pollTimeout(0), 0);
    EXPECT_EQ(Platform::Linux::pollTimeout(1), 1000);
    EXPECT_EQ(Platform::Linux::pollTimeout(2'147'483), 2'147'483'000);
    EXPECT_EQ(Platform::Linux::pollTimeout(2'147'484), INT_MAX);
    EXPECT_EQ(Platform::Linux::pollTimeout(UINT32_MAX), INT_MAX);
}

TEST(XPCListener, StaysWhileATransactionIsOpen) {
    Journal journal;
    auto service = std::make_unique<TestService>("com.norvik.test", 0);
    auto transaction = service->listener().transaction();
    service->start();
    std::thread waiter([&] {
        service.reset();
        journal.add("returned");
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(journal.lines(), Lines());
    transaction.reset();
    EXPECT_EQ(journal.waitFor(1), Lines{"returned"});
    waiter.join();
}

constexpr std::uint32_t kAnHour = 3600;

TEST(XPCListener, IsThereForTheNextPeerWhileItsIdleTimeLasts) {
    TestService service("com.norvik.test", kAnHour);
    service.start();
    for (const char* const path : {"/a", "/b", "/c"}) {
        const Client client(service);
        client.connection->resume();
        EXPECT_EQ(ask(client.connection, path), "success");
        client.connection->invalidate();
    }
    service.listener().stop();
}

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

TEST(XPCListener, APeerThatHasLeftCountsNoMoreThoughItsConnectionIsKept) {
    auto service = std::make_unique<TestService>();
    service->keepsConnections = true;
    service->start();
    const Client client(*service);
    client.connection->resume();
    EXPECT_EQ(ask(client.connection, "/a"), "success");
    client.connection->invalidate();
    // Waits until it has returned.
    service.reset();
    EXPECT_EQ(client.events->waitFor(1), Lines{"invalidated"});
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

TEST(XPCListener, RefusesAPeerWithoutCredentials) {
    PlatformTests::askAboutEachCall([](long call) { return call == SYS_getsockopt ? EIO : 0; },
                                    [] {
                                        TestService service;
                                        service.start();
                                        const Client client(service);
                                        client.connection->resume();
                                        client.say("hello");
                                        EXPECT_EQ(client.events->waitFor(1), Lines{"invalidated"});
                                        EXPECT_EQ(service.refused.waitFor(1),
                                                  Lines{"a peer without credentials"});
                                        EXPECT_EQ(service.received.lines(), Lines());
                                    });
}

TEST(XPCListener, TakesAPeerThatCouldNotBeTakenAtFirst) {
    std::atomic<int> attempts = 0;
    PlatformTests::askAboutEachCall(
        [&](long call) { return call == SYS_accept4 && ++attempts <= 3 ? EMFILE : 0; },
        [] {
            TestService service;
            service.start();
            const Client client(service);
            client.connection->resume();
            EXPECT_EQ(ask(client.connection, "/a"), "success");
            EXPECT_EQ(service.refused.lines(), Lines());
            client.connection->invalidate();
        });
    EXPECT_GE(attempts, 4);
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
    EXPECT_EQ(identifierOfRequirement(R"(identifier "a.b" and certificate leaf[subject.OU] = "TEAM")"),
              "a.b");
    EXPECT_EQ(identifierOfRequirement(R"(identifier "a.b" or identifier "c.d")"), "a.b");
    EXPECT_EQ(identifierOfRequirement(R"(identifier "")"), "");
    EXPECT_EQ(identifierOfRequirement("anchor apple generic"), std::nullopt);
    EXPECT_EQ(identifierOfRequirement(R"(identifier "a.b)"), std::nullopt);
}

}  // namespace
