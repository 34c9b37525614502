#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

#include "Platform/Posix/Descriptor.h"

namespace Platform::Linux {

/// The sending half of a connection: frames that any thread hands over, and the socket that takes them when
/// there is one. A frame leaves at once, in one call, when nothing waits before it and the socket has room;
/// what is left is sent by the connection's thread, which `wakeup` wakes. Only that thread opens, closes and
/// reads the socket.
class FrameChannel {
  public:
    /// Without a socket; frames wait.
    FrameChannel();
    explicit FrameChannel(Posix::Descriptor socket);

    /// Any thread. After `refuseMore` nothing happens.
    void send(std::vector<std::uint8_t> frame);
    /// Any thread: makes `wakeup` readable.
    void wake();

    // The connection's thread.

    void open(Posix::Descriptor socket);
    /// Drops the socket and every frame that waits.
    void close();
    /// Frames handed over from now on are dropped.
    void refuseMore();
    [[nodiscard]] bool hasWaiting();
    /// Sends what the socket takes.
    void flush();
    [[nodiscard]] int socket() const { return socket_.get(); }
    /// Readable after `wake` and `send`.
    [[nodiscard]] int wakeup() const { return wakeup_.get(); }
    void clearWakeup();

  private:
    void flushLocked();

    std::mutex mutex_;
    Posix::Descriptor socket_;
    std::deque<std::vector<std::uint8_t>> waiting_;
    std::size_t sentOfFirst_ = 0;
    bool refusesMore_ = false;
    Posix::Descriptor wakeup_;
};

}  // namespace Platform::Linux
