#include <dispatch/dispatch.h>
#include <time.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "Base/FatalError.h"

namespace {

constexpr std::uint64_t kLongest = INT64_MAX;

std::uint64_t present() {
    return ::clock_gettime_nsec_np(CLOCK_UPTIME_RAW);
}

void require(bool condition, const char* otherwise) {
    if (!condition) {
        Base::fatalError(otherwise);
    }
}

using Lock = std::unique_lock<std::mutex>;

/// Waits until `condition` holds or the time has come; returns whether it holds.
template <class Condition>
bool waitUntil(std::condition_variable& changed, Lock& lock, dispatch_time_t time, Condition condition) {
    if (time > kLongest) {
        changed.wait(lock, condition);
        return true;
    }
    const std::uint64_t now = present();
    const std::uint64_t left = time > now ? time - now : 0;
    return changed.wait_for(lock, std::chrono::nanoseconds(left), condition);
}

}  // namespace

struct dispatch_queue_attr_s {};
struct dispatch_source_type_s {};

struct dispatch_object_s {
    virtual ~dispatch_object_s() {
        if (finalizer != nullptr) {
            finalizer(context);
        }
    }
    virtual void resume() { Base::fatalError("Something was resumed that is never suspended."); }

    std::atomic<int> references = 1;
    void* context = nullptr;
    dispatch_function_t finalizer = nullptr;
};

struct dispatch_queue_s : dispatch_object_s {};

struct dispatch_semaphore_s : dispatch_object_s {
    explicit dispatch_semaphore_s(long number) : initial(number), value(number) {}
    ~dispatch_semaphore_s() override {
        require(value >= initial, "A semaphore was released that had less than it was made with.");
    }

    const long initial;
    long value;
    std::mutex mutex;
    std::condition_variable changed;
};

struct dispatch_source_s : dispatch_object_s {
    ~dispatch_source_s() override { require(!suspended, "A suspended source was released."); }

    void resume() override;
    void run();

    std::mutex mutex;
    std::condition_variable changed;
    bool suspended = true;
    bool cancelled = false;
    dispatch_time_t next = DISPATCH_TIME_FOREVER;
    std::uint64_t interval = kLongest;
    dispatch_function_t event = nullptr;
    dispatch_function_t cancel = nullptr;
};

void dispatch_source_s::resume() {
    {
        const Lock lock(mutex);
        require(suspended, "A source was resumed too often.");
        suspended = false;
    }
    dispatch_retain(this);
    std::thread([this] { run(); }).detach();
}

void dispatch_source_s::run() {
    Lock lock(mutex);
    while (!cancelled) {
        const dispatch_time_t due = next;
        if (waitUntil(changed, lock, due, [&] { return cancelled || next != due; })) {
            continue;
        }
        next = interval < kLongest - due ? due + interval : DISPATCH_TIME_FOREVER;
        lock.unlock();
        event(context);
        lock.lock();
    }
    lock.unlock();
    if (cancel != nullptr) {
        cancel(context);
    }
    dispatch_release(this);
}

dispatch_object_t::dispatch_object_t(dispatch_queue_s* queue) : object(queue) {}
dispatch_object_t::dispatch_object_t(dispatch_semaphore_s* semaphore) : object(semaphore) {}
dispatch_object_t::dispatch_object_t(dispatch_source_s* source) : object(source) {}

namespace {
const dispatch_queue_attr_s concurrentQueue{};
const dispatch_source_type_s timerSource{};
}  // namespace
const dispatch_queue_attr_t DISPATCH_QUEUE_CONCURRENT = &concurrentQueue;
const dispatch_source_type_t DISPATCH_SOURCE_TYPE_TIMER = &timerSource;

void dispatch_retain(dispatch_object_t object) {
    ++object.object->references;
}

void dispatch_release(dispatch_object_t object) {
    if (--object.object->references == 0) {
        delete object.object;
    }
}

void dispatch_resume(dispatch_object_t object) {
    object.object->resume();
}

void dispatch_set_context(dispatch_object_t object, void* context) {
    object.object->context = context;
}

void dispatch_set_finalizer_f(dispatch_object_t object, dispatch_function_t finalizer) {
    object.object->finalizer = finalizer;
}

dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t nanoseconds) {
    require(when == DISPATCH_TIME_NOW && nanoseconds >= 0,
            "Only what is to come is counted, and from now on.");
    return present() + static_cast<std::uint64_t>(nanoseconds);
}

dispatch_queue_t dispatch_get_global_queue(long identifier, unsigned long /*flags*/) {
    static dispatch_queue_s queue;
    require(identifier == DISPATCH_QUEUE_PRIORITY_DEFAULT, "There is one global queue.");
    return &queue;
}

dispatch_queue_t dispatch_queue_create_with_target(const char* /*label*/, dispatch_queue_attr_t attributes,
                                                   dispatch_queue_t target) {
    require(attributes == DISPATCH_QUEUE_CONCURRENT && target == dispatch_get_global_queue(0, 0),
            "Queues are concurrent and have the global one as their target.");
    return new dispatch_queue_s;
}

void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
    dispatch_retain(queue);
    std::thread([=] {
        work(context);
        dispatch_release(queue);
    }).detach();
}

void dispatch_sync_f(dispatch_queue_t /*queue*/, void* context, dispatch_function_t work) {
    work(context);
}

dispatch_semaphore_t dispatch_semaphore_create(long value) {
    return new dispatch_semaphore_s(value);
}

long dispatch_semaphore_wait(dispatch_semaphore_t semaphore, dispatch_time_t timeout) {
    Lock lock(semaphore->mutex);
    if (!waitUntil(semaphore->changed, lock, timeout, [&] { return semaphore->value > 0; })) {
        return 1;
    }
    --semaphore->value;
    return 0;
}

long dispatch_semaphore_signal(dispatch_semaphore_t semaphore) {
    const Lock lock(semaphore->mutex);
    ++semaphore->value;
    semaphore->changed.notify_one();
    return 0;
}

dispatch_source_t dispatch_source_create(dispatch_source_type_t type, unsigned long /*handle*/,
                                         unsigned long /*mask*/, dispatch_queue_t queue) {
    require(type == DISPATCH_SOURCE_TYPE_TIMER && queue == dispatch_get_global_queue(0, 0),
            "Sources are timers on the global queue.");
    return new dispatch_source_s;
}

void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, std::uint64_t interval,
                               std::uint64_t /*leeway*/) {
    const Lock lock(source->mutex);
    source->next = start == DISPATCH_TIME_NOW ? present() : start;
    source->interval = interval == 0 ? 1 : interval < kLongest ? interval : kLongest;
    source->changed.notify_all();
}

void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler) {
    source->event = handler;
}

void dispatch_source_set_cancel_handler_f(dispatch_source_t source, dispatch_function_t handler) {
    source->cancel = handler;
}

void dispatch_source_cancel(dispatch_source_t source) {
    const Lock lock(source->mutex);
    source->cancelled = true;
    source->changed.notify_all();
}

std::uint64_t clock_gettime_nsec_np(clockid_t clock) {
    require(clock == CLOCK_UPTIME_RAW, "There is one clock.");
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000U +
           static_cast<std::uint64_t>(time.tv_nsec);
}
