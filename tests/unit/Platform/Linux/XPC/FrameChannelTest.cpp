#include "Platform/Linux/XPC/FrameChannel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <functional>

#include "support/SystemCalls.h"

namespace {

using Platform::Linux::FrameChannel;
using Platform::Posix::Descriptor;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kMost = 1 << 20;

struct Pair {
    Pair() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()), 0);
        ours = Descriptor(ends[0]);
        peers = Descriptor(ends[1]);
    }

    /// What the peer can read now.
    [[nodiscard]] Bytes received() const {
        Bytes all;
        std::array<std::uint8_t, 65536> bytes{};
        for (;;) {
            const ssize_t count = ::recv(peers.get(), bytes.data(), bytes.size(), 0);
            if (count <= 0) {
                return all;
            }
            all.insert(all.end(), bytes.begin(), bytes.begin() + count);
        }
    }

    Descriptor ours;
    Descriptor peers;
};

bool isAwake(const FrameChannel& channel) {
    pollfd polled{channel.wakeup(), POLLIN, 0};
    return ::poll(&polled, 1, 0) == 1;
}

/// Sends frames of this size until one has to wait.
void fill(FrameChannel& channel, std::size_t size) {
    while (!channel.hasWaiting()) {
        channel.send(Bytes(size, 'f'));
    }
}

TEST(FrameChannelTest, SendsAFrameAtOnceWhereThereIsRoom) {
    Pair pair;
    FrameChannel channel(std::move(pair.ours), kMost);
    channel.send({1, 2, 3});
    EXPECT_EQ(pair.received(), (Bytes{1, 2, 3}));
    EXPECT_FALSE(channel.hasWaiting());
    EXPECT_TRUE(isAwake(channel));
    channel.clearWakeup();
    EXPECT_FALSE(isAwake(channel));
}

TEST(FrameChannelTest, KeepsFramesUntilThereIsASocket) {
    Pair pair;
    FrameChannel channel;
    channel.send({1, 2});
    channel.send({3});
    EXPECT_EQ(channel.waitingBytes(), 3U);
    channel.open(std::move(pair.ours));
    channel.flush();
    EXPECT_EQ(pair.received(), (Bytes{1, 2, 3}));
    EXPECT_EQ(channel.waitingBytes(), 0U);
}

TEST(FrameChannelTest, SendsTheRestOfAFrameInOrderWhenThereIsRoomAgain) {
    Pair pair;
    FrameChannel channel(std::move(pair.ours), kMost);
    Bytes frame(kMost, 0);
    for (std::size_t i = 0; i < frame.size(); ++i) {
        frame[i] = static_cast<std::uint8_t>(i % 251);
    }
    channel.send(frame);
    channel.send({9});
    EXPECT_TRUE(channel.hasWaiting());
    Bytes all;
    while (all.size() < frame.size() + 1) {
        const Bytes more = pair.received();
        ASSERT_FALSE(more.empty());
        all.insert(all.end(), more.begin(), more.end());
        EXPECT_EQ(channel.waitingBytes() == 0, all.size() >= frame.size() + 1);
        channel.flush();
    }
    frame.push_back(9);
    EXPECT_EQ(all, frame);
}

TEST(FrameChannelTest, ForgetsHalfAFrameWhenItCloses) {
    Pair first;
    FrameChannel channel(std::move(first.ours), kMost);
    channel.send(Bytes(kMost, 'a'));
    EXPECT_TRUE(channel.hasWaiting());
    channel.close();
    EXPECT_EQ(channel.waitingBytes(), 0U);
    Pair second;
    channel.open(std::move(second.ours));
    channel.send({1, 2, 3});
    EXPECT_EQ(second.received(), (Bytes{1, 2, 3}));
}

TEST(FrameChannelTest, ForgetsHalfAFrameWhenThePeerHasGone) {
    Pair first;
    FrameChannel channel(std::move(first.ours), kMost);
    channel.send(Bytes(kMost, 'a'));
    first.peers = Descriptor();
    channel.flush();
    EXPECT_EQ(channel.waitingBytes(), 0U);
    EXPECT_FALSE(channel.hasOverflowed());
    Pair second;
    channel.open(std::move(second.ours));
    channel.send({1, 2, 3});
    EXPECT_EQ(second.received(), (Bytes{1, 2, 3}));
}

