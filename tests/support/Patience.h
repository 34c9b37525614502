#pragma once

#include <chrono>
#include <thread>

namespace TestSupport {

/// How long a test waits for what must happen: only a hang takes that long, on no matter how busy a machine.
/// Shorter than CTest's own limit of 1,500 seconds, so that the test can still say what it waited for.
constexpr std::chrono::seconds kPatience{1200};

/// Waits until `condition` holds, asking it again and again; false when it does not come true within `limit`.
template <typename Condition>
[[nodiscard]] bool comesTrue(const Condition& condition, std::chrono::seconds limit = kPatience) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

/// Acts until `outcome` says within its time that it came: what a busy machine can miss, a hand would do
/// again. False if it never comes.
template <typename Action, typename Outcome>
[[nodiscard]] bool repeatUntil(const Action& act, const Outcome& outcome) {
    constexpr std::chrono::seconds kBetween{30};
    for (std::chrono::seconds waited{0}; waited < kPatience; waited += kBetween) {
        act();
        if (outcome(kBetween)) {
            return true;
        }
    }
    return false;
}

}  // namespace TestSupport
