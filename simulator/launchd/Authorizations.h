#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Support/Faults.h"
#include "launchd/AdministratorDialog.h"
#include "launchd/Caller.h"

namespace Simulator {

/// A process's request to the security server.
struct AuthorizationRequest {
    /// The Security framework's; 1 allows interaction.
    std::uint32_t flags = 0;
    std::vector<std::string> rights;
    /// The caller's own words in the administrator dialog.
    std::string prompt;
};

/// The security server: which process holds which authorization.
class Authorizations {
  public:
    /// Identifies a request while it is being decided.
    using RequestId = std::uint64_t;
    /// Receives 0 and the token of the session, or the OSStatus of the refusal.
    using Done = std::function<void(std::int32_t status, const std::string& token)>;

    Authorizations(const Faults& faults, AdministratorDialog& dialog) : faults_(faults), dialog_(dialog) {}

    /// Decides on a request for rights and calls `done`, at once or when an administrator has answered. Root
    /// gets everything it requests. For anybody else the administrator dialog opens, if the request allows
    /// that; dialogs open one after another. `id` can ask one question at a time.
    void authorize(RequestId id, const Caller& caller, const AuthorizationRequest& request, const Done& done);
    /// Nobody waits for the request any more: its dialog closes, its `done` is not called.
    void abandon(RequestId id);

    /// Whether `token` was given to exactly this process.
    [[nodiscard]] bool isValid(const std::string& token, const Caller& caller) const;
    /// Only the owner can release a token.
    void release(const std::string& token, const Caller& caller);

  private:
    struct Owner {
        pid_t pid;
        std::uint64_t start;
    };
    struct Question {
        RequestId id;
        Caller caller;
        std::string prompt;
        Done done;
    };

    void grant(const Caller& caller, const Done& done);
    void askNext();
    void forgetDead();

    const Faults& faults_;
    AdministratorDialog& dialog_;
    std::map<std::string, Owner, std::less<>> tokens_;
    /// The dialog of the first one is open.
    std::deque<Question> questions_;
};

}  // namespace Simulator
