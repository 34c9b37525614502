// A peer that sends work without end, or does not read its replies, costs a bounded amount of memory and
// stops nobody else.

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <deque>
#include <mutex>

#include "RawPeer.h"
#include "XPCTestService.h"

namespace {

using namespace XPCTests;
using Platform::Linux::LinuxXPCConnection;
using Platform::Linux::LinuxXPCListener;
using Lines = std::vector<std::string>;

constexpr auto kMostUnderWay = LinuxXPCConnection::kMostUnderWay;

/// Holds the proxy of every message, as an executor holds its lists, until told to let one go.
class Holder final : public Platform::XPCObject {
  public:
    explicit Holder(Journal& journal) : journal_(journal) {}

    [[nodiscard]] std::string_view protocolName() const override { return "Test"; }
    void message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                 Platform::XPCReply reply) override {
        {
            const std::lock_guard lock(mutex_);
            if (!holds_) {
                return;
            }
            if (selector == "ask:") {
                replies_.push_back(std::move(reply));
            } else {
                proxies_.push_back(std::get<std::shared_ptr<Platform::XPCObject>>(arguments.at(0)));
            }
            most_ = std::max(most_, proxies_.size() + replies_.size());
        }
        journal_.add("held");
    }

    void letOneGo() {
        std::shared_ptr<Platform::XPCObject> proxy;
        Platform::XPCReply reply;
        const std::lock_guard lock(mutex_);
        if (!proxies_.empty()) {
            proxy = std::move(proxies_.front());
            proxies_.pop_front();
        } else if (!replies_.empty()) {
            reply = std::move(replies_.front());
            replies_.pop_front();
        }
    }
    /// Of what is held and of what still comes.
    void letAllGo() {
        const std::lock_guard lock(mutex_);
        holds_ = false;
        proxies_.clear();
        replies_.clear();
    }
    void report(const std::string& text, int times) {
        std::shared_ptr<Platform::XPCObject> proxy;
        {
            const std::lock_guard lock(mutex_);
            proxy = proxies_.front();
        }
        for (int i = 0; i < times; ++i) {
            std::vector<Platform::XPCValue> words;
            words.emplace_back(text);
            proxy->message("say:", std::move(words), {});
        }
    }
    /// How many were held at once, at most.
    [[nodiscard]] std::size_t most() {
        const std::lock_guard lock(mutex_);
        return most_;
    }

  private:
    Journal& journal_;
    std::mutex mutex_;
    std::deque<std::shared_ptr<Platform::XPCObject>> proxies_;
    std::deque<Platform::XPCReply> replies_;
    std::size_t most_ = 0;
    bool holds_ = true;
};

struct HoldingService : TestService {
    HoldingService() {
        exported = holder;
        start();
    }
    ~HoldingService() { holder->letAllGo(); }
    std::shared_ptr<Holder> holder = std::make_shared<Holder>(received);
};

Bytes work() {
    const auto object = static_cast<std::uint8_t>(Platform::XPCArgumentKind::object);
    const auto number = static_cast<std::uint8_t>(Platform::XPCArgumentKind::int32);
    return message(0, 0,
                   "callBack:times:", {2, object, 0, 0, 0, 4, 0, 0, 0, 9, number, 0, 0, 0, 4, 0, 0, 0, 1});
}

Bytes times(std::size_t count, const Bytes& frame) {
    Bytes all;
    for (std::size_t i = 0; i < count; ++i) {
        all.insert(all.end(), frame.begin(), frame.end());
    }
    return all;
}

/// Lets go of one message after the other until all have been held once.
void workThrough(HoldingService& service, std::size_t count) {
    for (std::size_t held = kMostUnderWay; held <= count; ++held) {
        ASSERT_GE(service.received.waitFor(held).size(), held);
        service.holder->letOneGo();
    }
}

TEST(XPCFlow, NoMoreMessagesAreTakenThanMayBeUnderWay) {
    constexpr std::size_t kCount = 500;
    HoldingService service;
    const auto peer = connectTo(service.socketPath());
    ASSERT_TRUE(sendAll(peer, times(kCount, work())));
    workThrough(service, kCount);
    EXPECT_EQ(service.received.lines().size(), kCount);
    EXPECT_EQ(service.holder->most(), kMostUnderWay);
    EXPECT_EQ(service.refused.lines(), Lines());
}

