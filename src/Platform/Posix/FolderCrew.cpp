#include "Platform/Posix/FolderCrew.h"

#include <algorithm>
#include <system_error>

namespace Platform::Posix {

void FolderCrew::run(std::unique_ptr<Errand> first) {
    errands_.push_back(first.get());
    work(std::move(first));
    std::for_each(threads_.begin(), threads_.end(), [](std::thread& each) { each.join(); });
}

void FolderCrew::start() {
    if (started_ || mostErrands_ < 2) {
        return;
    }
    started_ = true;
    try {
        while (threads_.size() + 1 < shape_.threads) {
            threads_.emplace_back([this] { work(nullptr); });
        }
    } catch (const std::system_error&) {
        // The threads that could be started do the work, or this one alone.
    }
}

void FolderCrew::work(std::unique_ptr<Errand> errand) {
    while (errand || (errand = nextErrand())) {
        errand = advance(std::move(errand));
    }
}

/// Carries an errand on; returns the one to continue with, if that is clear.
std::unique_ptr<Errand> FolderCrew::advance(std::unique_ptr<Errand> errand) {
    Meeting* const awaited = errand->carryOn(*this);
    std::unique_ptr<Errand> next;
    const std::lock_guard lock(mutex_);
    if (awaited != nullptr) {
        (awaited->isOver() ? next : awaited->waiting_) = std::move(errand);
        return next;
    }
    errands_.erase(std::find(errands_.begin(), errands_.end(), errand.get()));
    Meeting* const meeting = errand->meeting().get();
    if (meeting != nullptr && --meeting->expected_ == 0) {
        next = std::move(meeting->waiting_);
    }
    countWanted();
    if (errands_.empty()) {
        changed_.notify_all();
    }
    return next;
}

/// Waits for an errand that nobody carries on; null if there are no more.
std::unique_ptr<Errand> FolderCrew::nextErrand() {
    std::unique_lock lock(mutex_);
    ++idle_;
    countWanted();
    changed_.wait(lock, [this] { return !ready_.empty() || errands_.empty(); });
    --idle_;
    std::unique_ptr<Errand> next;
    if (!ready_.empty()) {
        next = std::move(ready_.back());
        ready_.pop_back();
    }
    countWanted();
    return next;
}

/// With the lock held.
void FolderCrew::countWanted() {
    const auto idle = static_cast<int>(idle_) - static_cast<int>(ready_.size() + promised_);
    const auto room = static_cast<int>(mostErrands_) - static_cast<int>(errands_.size() + promised_);
    wanted_.store(std::min(idle, room), std::memory_order_relaxed);
}

bool FolderCrew::promise() {
    const std::lock_guard lock(mutex_);
    if (wanted_ <= 0) {
        return false;
    }
    ++promised_;
    countWanted();
    return true;
}

void FolderCrew::takeBack() {
    const std::lock_guard lock(mutex_);
    --promised_;
    countWanted();
}

void FolderCrew::give(const Errand& giver, std::unique_ptr<Errand> part) {
    const std::lock_guard lock(mutex_);
    --promised_;
    ++part->meeting()->expected_;
    part->abandoned_ = giver.isAbandoned();
    errands_.insert(std::find(errands_.begin(), errands_.end(), &giver) + 1, part.get());
    ready_.push_back(std::move(part));
    countWanted();
    changed_.notify_one();
}

void FolderCrew::abandonBehind(const Errand& errand) {
    const std::lock_guard lock(mutex_);
    const auto place = std::find(errands_.begin(), errands_.end(), &errand);
    std::for_each(place + 1, errands_.end(), [](Errand* each) { each->abandoned_ = true; });
}

}  // namespace Platform::Posix