TEST(FrameChannelTest, TakesNothingAfterItRefusesMore) {
    Pair pair;
    FrameChannel channel(std::move(pair.ours), kMost);
    channel.refuseMore();
    channel.send({1});
    EXPECT_EQ(pair.received(), Bytes());
    EXPECT_FALSE(channel.hasWaiting());
}

TEST(FrameChannelTest, NeverHoldsMoreThanItsBoundAndOneFrameWhoeverDoesNotRead) {
    constexpr std::size_t kFrame = 1000;
    Pair pair;
    FrameChannel channel(std::move(pair.ours), kMost);
    fill(channel, kFrame);
    std::size_t largest = 0;
    for (int i = 0; i < 5000; ++i) {
        channel.send(Bytes(kFrame, 'g'));
        largest = std::max(largest, channel.waitingBytes());
    }
    EXPECT_LT(largest, kMost + kFrame);
    EXPECT_GE(largest, kMost);
    EXPECT_TRUE(channel.hasOverflowed());
    EXPECT_EQ(channel.waitingBytes(), 0U);
    EXPECT_TRUE(isAwake(channel));
}

TEST(FrameChannelTest, SendsNothingMoreAfterAnOverflow) {
    Pair pair;
    FrameChannel channel(std::move(pair.ours), kMost);
    fill(channel, kMost);
    EXPECT_FALSE(channel.hasOverflowed());
    channel.send(Bytes(kMost, 'h'));
    channel.send({1});
    EXPECT_TRUE(channel.hasOverflowed());
    static_cast<void>(pair.received());
    channel.flush();
    channel.send({1});
    EXPECT_EQ(pair.received(), Bytes());
}

TEST(FrameChannelTest, TakesOneFrameHoweverLargeWhileFewerBytesThanItsBoundWait) {
    Pair pair;
    FrameChannel channel(std::move(pair.ours), 16);
    channel.send(Bytes(3 * kMost, 'a'));
    EXPECT_FALSE(channel.hasOverflowed());
    EXPECT_TRUE(channel.hasWaiting());
}

TEST(FrameChannelTest, OverflowsWhenItsBoundIsReachedAndNotBefore) {
    FrameChannel channel(Descriptor(), 16);
    channel.send(Bytes(15, 'a'));
    channel.send(Bytes(1, 'b'));
    EXPECT_FALSE(channel.hasOverflowed());
    EXPECT_EQ(channel.waitingBytes(), 16U);
    channel.send(Bytes(1, 'c'));
    EXPECT_TRUE(channel.hasOverflowed());
}

/// What a channel that sends three bytes does while its attempts are answered so, by their number from 1.
class SendingFrame : public testing::Test {
  protected:
    [[nodiscard]] int attempts(const std::function<int(int number)>& failure) {
        int count = 0;
        PlatformTests::askAboutEachCall([&](long call) { return call == SYS_sendto ? failure(++count) : 0; },
                                        [&] {
                                            channel_.send({1, 2, 3});
                                        });
        return count;
    }

    Pair pair_;
    FrameChannel channel_{std::move(pair_.ours), kMost};
};

TEST_F(SendingFrame, GoesOnAfterAnInterruption) {
    EXPECT_EQ(attempts([](int number) { return number <= 3 ? EINTR : 0; }), 4);
    EXPECT_EQ(pair_.received(), (Bytes{1, 2, 3}));
}

TEST_F(SendingFrame, WaitsForRoom) {
    EXPECT_EQ(attempts([](int) { return EAGAIN; }), 1);
    EXPECT_EQ(channel_.waitingBytes(), 3U);
    channel_.flush();
    EXPECT_EQ(pair_.received(), (Bytes{1, 2, 3}));
}

TEST_F(SendingFrame, IsGivenUpAfterAFailure) {
    EXPECT_EQ(attempts([](int) { return ECONNRESET; }), 1);
    EXPECT_EQ(channel_.waitingBytes(), 0U);
    channel_.flush();
    EXPECT_EQ(pair_.received(), Bytes());
}

TEST(FrameChannelTest, WithoutABoundHoldsWhateverWaits) {
    FrameChannel channel;
    for (int i = 0; i < 64; ++i) {
        channel.send(Bytes(kMost, 'a'));
    }
    EXPECT_FALSE(channel.hasOverflowed());
    EXPECT_EQ(channel.waitingBytes(), 64 * kMost);
}

}  // namespace
