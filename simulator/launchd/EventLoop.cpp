#include "launchd/EventLoop.h"

#include <algorithm>
#include <vector>

#include <poll.h>

namespace Simulator {

void EventLoop::watch(int fd, Callback ready) {
    watches_[fd] = {std::move(ready), next_++};
}

void EventLoop::unwatch(int fd) {
    watches_.erase(fd);
}

EventLoop::Timer EventLoop::after(std::chrono::milliseconds delay, Callback expired) {
    const Timer timer = next_++;
    timers_[timer] = {Clock::now() + delay, std::move(expired)};
    return timer;
}

void EventLoop::cancel(Timer timer) {
    timers_.erase(timer);
}

int EventLoop::millisecondsToNextTimer() const {
    if (timers_.empty()) {
        return -1;
    }
    auto next = Clock::time_point::max();
    for (const auto& [timer, deadline] : timers_) {
        next = std::min(next, deadline.when);
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000));
}

void EventLoop::fireTimers() {
    const auto now = Clock::now();
    std::vector<Timer> due;
    for (const auto& [timer, deadline] : timers_) {
        if (deadline.when <= now) {
            due.push_back(timer);
        }
    }
    for (const Timer timer : due) {
        // An earlier callback may have cancelled it.
        if (auto node = timers_.extract(timer)) {
            node.mapped().expired();
        }
    }
}

int EventLoop::run() {
    while (!status_) {
        std::vector<pollfd> descriptors;
        std::vector<std::uint64_t> generations;
        for (const auto& [fd, watch] : watches_) {
            descriptors.push_back({fd, POLLIN, 0});
            generations.push_back(watch.generation);
        }
        static_cast<void>(::poll(descriptors.data(), descriptors.size(), millisecondsToNextTimer()));
        for (std::size_t index = 0; index < descriptors.size() && !status_; ++index) {
            // An earlier callback may have closed this descriptor and got the same number for another one.
            const auto found = watches_.find(descriptors[index].fd);
            if (descriptors[index].revents != 0 && found != watches_.end() &&
                found->second.generation == generations[index]) {
                const Callback ready = found->second.ready;
                ready();
            }
        }
        if (!status_) {
            fireTimers();
        }
    }
    return *status_;
}

}  // namespace Simulator
