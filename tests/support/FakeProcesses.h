#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "Platform/ProcessTable.h"
#include "Platform/TaskRunner.h"
#include "Platform/Termination.h"
#include "Platform/Users.h"
#include "support/Call.h"

namespace TestSupport {

/// Child processes that answer as told; any other succeeds silently.
class FakeTaskRunner final : public Platform::TaskRunner {
  public:
    struct Result {
        std::string output{};
        std::string error{};
        std::int32_t status = 0;
        Platform::TerminationReason reason = Platform::TerminationReason::exit;
        /// Runs until it is killed; else it has ended when it is first asked about.
        bool runsOn = false;
        /// Called when the process starts.
        std::function<void()> onLaunch{};
    };

    explicit FakeTaskRunner(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::unique_ptr<Platform::Task> launch(
        const std::string& path, const std::optional<std::vector<std::string>>& arguments) override;

    /// By the whole command line, joined with single spaces.
    std::map<std::string, Result> results;
    /// Answers what `results` does not; nothing leaves the child to succeed silently.
    std::function<std::optional<Result>(const std::string& path, const std::vector<std::string>& arguments)>
        answer;
    /// Those that come before the one in `results`, in order.
    std::map<std::string, std::deque<Result>> firstResults;
    std::set<std::string> notExecutable;
    /// The argument vectors as they were given, in order.
    std::vector<std::optional<std::vector<std::string>>> argumentVectors;

  private:
    CallList& calls_;
};

class FakeProcessTable final : public Platform::ProcessTable {
  public:
    struct Process {
        std::int32_t pid = 0;
        std::uint32_t uid = 0;
        std::string name;
        std::string path;
        bool canBeKilled = true;
    };

    explicit FakeProcessTable(CallList& calls) : calls_(calls) {}

    int listPids(Platform::PidListType type, std::uint32_t user, std::span<std::int32_t> pids) override;
    int effectiveUser(std::int32_t pid, std::uint32_t& user) override;
    int name(std::int32_t pid, std::span<char> name) override;
    int path(std::int32_t pid, std::span<char> path) override;
    int kill(std::int32_t pid, int signal) override;

    /// Killed ones leave.
    std::vector<Process> processes;
    /// Listed but gone when it is asked about.
    std::vector<std::int32_t> vanished;
    int nameCalls = 0;
    /// The queries about single processes, in order ("uid 7", "name 7", "path 7"); not among the calls.
    std::vector<std::string> questions;
    /// The answer to the first question for a name, in place of the process's own.
    std::optional<std::string> firstName;
    /// The result of a query for a name if there is none.
    int noName = 0;
    /// Counting works, filling a buffer fails.
    bool refusesToList = false;
    bool refusesToCount = false;
    /// Called when the processes have been counted, before they can be listed.
    std::function<void()> onCounted;

  private:
    [[nodiscard]] const Process* find(std::int32_t pid) const;

    CallList& calls_;
};

class FakeUsers final : public Platform::Users {
  public:
    explicit FakeUsers(CallList& calls) : calls_(calls) {}

    void rewind() override;
    [[nodiscard]] std::optional<Entry> next() override;
    void close() override;
    [[nodiscard]] std::uint32_t realUserId() override { return real; }
    int setEffectiveUserId(std::uint32_t uid) override;

    std::vector<Entry> entries;
    std::uint32_t real = 0;
    std::uint32_t effective = 0;
    bool refusesChange = false;

  private:
    CallList& calls_;
    std::size_t position_ = 0;
};

/// A process that is asked to end when a test says so.
class FakeTermination final : public Platform::Termination {
  public:
    void onRequest(std::function<void()> requested) override { request = std::move(requested); }

    /// Asks; empty until somebody has listened.
    std::function<void()> request;
};

}  // namespace TestSupport
