#pragma once

#include <functional>
#include <string>

#include "launchd/Authorizations.h"
#include "launchd/JobRegistry.h"

namespace Simulator {

/// Codes of CFErrorDomainLaunchd.
inline constexpr int kSMErrorInternalFailure = 2;
inline constexpr int kSMErrorInvalidSignature = 3;
inline constexpr int kSMErrorAuthorizationFailure = 4;
inline constexpr int kSMErrorToolNotValid = 5;
inline constexpr int kSMErrorJobNotFound = 6;
inline constexpr int kSMErrorJobPlistNotFound = 8;

/// Installs privileged helper tools on behalf of applications (SMJobBless).
///
/// The application is the caller's own bundle. Its Info.plist must name the helper under
/// SMPrivilegedExecutables, and the helper's embedded Info.plist must name the application under
/// SMAuthorizedClients.
class Blessing {
  public:
    /// Gets 0 or the code, and words for people.
    using Done = std::function<void(int code, const std::string& text)>;

    Blessing(JobRegistry& jobs, SystemLogFile& log, const Authorizations& authorizations,
             const Faults& faults);

    /// Calls `done` when the helper's job is registered, or at once with the reason why it is not.
    void bless(const Caller& caller, const std::string& token, const std::string& label, const Done& done);

  private:
    struct Helper;

    [[nodiscard]] int check(const Caller& caller, const std::string& label, Helper& helper,
                            std::string& why) const;
    void install(const std::string& label, const Helper& helper, const Done& done);
    void refuse(const std::string& label, int code, const std::string& why, const Done& done);

    JobRegistry& jobs_;
    SystemLogFile& log_;
    const Authorizations& authorizations_;
    const Faults& faults_;
};

}  // namespace Simulator
