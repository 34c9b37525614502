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

ListenerDoor::Visitor* ListenerDoor::next(std::chrono::milliseconds idleTime) {
    std::unique_lock lock(mutex_);
    while (visitors_.empty()) {
        if (underWay_ > 0) {
            changed_.wait(lock);
        } else if (changed_.wait_for(lock, idleTime) == std::cv_status::timeout && visitors_.empty() &&
                   underWay_ == 0) {
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
    isOpen_ = !visitors_.empty() || underWay_ > 0;
    return !isOpen_;
}

void ListenerDoor::begin() {
    const std::lock_guard lock(mutex_);
    ++underWay_;
    changed_.notify_all();
}

void ListenerDoor::end() {
    const std::lock_guard lock(mutex_);
    --underWay_;
    changed_.notify_all();
}

}  // namespace Platform::Darwin
