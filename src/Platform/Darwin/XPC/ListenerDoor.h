#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
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
    /// with the door still open, when for `idleTime` none has come and nothing that counts has been under
    /// way.
    void serve(const Admit& admit, std::chrono::milliseconds idleTime);

    /// Shuts the door, unless somebody has come or something has begun since `serve` returned: false then.
    [[nodiscard]] bool shut();

    /// Something that must not be interrupted begins and ends.
    enum class Work : std::uint8_t { connection, transaction };
    void begin(Work work);
    void end(Work work);

    /// From now on connections in use do not count: XPCListener::disregardPeers.
    void disregardPeers();
    /// The same, and `serve` returns at once when nothing is under way: XPCListener::stop.
    void stop();

  private:
    struct Visitor {
        void* connection;
        bool isDecided = false;
        bool isAdmitted = false;
    };

    [[nodiscard]] Visitor* next(std::chrono::milliseconds idleTime);
    [[nodiscard]] bool isIdle() const;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Visitor*> visitors_;
    int connections_ = 0;
    int transactions_ = 0;
    bool isOpen_ = false;
    bool disregardsPeers_ = false;
    bool isStopping_ = false;
};

}  // namespace Platform::Darwin
