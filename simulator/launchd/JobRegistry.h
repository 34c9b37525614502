#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Support/Files.h"
#include "Support/Machine.h"
#include "launchd/EventLoop.h"
#include "launchd/JobDefinition.h"
#include "launchd/SystemLogFile.h"

namespace Simulator {

/// A launchd domain: the system, or the session of a logged-in user.
struct DomainId {
    /// Nothing for the system.
    std::optional<std::uint32_t> uid;

    /// "system" or "gui/501".
    [[nodiscard]] std::string name() const;
    /// As in messages: "system" or "user gui: 501".
    [[nodiscard]] std::string description() const;

    friend auto operator<=>(const DomainId&, const DomainId&) = default;
};

/// One registered job.
struct Job {
    enum class State : std::uint8_t { waiting, running, stopping };

    DomainId domain;
    JobDefinition definition;
    std::string plist;
    State state = State::waiting;
    std::optional<pid_t> pid;
    /// Listening sockets of the mach services, in the order of their names; held by the job while it runs.
    std::vector<std::string> serviceNames;
    std::vector<Descriptor> services;
    std::chrono::steady_clock::time_point started{};
    std::optional<EventLoop::Timer> timer;
    /// Start again as soon as the process has gone (kickstart -k).
    bool restart = false;
    /// Called when the job is gone.
    std::vector<std::function<void(int)>> waiting;

    [[nodiscard]] bool onDemand() const { return !services.empty(); }
};

/// All jobs of all domains, and their processes. Single-threaded; results are launchctl's numbers, 0 for
/// success.
class JobRegistry {
  public:
    JobRegistry(EventLoop& loop, SystemLogFile& log, const Machine& machine, const Session& session);

    /// Makes the domains and loads the contents of /Library/LaunchDaemons and /Library/LaunchAgents; a broken
    /// or disabled property list is passed over with a line in the log.
    void boot();

    [[nodiscard]] bool hasDomain(const DomainId& domain) const;
    [[nodiscard]] const Job* find(const DomainId& domain, const std::string& label) const;
    [[nodiscard]] std::vector<const Job*> jobs(const DomainId& domain) const;
    [[nodiscard]] std::vector<DomainId> domains() const { return {domains_.begin(), domains_.end()}; }

    /// Registers the job of a property list and starts it if it runs at load.
    int bootstrap(const DomainId& domain, const std::string& plist);
    /// Ends a job and forgets it; `done` is called when its process has gone, or at once if that is refused.
    /// Its mach services cannot be found any more from this call on.
    void bootout(const DomainId& domain, const std::string& label, std::function<void(int)> done);
    /// Calls `done` when the current removal of a job has ended; at once if there is none.
    void afterRemoval(const DomainId& domain, const std::string& label, const std::function<void()>& done);
    int setEnabled(const DomainId& domain, const std::string& label, bool enabled);
    /// Manual overrides, by label: false for enabled, true for disabled.
    [[nodiscard]] const std::map<std::string, bool>& overrides(const DomainId& domain) const;
    int kickstart(const DomainId& domain, const std::string& label, bool killFirst);
    int kill(const DomainId& domain, const std::string& label, int signal);

    /// Called for every child that ended.
    void reaped(pid_t pid, int status);

    /// Labels of the jobs that were started by mach messages and still run.
    [[nodiscard]] std::vector<std::string> runningOnDemandJobs() const;

  private:
    using Key = std::pair<DomainId, std::string>;

    void loadFolder(const DomainId& domain, const std::string& folder);
    [[nodiscard]] std::uint32_t owner(const DomainId& domain) const { return domain.uid.value_or(0); }
    void openServices(Job& job);
    void arm(Job& job);
    void disarm(Job& job);
    void start(Job& job);
    [[nodiscard]] std::map<std::string, std::string> environment(const Job& job) const;
    void ended(Job& job, int status);
    void startLater(Job& job, std::chrono::milliseconds delay);
    void forget(Job& job);
    static void withdrawServices(const Job& job);
    [[nodiscard]] Job* findMutable(const DomainId& domain, const std::string& label);
    [[nodiscard]] std::string disabledFile(const DomainId& domain) const;
    void readDisabled(const DomainId& domain);

    EventLoop& loop_;
    SystemLogFile& log_;
    const Machine& machine_;
    const Session& session_;
    std::set<DomainId> domains_;
    std::map<Key, std::unique_ptr<Job>> jobs_;
    std::map<DomainId, std::map<std::string, bool>> disabled_;
};

}  // namespace Simulator
