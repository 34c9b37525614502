#pragma once

#include <functional>
#include <memory>
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
///
/// As on a Mac, an installed helper is replaced only by one of a higher CFBundleVersion: one of the same
/// or a higher version stays as it is, its job undisturbed, running or not, and the blessing succeeds. It
/// is replaced whatever its version if it is incomplete: its tool, property list or job is missing or
/// damaged. No signature reveals a damaged tool here: a tool counts as damaged if it carries no property
/// lists, if somebody other than root may write to it, or if it differs from an offered one of the same
/// version.
class Blessing {
  public:
    /// Receives 0 or the code, and words for people.
    using Done = std::function<void(int code, const std::string& text)>;

    Blessing(JobRegistry& jobs, SystemLogFile& log, const Authorizations& authorizations,
             const Faults& faults);

    /// Calls `done` when the helper's job is registered, or with the reason why it is not. While a job of
    /// that label is being removed, the blessing waits for that and then begins.
    void bless(const Caller& caller, const std::string& token, const std::string& label, const Done& done);

  private:
    struct Helper;

    [[nodiscard]] int check(const Caller& caller, const std::string& label, Helper& helper,
                            std::string& why) const;
    void settle(const std::string& label, const std::shared_ptr<const Helper>& helper, const Done& done);
    [[nodiscard]] bool isInstalled(const std::string& label, const Helper& helper) const;
    void install(const std::string& label, const Helper& helper, const Done& done);
    void refuse(const std::string& label, int code, const std::string& why, const Done& done);

    JobRegistry& jobs_;
    SystemLogFile& log_;
    const Authorizations& authorizations_;
    const Faults& faults_;
};

}  // namespace Simulator
