#include "Platform/Linux/XPC/FrameChannel.h"

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <utility>

namespace Platform::Linux {

FrameChannel::FrameChannel() : FrameChannel(Posix::Descriptor(), std::numeric_limits<std::size_t>::max()) {}

FrameChannel::FrameChannel(Posix::Descriptor socket, std::size_t mostWaiting)
    : mostWaiting_(mostWaiting),
      socket_(std::move(socket)),
      wakeup_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void FrameChannel::send(std::vector<std::uint8_t> frame) {
    {
        const std::lock_guard lock(mutex_);
        if (refusesMore_) {
            return;
        }
        if (waitingBytes_ >= mostWaiting_) {
            dropLocked();
            refusesMore_ = true;
            overflowed_ = true;
        } else {
            waitingBytes_ += frame.size();
            waiting_.push_back(std::move(frame));
            flushLocked();
        }
    }
    wake();
}

void FrameChannel::wake() {
    const std::uint64_t one = 1;
    static_cast<void>(!::write(wakeup_.get(), &one, sizeof one));
}

void FrameChannel::clearWakeup() {
    std::uint64_t count = 0;
    static_cast<void>(!::read(wakeup_.get(), &count, sizeof count));
}

void FrameChannel::open(Posix::Descriptor socket) {
    const std::lock_guard lock(mutex_);
    socket_ = std::move(socket);
}

void FrameChannel::close() {
    const std::lock_guard lock(mutex_);
    socket_ = Posix::Descriptor();
    dropLocked();
}

void FrameChannel::refuseMore() {
    const std::lock_guard lock(mutex_);
    refusesMore_ = true;
}

std::size_t FrameChannel::waitingBytes() {
    const std::lock_guard lock(mutex_);
    return waitingBytes_;
}

bool FrameChannel::hasOverflowed() {
    const std::lock_guard lock(mutex_);
    return overflowed_;
}

void FrameChannel::flush() {
    const std::lock_guard lock(mutex_);
    flushLocked();
}

void FrameChannel::flushLocked() {
    while (socket_ && !waiting_.empty()) {
        const std::vector<std::uint8_t>& frame = waiting_.front();
        const ssize_t count = ::send(socket_.get(), frame.data() + sentOfFirst_, frame.size() - sentOfFirst_,
                                     MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            if (errno != EAGAIN) {
                // The peer has gone; the connection's thread will see the end of the stream.
                dropLocked();
            }
            return;
        }
        sentOfFirst_ += static_cast<std::size_t>(count);
        waitingBytes_ -= static_cast<std::size_t>(count);
        if (sentOfFirst_ == frame.size()) {
            waiting_.pop_front();
            sentOfFirst_ = 0;
        }
    }
}

void FrameChannel::dropLocked() {
    waiting_.clear();
    sentOfFirst_ = 0;
    waitingBytes_ = 0;
}

}  // namespace Platform::Linux
