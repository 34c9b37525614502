#include "NorvikCommon/PMProcessMonitor.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <string>
#include <utility>

#include "Platform/ProcessOnce.h"
#include "Platform/SystemPorts.h"

namespace NorvikCommon {

namespace {

using ProcessList = std::vector<PMProcess>;

Platform::ProcessOnce<std::unique_ptr<PMProcessMonitor>> sharedMonitor;

ProcessList takeProcessList(std::uint32_t userId) {
    ProcessList list;
    for (const std::int32_t pid : PMProcessUtil::shared().collectPidsForUser(userId)) {
        if (std::optional<PMProcess> process = PMProcess::processWithPid(pid)) {
            list.push_back(std::move(*process));
        }
    }
    return list;
}

}  // namespace

/// The state that the queue's blocks and the timer's handler share with the monitor. The list is replaced
/// whole: the queue is concurrent and gives a writer no exclusion.
struct PMProcessMonitor::State {
    std::uint32_t userId;
    std::unique_ptr<Platform::Queue> processListUpdateQueue;
    std::shared_ptr<std::shared_ptr<const ProcessList>> processes =
        std::make_shared<std::shared_ptr<const ProcessList>>(std::make_shared<const ProcessList>());
};

const PMProcessMonitor& PMProcessMonitor::defaultMonitor() {
    return *sharedMonitor.get([] { return std::make_unique<PMProcessMonitor>(); });
}

PMProcessMonitor::PMProcessMonitor(double refreshFrequency, std::uint32_t ofUser)
    : state_(std::make_shared<State>()) {
    const Platform::SystemPorts& ports = Platform::SystemPorts::current();
    state_->userId = ofUser;
    state_->processListUpdateQueue = ports.dispatch->makeConcurrentQueue("com.merrow.PMMonitor.process-sync");
    timer_ = ports.dispatch->makeTimer([weakState = std::weak_ptr<State>(state_)] {
        if (const std::shared_ptr<State> state = weakState.lock()) {
            update(state, true);
        }
    });
    // The interval is intentionally a point in time used as a duration.
    constexpr double kNanosecondsPerSecond = 1'000'000'000;
    const auto frequency = static_cast<std::int64_t>(refreshFrequency * kNanosecondsPerSecond);
    timer_->schedule(Platform::kTimeNow, ports.clock->time(frequency), 0);
    updateProcessList(false);
}

PMProcessMonitor::~PMProcessMonitor() {
    stop();
}

void PMProcessMonitor::start() {
    timer_->resume();
}

void PMProcessMonitor::stop() {
    timer_->cancel();
}

void PMProcessMonitor::updateProcessList(bool async) {
    update(state_, async);
}

void PMProcessMonitor::update(const std::shared_ptr<State>& state, bool async) {
    auto list = std::make_shared<const ProcessList>(takeProcessList(state->userId));
    // The block holds the list's place, not the state: a block of the queue must not destroy it.
    auto store = [processes = state->processes, list = std::move(list)] {
        std::atomic_store(processes.get(), list);
    };
    if (async) {
        state->processListUpdateQueue->async(std::move(store));
    } else {
        state->processListUpdateQueue->sync(store);
    }
}

std::vector<PMProcess> PMProcessMonitor::allProcesses() const {
    std::shared_ptr<const ProcessList> list;
    state_->processListUpdateQueue->sync([&] { list = std::atomic_load(state_->processes.get()); });
    return *list;
}

std::vector<PMProcess> PMProcessMonitor::allProcessesWithName(std::string_view name) const {
    ProcessList list = allProcesses();
    std::erase_if(list, [name](const PMProcess& process) { return process.name != name; });
    return list;
}

}  // namespace NorvikCommon
