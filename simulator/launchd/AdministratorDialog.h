#pragma once

#include <functional>
#include <optional>
#include <string>

#include <sys/types.h>

#include "Support/Files.h"
#include "Support/Machine.h"
#include "launchd/Caller.h"
#include "launchd/EventLoop.h"
#include "launchd/SystemLogFile.h"

namespace Simulator {

inline constexpr std::int32_t kAuthorizationDenied = -60005;
inline constexpr std::int32_t kAuthorizationCanceled = -60006;
inline constexpr std::int32_t kAuthorizationInteractionNotAllowed = -60007;

/// Asks the person in front of the Mac for an administrator's name and password. One dialog at a time; it is
/// SecurityAgent's, a process of the session's user, and never holds up the event loop.
///
/// Packets between the two, on descriptor 3 of SecurityAgent, fields joined by NUL bytes:
///
///   launchd:        APPLICATION PROMPT NAME    what to show; NAME is to be filled in
///   SecurityAgent:  "shown"                    the dialog is open
///                   "answer" NAME PASSWORD     OK was pressed
///                   "cancel"
///   launchd:        "wrong"                    to an answer: once more, please. To a good one it is the end
class AdministratorDialog {
  public:
    /// Receives 0 or the OSStatus of the refusal.
    using Done = std::function<void(std::int32_t status)>;

    AdministratorDialog(EventLoop& loop, SystemLogFile& log, const Machine& machine, const Session& session);
    AdministratorDialog(const AdministratorDialog&) = delete;
    AdministratorDialog& operator=(const AdministratorDialog&) = delete;
    ~AdministratorDialog() { close(); }

    /// Whether a process may ask the person: it belongs to the session's user, and the session has a
    /// display.
    [[nodiscard]] bool canAsk(const Caller& caller) const;
    /// Opens the dialog on behalf of a process; `prompt` is its own addition to the text. `done` is called
    /// from the event loop, once the dialog has gone.
    void open(const Caller& caller, const std::string& prompt, Done done);
    /// Closes the dialog; its `done` is never called.
    void close();
    [[nodiscard]] bool isOpen() const { return done_ != nullptr; }

  private:
    [[nodiscard]] std::optional<pid_t> startAgent(int socket) const;
    void receive();
    void answered(const std::string& name, const std::string& password);
    void finish(std::int32_t status);

    EventLoop& loop_;
    SystemLogFile& log_;
    const Machine& machine_;
    const Session& session_;
    Descriptor socket_;
    std::optional<pid_t> agent_;
    Done done_;
    std::optional<EventLoop::Timer> failure_;
    bool isShown_ = false;
    int wrongAnswers_ = 0;
};

}  // namespace Simulator
