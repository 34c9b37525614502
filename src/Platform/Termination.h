#pragma once

#include <functional>

namespace Platform {

/// launchd's request to end, made of a process whose job is removed (SIGTERM); anybody may make it.
class Termination {
  public:
    virtual ~Termination() = default;

    /// From now on the request does not end the process: `requested` is called for it, on a thread of the
    /// port's own. Requests that arrive while one is being answered may be merged into one. Call this once;
    /// `requested` and what it uses live as long as the process. Child processes get the request as ever.
    virtual void onRequest(std::function<void()> requested) = 0;
};

}  // namespace Platform
