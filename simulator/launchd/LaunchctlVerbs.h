#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "launchd/Caller.h"
#include "launchd/JobRegistry.h"
#include "launchd/LaunchctlMessages.h"

namespace Simulator {

/// The verbs of launchctl, with the real tool's messages and exit statuses.
class LaunchctlVerbs {
  public:
    using Done = std::function<void(const LaunchctlReply&)>;
    using Arguments = std::vector<std::string>;

    LaunchctlVerbs(EventLoop& loop, JobRegistry& jobs, const Faults& faults);

    /// Carries out a call; `done` receives its reply, at once or later.
    void run(const Caller& caller, const Arguments& arguments, const Done& done);

  private:
    /// DOMAIN or DOMAIN/LABEL.
    struct Target {
        DomainId domain;
        std::string label;
        /// A domain that a Mac can have; other kinds (login/..., pid/...) are recognised but never exist.
        bool known = true;
    };
    using Verb = void (LaunchctlVerbs::*)(const Caller&, const Arguments&, const Done&);

    [[nodiscard]] static std::optional<Target> parseTarget(const std::string& text);
    [[nodiscard]] static bool mayModify(const Caller& caller, const DomainId& domain);
    [[nodiscard]] bool exists(const Target& target) const {
        return target.known && jobs_.hasDomain(target.domain);
    }

    void dispatch(const Caller& caller, const Arguments& arguments, const Done& done);
    void bootstrap(const Caller& caller, const Arguments& arguments, const Done& done);
    void bootout(const Caller& caller, const Arguments& arguments, const Done& done);
    /// One reply when the last job has gone, with the last refusal.
    void bootoutAll(const DomainId& domain, const std::vector<std::string>& labels, const Done& done);
    void enable(const Caller& caller, const Arguments& arguments, const Done& done);
    void print(const Caller& caller, const Arguments& arguments, const Done& done);
    void printDisabled(const Caller& caller, const Arguments& arguments, const Done& done);
    void list(const Caller& caller, const Arguments& arguments, const Done& done);
    void kickstart(const Caller& caller, const Arguments& arguments, const Done& done);
    void kill(const Caller& caller, const Arguments& arguments, const Done& done);
    void remove(const Caller& caller, const Arguments& arguments, const Done& done);

    EventLoop& loop_;
    JobRegistry& jobs_;
    const Faults& faults_;
};

}  // namespace Simulator
