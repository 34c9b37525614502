#include "Platform/Darwin/XPC/ListenerDoor.h"

namespace Platform::Darwin {

bool ListenerDoor::knock(void* connection) {
    Visitor visitor{connection};
    std::unique_lock lock(mutex_);
    if (!isOpen_) {
        return false;
    }
    visitors_.push_back(&visitor);
    changed_.notify_all();
    changed_.wait(lock, [&visitor] { return visitor.isDecided; });
    return visitor.isAdmitted;
}

bool ListenerDoor::isIdle() const {
    return transactions_ == 0 && (connections_ == 0 || disregardsPeers_);
}

ListenerDoor::Visitor* ListenerDoor::next(std::chrono::milliseconds idleTime) {
    std::unique_lock lock(mutex_);
    while (visitors_.empty()) {
        if (!isIdle()) {
            changed_.wait(lock);
        } else if (isStopping_ && connections_ == 0) {
            return nullptr;
        } else if (changed_.wait_for(lock, idleTime) == std::cv_status::timeout && visitors_.empty() &&
                   isIdle()) {
            return nullptr;
        }
    }
    Visitor* const visitor = visitors_.front();
    visitors_.pop_front();
    return visitor;
}

void ListenerDoor::open() {
    const std::lock_guard lock(mutex_);
    isOpen_ = true;
}

void ListenerDoor::serve(const Admit& admit, std::chrono::milliseconds idleTime) {
    open();
    while (Visitor* const visitor = next(idleTime)) {
        // Without the lock: it takes its time, and calls `begin` for a connection that it admits.
        const bool isAdmitted = admit(visitor->connection);
        const std::lock_guard lock(mutex_);
        visitor->isAdmitted = isAdmitted;
        visitor->isDecided = true;
        changed_.notify_all();
    }
}

bool ListenerDoor::shut() {
    const std::lock_guard lock(mutex_);
    isOpen_ = !visitors_.empty() || !isIdle();
    return !isOpen_;
}

void ListenerDoor::begin(Work work) {
    const std::lock_guard lock(mutex_);
    ++(work == Work::transaction ? transactions_ : connections_);
    changed_.notify_all();
}

void ListenerDoor::end(Work work) {
    const std::lock_guard lock(mutex_);
    --(work == Work::transaction ? transactions_ : connections_);
    changed_.notify_all();
}

void ListenerDoor::disregardPeers() {
    const std::lock_guard lock(mutex_);
    disregardsPeers_ = true;
    changed_.notify_all();
}

void ListenerDoor::stop() {
    const std::lock_guard lock(mutex_);
    disregardsPeers_ = true;
    isStopping_ = true;
    changed_.notify_all();
}

}  // namespace Platform::Darwin
