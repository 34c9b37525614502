#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "NorvikCommon/PMProcess.h"
#include "Platform/Dispatch.h"

namespace NorvikCommon {

/// A list of running processes, kept on a concurrent queue and refreshed by a timer that only `start` starts.
/// Nothing is logged.
class PMProcessMonitor {
    struct State;

  public:
    /// The shared monitor, made once per process with the default refresh frequency and never started: its
    /// list is the one taken at first use.
    [[nodiscard]] static const PMProcessMonitor& defaultMonitor();

    /// `refreshFrequency` is in seconds. The list is taken before the constructor returns.
    explicit PMProcessMonitor(double refreshFrequency = 5.0, std::uint32_t ofUser = kAllUsersId);
    PMProcessMonitor(const PMProcessMonitor&) = delete;
    PMProcessMonitor& operator=(const PMProcessMonitor&) = delete;
    /// Cancels the timer.
    ~PMProcessMonitor();

    /// Starts the timer.
    void start();
    /// Cancels the timer.
    void stop();
    /// Takes a new list on this thread and stores it on the queue: with `async` some time later, else before
    /// it returns.
    void updateProcessList(bool async);

    /// The list last stored. May be called on any thread.
    [[nodiscard]] std::vector<PMProcess> allProcesses() const;
    /// The entries of allProcesses whose name is exactly `name`, in the list's order.
    [[nodiscard]] std::vector<PMProcess> allProcessesWithName(std::string_view name) const;

  private:
    static void update(const std::shared_ptr<State>& state, bool async);

    std::shared_ptr<State> state_;
    std::unique_ptr<Platform::Timer> timer_;
};

}  // namespace NorvikCommon
