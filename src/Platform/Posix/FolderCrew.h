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

/// How many threads work on one tree, the calling one included, and how many entries have to be met before
/// the others are started. A test program brings a definition of its own, which the linker takes before the
/// library's.
struct CrewShape {
    unsigned threads;
    std::size_t smallTree;
};
[[nodiscard]] CrewShape crewShape();

/// Where the errands that were made of one folder end, and where the errand waits that the folder belongs to.
class Meeting {
  public:
    /// Whether all of them have ended.
    [[nodiscard]] bool isOver() const { return expected_.load(std::memory_order_acquire) == 0; }
    /// What the errands say of the folder; to be asked when the meeting is over.
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
    /// `meeting` is where it ends; null for the first one of all.
    explicit Errand(std::shared_ptr<Meeting> meeting) : meeting_(std::move(meeting)) {}
    Errand(const Errand&) = delete;
    Errand& operator=(const Errand&) = delete;
    virtual ~Errand() = default;

    /// Works until nothing is left to do and returns null, or until a meeting has to be over first, and
    /// returns that one; is then called again.
    [[nodiscard]] virtual Meeting* carryOn(FolderCrew& crew) = 0;

    [[nodiscard]] const std::shared_ptr<Meeting>& meeting() const { return meeting_; }
    /// Whether nothing more is to be done, because something failed that comes before it in the tree.
    [[nodiscard]] bool isAbandoned() const { return abandoned_.load(std::memory_order_relaxed); }

  private:
    friend FolderCrew;

    const std::shared_ptr<Meeting> meeting_;
    std::atomic<bool> abandoned_ = false;
};

/// A few threads that work on one tree together. Each carries on an errand of its own; one that is idle shows
/// that it wants work, and whoever notices first gives a part of its own work away. Nothing is locked while
/// somebody works. An errand that has to wait for what it gave away is put aside, with all that it holds
/// open, and whoever ends the last of these carries it on; so no thread ever waits while there is something
/// to do, and no errand for one that waits for it.
class FolderCrew {
  public:
    /// `mostErrands` bounds how many there are at a time, and with them memory and descriptors.
    explicit FolderCrew(std::size_t mostErrands) : mostErrands_(mostErrands), shape_(crewShape()) {}

    /// Carries the errand and all that comes of it to their ends; this thread works too. No other thread is
    /// left when it returns: they have this one's effective user id.
    void run(std::unique_ptr<Errand> first);

    // For errands, while they are carried on.

    /// To be called now and then with the number of entries met: starts the threads if the tree is no small
    /// one.
    void met(std::size_t entries) {
        if (entries >= shape_.smallTree) {
            start();
        }
    }
    [[nodiscard]] bool wantsWork() const { return wanted_.load(std::memory_order_relaxed) > 0; }
    /// Promises a part to somebody who is idle; false when nobody is, or when there are errands enough. To be
    /// followed by give(), or by takeBack() when it cannot be kept.
    [[nodiscard]] bool promise();
    void takeBack();
    /// Gives a part of `giver` away, which comes before everything that `giver` has given away already and
    /// behind what it keeps, up to its meeting.
    void give(const Errand& giver, std::unique_ptr<Errand> part);
    /// Has everything given up that comes behind this errand in the tree.
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
    /// All that have not ended, in the tree's order.
    std::vector<Errand*> errands_;
    /// Those that nobody carries on yet.
    std::vector<std::unique_ptr<Errand>> ready_;
    std::size_t idle_ = 0;
    std::size_t promised_ = 0;
};

}  // namespace Platform::Posix
