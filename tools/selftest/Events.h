#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace Selftest {

/// What happened on other threads, in order, for the thread that waits for it.
class Events {
  public:
    void add(std::string event) {
        const std::lock_guard lock(mutex_);
        events_.push_back(std::move(event));
        changed_.notify_all();
    }

    /// Waits until one of `wanted` has happened; false when none has within 20 seconds, which no Mac needs.
    [[nodiscard]] bool waitForAny(const std::vector<std::string>& wanted) {
        return waitUntil([&](const std::vector<std::string>& events) {
            return std::find_first_of(events.begin(), events.end(), wanted.begin(), wanted.end()) !=
                   events.end();
        });
    }
    [[nodiscard]] bool waitFor(const std::string& wanted) { return waitForAny({wanted}); }
    /// Waits until one has happened whose name begins so.
    [[nodiscard]] bool waitForBeginning(const std::string& beginning) {
        return waitUntil([&](const std::vector<std::string>& events) {
            return std::any_of(events.begin(), events.end(),
                               [&](const std::string& event) { return event.starts_with(beginning); });
        });
    }
    /// Waits until there are `count` events.
    [[nodiscard]] bool waitForCount(std::size_t count) {
        return waitUntil([count](const std::vector<std::string>& events) { return events.size() >= count; });
    }

    [[nodiscard]] std::vector<std::string> all() {
        const std::lock_guard lock(mutex_);
        return events_;
    }
    [[nodiscard]] bool has(const std::string& event) {
        const std::vector<std::string> events = all();
        return std::find(events.begin(), events.end(), event) != events.end();
    }
    /// "one, another", or "nothing".
    [[nodiscard]] std::string asText() {
        std::string text;
        for (const std::string& event : all()) {
            text += (text.empty() ? "" : ", ") + event;
        }
        return text.empty() ? "nothing" : text;
    }

  private:
    template <class Condition>
    bool waitUntil(const Condition& condition) {
        constexpr std::chrono::seconds kLongest{20};
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kLongest, [&] { return condition(events_); });
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> events_;
};

}  // namespace Selftest
