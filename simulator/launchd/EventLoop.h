#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>

namespace Simulator {

/// The one thread of launchd: waits for descriptors and deadlines and calls back.
class EventLoop {
  public:
    using Callback = std::function<void()>;
    using Timer = std::uint64_t;

    /// Calls `ready` whenever `fd` is readable or was hung up, until `unwatch`.
    void watch(int fd, Callback ready);
    void unwatch(int fd);

    /// Calls `expired` once, after `delay`.
    Timer after(std::chrono::milliseconds delay, Callback expired);
    /// Ignores a timer that has expired or was cancelled.
    void cancel(Timer timer);

    /// Runs until `stop`; returns its value.
    int run();
    void stop(int status) { status_ = status; }

  private:
    using Clock = std::chrono::steady_clock;

    void fireTimers();
    [[nodiscard]] int millisecondsToNextTimer() const;

    struct Watch {
        Callback ready;
        std::uint64_t generation;
    };
    struct Deadline {
        Clock::time_point when;
        Callback expired;
    };
    std::map<int, Watch> watches_;
    std::map<Timer, Deadline> timers_;
    std::uint64_t next_ = 1;
    std::optional<int> status_;
};

}  // namespace Simulator