TEST(XPCFlow, AMessageThatIsNotAnsweredIsUnderWayToo) {
    constexpr std::size_t kCount = 100;
    HoldingService service;
    const auto peer = connectTo(service.socketPath());
    Bytes question = stringArgument("file:///p");
    question[1] = static_cast<std::uint8_t>(Platform::XPCArgumentKind::url);
    ASSERT_TRUE(sendAll(peer, times(kCount, message(0, 1, "ask:", question))));
    workThrough(service, kCount);
    EXPECT_EQ(service.holder->most(), kMostUnderWay);
}

TEST(XPCFlow, APeerWhoseWorkIsNotDoneKeepsNobodyWaiting) {
    HoldingService service;
    const auto busy = connectTo(service.socketPath());
    ASSERT_TRUE(sendAll(busy, times(kMostUnderWay + 1, work())));
    ASSERT_EQ(service.received.waitFor(kMostUnderWay).size(), kMostUnderWay);
    const auto other = connectTo(service.socketPath());
    ASSERT_TRUE(sendAll(other, work()));
    EXPECT_EQ(service.received.waitFor(kMostUnderWay + 1).size(), kMostUnderWay + 1);
}

TEST(XPCFlow, WhatAPeerSentBeforeItLeftIsTakenWhenThereIsRoom) {
    constexpr std::size_t kCount = 20;
    HoldingService service;
    {
        const auto peer = connectTo(service.socketPath());
        ASSERT_TRUE(sendAll(peer, times(kCount, work())));
    }
    workThrough(service, kCount);
    EXPECT_EQ(service.received.lines().size(), kCount);
    EXPECT_EQ(service.holder->most(), kMostUnderWay);
}

TEST(XPCFlow, APeerThatDoesNotReadIsGivenUpWhileItsWorkGoesOn) {
    HoldingService service;
    const auto peer = connectTo(service.socketPath());
    ASSERT_TRUE(sendAll(peer, work()));
    ASSERT_EQ(service.received.waitFor(1).size(), 1U);
    // Returns: nobody waits for the peer.
    service.holder->report(std::string(1 << 20, 'x'), 40);
    const Lines refused = service.refused.waitFor(1);
    ASSERT_EQ(refused.size(), 1U);
    EXPECT_TRUE(refused[0].ends_with(": it does not read what it is sent")) << refused[0];
    service.holder->report("after", 1);
    EXPECT_TRUE(isClosedByPeer(peer));
}

TEST(XPCFlow, APeerThatReadsSlowlyGetsEverything) {
    HoldingService service;
    const auto peer = connectTo(service.socketPath());
    ASSERT_TRUE(sendAll(peer, work()));
    ASSERT_EQ(service.received.waitFor(1).size(), 1U);
    constexpr std::size_t kReports = 6;
    service.holder->report(std::string(1 << 20, 'x'), kReports);
    std::size_t received = 0;
    std::array<char, 65536> bytes{};
    while (received < kReports << 20) {
        const ssize_t count = ::recv(peer.get(), bytes.data(), bytes.size(), 0);
        ASSERT_GT(count, 0);
        received += static_cast<std::size_t>(count);
    }
    EXPECT_EQ(service.refused.lines(), Lines());
}

TEST(XPCFlow, ThereAreNoMoreConnectionsThanABoundAndRoomAgainWhenOneEnds) {
    HoldingService service;
    std::vector<Platform::Posix::Descriptor> peers;
    for (int i = 0; i < LinuxXPCListener::kMostConnections; ++i) {
        peers.push_back(connectTo(service.socketPath()));
        ASSERT_TRUE(sendAll(peers.back(), work()));
    }
    const auto most = static_cast<std::size_t>(LinuxXPCListener::kMostConnections);
    ASSERT_EQ(service.received.waitFor(most).size(), most);
    EXPECT_TRUE(isClosedByPeer(connectTo(service.socketPath())));
    const Lines refused = service.refused.waitFor(1);
    ASSERT_EQ(refused.size(), 1U);
    EXPECT_TRUE(refused[0].ends_with(": too many are connected already")) << refused[0];
}

}  // namespace
