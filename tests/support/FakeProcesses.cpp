#include "support/FakeProcesses.h"

#include <algorithm>
#include <cstring>

#include "Base/FatalError.h"

namespace TestSupport {

// Child processes.

namespace {

class FakeTask final : public Platform::Task {
  public:
    FakeTask(FakeTaskRunner::Result result, CallList& calls) : result_(std::move(result)), calls_(calls) {}

    void waitUntilExit() override {
        calls_.push_back({"wait"});
        ended_ = true;
    }
    [[nodiscard]] bool isRunning() override { return result_.runsOn; }
    void kill() override {
        calls_.push_back({result_.runsOn ? "kill task" : "end of task"});
        result_.runsOn = false;
    }
    [[nodiscard]] std::string readOutputToEnd() override {
        calls_.push_back({"read output"});
        return result_.output;
    }
    [[nodiscard]] std::string readErrorToEnd() override {
        calls_.push_back({"read error"});
        return result_.error;
    }
    [[nodiscard]] std::int32_t terminationStatus() const override {
        requireEnded();
        return result_.status;
    }
    [[nodiscard]] Platform::TerminationReason terminationReason() const override {
        requireEnded();
        return result_.reason;
    }

  private:
    // As with a real child.
    void requireEnded() const {
        if (!ended_) {
            Base::fatalError("The status of a child process was asked for before it had been waited for.");
        }
    }

    bool ended_ = false;
    FakeTaskRunner::Result result_;
    CallList& calls_;
};

}  // namespace

std::unique_ptr<Platform::Task> FakeTaskRunner::launch(
    const std::string& path, const std::optional<std::vector<std::string>>& arguments) {
    argumentVectors.push_back(arguments);
    std::string commandLine = path;
    for (const std::string& argument : arguments.value_or(std::vector<std::string>{})) {
        commandLine += " " + argument;
    }
    calls_.push_back({"launch", commandLine});
    if (notExecutable.contains(path)) {
        return nullptr;
    }
    const auto found = results.find(commandLine);
    const auto answered = found == results.end() && answer
                              ? answer(path, arguments.value_or(std::vector<std::string>{}))
                              : std::nullopt;
    Result result = found == results.end() ? answered.value_or(Result{}) : found->second;
    if (auto& first = firstResults[commandLine]; !first.empty()) {
        result = std::move(first.front());
        first.pop_front();
    }
    if (result.onLaunch) {
        result.onLaunch();
    }
    return std::make_unique<FakeTask>(std::move(result), calls_);
}

// Processes.

const FakeProcessTable::Process* FakeProcessTable::find(std::int32_t pid) const {
    const auto found = std::find_if(processes.begin(), processes.end(),
                                    [pid](const Process& process) { return process.pid == pid; });
    return found == processes.end() ? nullptr : &*found;
}

int FakeProcessTable::listPids(Platform::PidListType type, std::uint32_t user, std::span<std::int32_t> pids) {
    std::vector<std::int32_t> listed;
    for (const Process& process : processes) {
        if (type == Platform::PidListType::all || process.uid == user) {
            listed.push_back(process.pid);
        }
    }
    listed.insert(listed.end(), vanished.begin(), vanished.end());
    calls_.push_back({"listPids", static_cast<std::uint32_t>(type), pids.size()});
    if (pids.empty()) {
        if (onCounted) {
            onCounted();
        }
        return refusesToCount ? -1 : static_cast<int>(listed.size());
    }
    if (refusesToList) {
        return -1;
    }
    const std::size_t count = std::min(listed.size(), pids.size());
    std::copy_n(listed.begin(), count, pids.begin());
    return static_cast<int>(count);
}

int FakeProcessTable::effectiveUser(std::int32_t pid, std::uint32_t& user) {
    questions.push_back("uid " + std::to_string(pid));
    const Process* process = find(pid);
    if (process == nullptr) {
        return 0;
    }
    user = process->uid;
    return 1;
}

namespace {

int write(const std::string& text, std::span<char> buffer) {
    const std::size_t count = std::min(text.size(), buffer.size());
    std::memcpy(buffer.data(), text.data(), count);
    return static_cast<int>(count);
}

}  // namespace

int FakeProcessTable::name(std::int32_t pid, std::span<char> name) {
    ++nameCalls;
    questions.push_back("name " + std::to_string(pid));
    if (firstName && nameCalls == 1) {
        return write(*firstName, name);
    }
    const Process* process = find(pid);
    return process == nullptr || process->name.empty() ? noName : write(process->name, name);
}

int FakeProcessTable::path(std::int32_t pid, std::span<char> path) {
    questions.push_back("path " + std::to_string(pid));
    const Process* process = find(pid);
    return process == nullptr ? 0 : write(process->path, path);
}

int FakeProcessTable::kill(std::int32_t pid, int signal) {
    calls_.push_back({"kill", pid, signal});
    const Process* process = find(pid);
    if (process == nullptr || !process->canBeKilled) {
        return -1;
    }
    std::erase_if(processes, [pid](const Process& each) { return each.pid == pid; });
    return 0;
}

// Users.

void FakeUsers::rewind() {
    calls_.push_back({"setpwent"});
    position_ = 0;
}

std::optional<Platform::Users::Entry> FakeUsers::next() {
    return position_ < entries.size() ? std::optional(entries[position_++]) : std::nullopt;
}

void FakeUsers::close() {
    calls_.push_back({"endpwent"});
}

int FakeUsers::setEffectiveUserId(std::uint32_t uid) {
    calls_.push_back({"seteuid", uid});
    if (refusesChange) {
        return -1;
    }
    effective = uid;
    return 0;
}

}  // namespace TestSupport
