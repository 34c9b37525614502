#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

#include "Platform/Posix/Descriptor.h"

namespace Platform::Linux {

/// The sending half of a connection: frames that any thread hands over, and the socket that takes them once
/// there is one. A frame leaves at once, in one call, if nothing waits before it and the socket has room; the
/// rest is sent by the connection's thread, which `wakeup` wakes. Only that thread opens, closes and reads
/// the socket.
///
/// No more than `mostWaiting` bytes wait: a frame that finds that many waiting overflows the channel, which
/// drops it, everything that waits and all that comes after. So a peer that does not read costs no memory and
/// never blocks the sender.
class FrameChannel {
  public:
    /// Starts without a socket; frames wait, however many.
    FrameChannel();
    FrameChannel(Posix::Descriptor socket, std::size_t mostWaiting);

    /// Any thread. After `refuseMore` or an overflow nothing happens.
    void send(std::vector<std::uint8_t> frame);
    /// Any thread: makes `wakeup` readable.
    void wake();

    // The connection's thread.

    void open(Posix::Descriptor socket);
    /// Drops the socket and every frame that waits.
    void close();
    /// Frames handed over from now on are dropped.
    void refuseMore();
    [[nodiscard]] bool hasWaiting() { return waitingBytes() > 0; }
    /// The bytes handed over and not yet sent.
    [[nodiscard]] std::size_t waitingBytes();
    [[nodiscard]] bool hasOverflowed();
    /// Sends as much as the socket takes.
    void flush();
    [[nodiscard]] int socket() const { return socket_.get(); }
    /// Readable after `wake` and `send`.
    [[nodiscard]] int wakeup() const { return wakeup_.get(); }
    void clearWakeup();

  private:
    void flushLocked();
    void dropLocked();

    const std::size_t mostWaiting_;
    std::mutex mutex_;
    Posix::Descriptor socket_;
    std::deque<std::vector<std::uint8_t>> waiting_;
    std::size_t sentOfFirst_ = 0;
    std::size_t waitingBytes_ = 0;
    bool refusesMore_ = false;
    bool overflowed_ = false;
    Posix::Descriptor wakeup_;
};

}  // namespace Platform::Linux
