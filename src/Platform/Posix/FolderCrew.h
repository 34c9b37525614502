#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Platform::Posix {

class FolderCrew;
class Errand;

/// How many threads work on one tree, the calling one included, and after how many entries the others
/// are started. A test program brings its own definition, which the linker takes before the
/// library's.
struct CrewShape {
    unsigned threads;
    std::size_t smallTree;
};
[[nodiscard]] CrewShape crewShape();

/// The point where all errands made from one folder end, and where the errand that owns the folder waits.
class Meeting {
  public:
    /// Whether all of them have ended.
    [[nodiscard]] bool isOver() const { return expected_.load(std::memory_order_acquire) == 0; }
    /// Whether any errand reported a failure in the folder; asked once the meeting is over.
    [[nodiscard]] bool hasFailure() const { return failure_; }
    void noteFailure() { failure_ = true; }

  private:
    friend FolderCrew;

    std::atomic<int> expected_ = 0;
    std::atomic<bool> failure_ = false;
    std::unique_ptr<Errand> waiting_;
};

/// A part of the work on one tree, which any thread of a crew can carry on, one at a time.
class Errand {
  public:
    /// `meeting` is the one that it ends at; null for the very first errand.
    explicit Errand(std::shared_ptr<Meeting> meeting) : meeting_(std::move(meeting)) {}
    Errand(const Errand&) = delete;
    Errand& operator=(const Errand&) = delete;
    virtual ~Errand() = default;

    /// Works until nothing is left to do and returns null, or until a meeting has to be over first, and
    /// returns that one; it is called again afterwards.
    [[nodiscard]] virtual Meeting* carryOn(FolderCrew& crew) = 0;

    [[nodiscard]] const std::shared_ptr<Meeting>& meeting() const { return meeting_; }
    /// Whether to stop, because something that comes before it in the tree failed.
    [[nodiscard]] bool isAbandoned() const { return abandoned_.load(std::memory_order_relaxed); }

  private:
    friend FolderCrew;

    const std::shared_ptr<Meeting> meeting_;
    std::atomic<bool> abandoned_ = false;
};

/// A few threads that work on one tree together. Each carries on an errand of its own; an idle one signals
/// that it wants work, and the first to notice gives away a part of its own work. No lock is held while a
/// thread works. An errand that has to wait for the part it gave away is put aside, with all that it holds
/// open, and whoever ends the last such part carries it on; so no thread ever waits while there is something
/// to do, and no errand waits for one that waits for it.
class FolderCrew {
  public:
    /// `mostErrands` limits the errands that exist at a time, and with them memory and descriptors.
    explicit FolderCrew(std::size_t mostErrands) : mostErrands_(mostErrands), shape_(crewShape()) {}

    /// Carries the errand, and all errands that come of it, to their ends; this thread works too. No other
    /// thread is left when it returns: they have this one's effective user id.
    void run(std::unique_ptr<Errand> first);

    // For errands, while they are carried on.

    /// Called now and then with the number of entries met: starts the threads if the tree is not
    /// small.
    void met(std::size_t entries) {
        if (entries >= shape_.smallTree) {
            start();
        }
    }
    [[nodiscard]] bool wantsWork() const { return wanted_.load(std::memory_order_relaxed) > 0; }
    /// Promises a part to an idle thread; false if none is idle, or if there are enough errands. Followed by
    /// give(), or by takeBack() if the promise cannot be kept.
    [[nodiscard]] bool promise();
    void takeBack();
    /// Gives away a part of `giver`. The part comes before everything that `giver` has given away already and
    /// after everything that it keeps, up to its meeting.
    void give(const Errand& giver, std::unique_ptr<Errand> part);
    /// Abandons everything that comes after this errand in the tree.
    void abandonBehind(const Errand& errand);

  private:
    void start();
    void work(std::unique_ptr<Errand> errand);
    [[nodiscard]] std::unique_ptr<Errand> advance(std::unique_ptr<Errand> errand);
    [[nodiscard]] std::unique_ptr<Errand> nextErrand();
    void countWanted();

    const std::size_t mostErrands_;
    const CrewShape shape_;
    bool started_ = false;
    std::vector<std::thread> threads_;
    std::atomic<int> wanted_ = 0;

    std::mutex mutex_;
    std::condition_variable changed_;
    /// All errands that have not ended, in the tree's order.
    std::vector<Errand*> errands_;
    /// The errands that nobody carries on yet.
    std::vector<std::unique_ptr<Errand>> ready_;
    std::size_t idle_ = 0;
    std::size_t promised_ = 0;
};

}  // namespace Platform::Posix
