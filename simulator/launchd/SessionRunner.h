#pragma once

#include <functional>
#include <optional>

#include "launchd/EventLoop.h"
#include "launchd/JobRegistry.h"
#include "launchd/SystemLogFile.h"

namespace Simulator {

/// The person at the terminal: runs the session's one command and waits until the Mac has settled after it.
class SessionRunner {
  public:
    SessionRunner(EventLoop& loop, SystemLogFile& log, const JobRegistry& jobs, const Machine& machine,
                  const Session& session);

    /// Starts the initially running programs, then the command. `settled` receives the command's exit status
    /// (128 + n after signal n, 126 or 127 if it could not be started) once no on-demand job runs any more,
    /// or when the session's waiting time after the command is over; each job that is cut off then is a line
    /// on standard error.
    void start(std::function<void(int status)> settled);

    /// Called for every child that ended.
    void reaped(pid_t pid, int status);

  private:
    void startPrograms();
    void startCommand();
    void settleLater(int status, int polls);

    EventLoop& loop_;
    SystemLogFile& log_;
    const JobRegistry& jobs_;
    const Machine& machine_;
    const Session& session_;
    std::function<void(int)> settled_;
    std::optional<pid_t> command_;
};

}  // namespace Simulator
