#pragma once

#include <pthread.h>

#include <cstdint>

namespace Platform::Linux {

/// A mutex with a condition whose wait has a deadline on CLOCK_MONOTONIC, Clock's scale. (The standard
/// library waits on that clock with a call that thread checkers do not know.)
class MonotonicCondition {
  public:
    MonotonicCondition();
    MonotonicCondition(const MonotonicCondition&) = delete;
    MonotonicCondition& operator=(const MonotonicCondition&) = delete;
    ~MonotonicCondition();

    /// Holds the mutex while it lives.
    class Lock {
      public:
        explicit Lock(MonotonicCondition& condition);
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        ~Lock();

        void lock();
        void unlock();

        void wait();
        /// Waits for a notification until `deadline` (nanoseconds). False if the deadline has passed.
        bool waitUntil(std::uint64_t deadline);

      private:
        MonotonicCondition& condition_;
        bool held_ = false;
    };

    void notifyOne();
    void notifyAll();

  private:
    pthread_mutex_t mutex_;
    pthread_cond_t condition_;
};

}  // namespace Platform::Linux
