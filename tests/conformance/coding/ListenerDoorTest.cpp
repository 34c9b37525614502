#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "Platform/Darwin/XPC/ListenerDoor.h"

// The hand-over between a listener's queue and the thread that serves: what it promises does not depend on
// the system, so it is tested here.

namespace {

using namespace std::chrono_literals;
using Platform::Darwin::ListenerDoor;

constexpr auto kIdle = 50ms;
constexpr auto kConnection = ListenerDoor::Work::connection;
constexpr auto kTransaction = ListenerDoor::Work::transaction;

TEST(ListenerDoor, IsShutUntilSomebodyServes) {
    ListenerDoor door;
    int connection = 0;
    EXPECT_FALSE(door.knock(&connection));
}

TEST(ListenerDoor, KeepsWhoComesBetweenOpeningAndServing) {
    ListenerDoor door;
    door.open();
    int connection = 0;
    std::thread visitor([&] { EXPECT_TRUE(door.knock(&connection)); });
    std::this_thread::sleep_for(kIdle);
    void* served = nullptr;
    // Again while the visitor's thread has not had its turn; the door stays open.
    while (served == nullptr) {
        door.serve(
            [&](void* each) {
                served = each;
                return true;
            },
            kIdle);
    }
    visitor.join();
    EXPECT_EQ(served, &connection);
}

TEST(ListenerDoor, StopsServingWhenNobodyHasComeForTheIdleTime) {
    ListenerDoor door;
    const auto start = std::chrono::steady_clock::now();
    door.serve([](void*) { return true; }, kIdle);
    EXPECT_GE(std::chrono::steady_clock::now() - start, kIdle);
    EXPECT_TRUE(door.shut());
}

TEST(ListenerDoor, StopsServingAtOnceWhenItIsStoppedAndNothingIsUnderWay) {
    ListenerDoor door;
    door.stop();
    door.serve([](void*) { return true; }, std::chrono::hours(1));
    EXPECT_TRUE(door.shut());
}

TEST(ListenerDoor, DoesNotServeForAConnectionOnceItDisregardsPeers) {
    ListenerDoor door;
    door.begin(kConnection);
    door.disregardPeers();
    door.serve([](void*) { return true; }, kIdle);
    EXPECT_TRUE(door.shut());
    door.end(kConnection);
}

TEST(ListenerDoor, ATransactionKeepsADoorThatWasStopped) {
    ListenerDoor door;
    door.begin(kTransaction);
    door.stop();
    EXPECT_FALSE(door.shut());
    std::thread worker([&] { door.end(kTransaction); });
    door.serve([](void*) { return true; }, std::chrono::hours(1));
    worker.join();
    EXPECT_TRUE(door.shut());
}

TEST(ListenerDoor, TellsEachVisitorItsOwnDecisionFromTheServingThread) {
    ListenerDoor door;
    door.begin(kConnection);
    int welcome = 0;
    int unwelcome = 0;
    std::atomic<int> decided = 0;
    std::thread::id decider;
    std::thread server([&] {
        door.serve(
            [&](void* connection) {
                decider = std::this_thread::get_id();
                ++decided;
                return connection == &welcome;
            },
            kIdle);
    });
    const std::thread::id serverId = server.get_id();
    // Until the other thread serves, nobody is let in.
    while (!door.knock(&welcome)) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(door.knock(&unwelcome));
    EXPECT_TRUE(door.knock(&welcome));
    door.end(kConnection);
    server.join();
    EXPECT_EQ(decided, 3);
    EXPECT_EQ(decider, serverId);
}

TEST(ListenerDoor, KeepsServingWhileSomethingIsUnderWay) {
    ListenerDoor door;
    door.begin(kConnection);
    std::atomic<bool> hasStopped = false;
    std::thread server([&] {
        door.serve([](void*) { return false; }, 1ms);
        hasStopped = true;
    });
    std::this_thread::sleep_for(kIdle);
    EXPECT_FALSE(hasStopped);
    door.end(kConnection);
    server.join();
    EXPECT_TRUE(hasStopped);
}

TEST(ListenerDoor, StaysOpenForWhatBeganAfterServing) {
    ListenerDoor door;
    door.serve([](void*) { return true; }, 1ms);
    door.begin(kConnection);
    EXPECT_FALSE(door.shut());
    door.end(kConnection);
    EXPECT_TRUE(door.shut());
    int connection = 0;
    EXPECT_FALSE(door.knock(&connection));
}

TEST(ListenerDoor, LetsAnAdmittedConnectionHoldItOpen) {
    ListenerDoor door;
    door.begin(kConnection);
    int connection = 0;
    std::atomic<bool> hasStopped = false;
    std::thread server([&] {
        door.serve(
            [&](void*) {
                door.begin(kConnection);
                return true;
            },
            1ms);
        hasStopped = true;
    });
    while (!door.knock(&connection)) {
        std::this_thread::yield();
    }
    door.end(kConnection);
    std::this_thread::sleep_for(kIdle);
    EXPECT_FALSE(hasStopped) << "the connection is still in use";
    door.end(kConnection);
    server.join();
    EXPECT_TRUE(hasStopped);
}

}  // namespace
