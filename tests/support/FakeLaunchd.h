#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/FakeMac.h"

namespace TestSupport {

/// One call of launchctl and the user ids that the child inherits from its parent.
struct LaunchctlCall {
    std::string arguments;
    std::uint32_t realUser = 0;
    std::uint32_t effectiveUser = 0;

    friend bool operator==(const LaunchctlCall&, const LaunchctlCall&) = default;
};

/// launchd behind the launchctl of a fake Mac: the jobs of the system and of the users' sessions. It answers
/// "print DOMAIN/LABEL" and "bootout DOMAIN PLIST" as the real tool does. The property list of a fake job is
/// a file whose contents are the job's label.
class FakeLaunchd {
  public:
    /// Domain ("system", "gui/501") and label.
    using Job = std::pair<std::string, std::string>;

    /// Takes over the launchctl of `mac`; must not outlive it.
    explicit FakeLaunchd(FakeMac& mac);
    FakeLaunchd(const FakeLaunchd&) = delete;
    FakeLaunchd& operator=(const FakeLaunchd&) = delete;

    /// Carries out one call for a caller with these ids.
    [[nodiscard]] FakeTaskRunner::Result run(const std::vector<std::string>& arguments,
                                             std::uint32_t realUser, std::uint32_t effectiveUser);

    /// The users who are logged in.
    std::set<std::uint32_t> sessions;
    /// The jobs, each with what "print" says of it.
    std::map<Job, std::string> jobs;
    /// Jobs that cannot be booted out.
    std::set<Job> stuck;
    /// Every call, in order.
    std::vector<LaunchctlCall> calls;

  private:
    [[nodiscard]] FakeTaskRunner::Result print(const std::string& target) const;
    [[nodiscard]] FakeTaskRunner::Result bootout(const std::string& domain, const std::string& propertyList,
                                                 std::uint32_t caller);
    [[nodiscard]] std::string labelIn(const std::string& propertyList) const;

    FakeMac& mac_;
};

}  // namespace TestSupport
