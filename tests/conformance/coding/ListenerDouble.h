#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/XPC.h"

/// One of the program's listeners over a double of the system's, which has one peer: it comes on a separate
/// thread as soon as the listener is resumed, and leaves when it has been let in.
class ListenerDouble {
  public:
    ListenerDouble();
    ListenerDouble(const ListenerDouble&) = delete;
    ListenerDouble& operator=(const ListenerDouble&) = delete;
    ~ListenerDouble();

    /// What the check of its identity says about the peer, process 7 of user 501.
    std::optional<std::string> refusal;

    [[nodiscard]] Platform::XPCListener& listener() { return *listener_; }

    /// What the system saw: the name of the service; how the peer's visit ended; whether its connection had
    /// been resumed; how often the listener was resumed and suspended.
    [[nodiscard]] std::string serviceName() const;
    [[nodiscard]] bool isPeerAdmitted() const;
    [[nodiscard]] int connectionsResumed() const;
    [[nodiscard]] int resumed() const;
    [[nodiscard]] int suspended() const;
    /// The system's transactions under way.
    [[nodiscard]] static int transactions();

  private:
    std::unique_ptr<Platform::XPCListener> listener_;
};
