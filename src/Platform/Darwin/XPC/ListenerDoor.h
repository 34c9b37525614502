#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace Platform::Darwin {

/// Where a listener's queue hands new connections to the thread that serves, and waits for its decision; and
/// where that thread waits for the next connection or for the end of all work. Shut at first. Every operation
/// may be called on any thread, `serve` on one.
class ListenerDoor {
  public:
    /// Decides on a connection, which is only passed through here.
    using Admit = std::function<bool(void* connection)>;

    /// Waits until the thread that serves has decided on `connection`, and returns what it decided; false at
    /// once when the door is shut.
    [[nodiscard]] bool knock(void* connection);

    /// From now on who knocks waits to be served. To be called before the listener is resumed: the connection
    /// for which the process was started comes at once, perhaps before `serve`.
    void open();

    /// Opens the door and has `admit` decide on every connection, one at a time, on this thread. Returns,
    /// with the door still open, when for `idleTime` none has come and nothing has been under way.
    void serve(const Admit& admit, std::chrono::milliseconds idleTime);

    /// Shuts the door, unless somebody has come or something has begun since `serve` returned: false then.
    [[nodiscard]] bool shut();

    /// Something that must not be interrupted begins and ends: a connection in use, a transaction.
    void begin();
    void end();

  private:
    struct Visitor {
        void* connection;
        bool isDecided = false;
        bool isAdmitted = false;
    };

    [[nodiscard]] Visitor* next(std::chrono::milliseconds idleTime);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Visitor*> visitors_;
    int underWay_ = 0;
    bool isOpen_ = false;
};

}  // namespace Platform::Darwin
