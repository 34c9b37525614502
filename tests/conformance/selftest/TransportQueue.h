#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string_view>

#import <Foundation/Foundation.h>

namespace Transport {

/// True if SELFTEST_FAULT in the environment names this fault; see Transport.mm.
[[nodiscard]] bool isFaulty(std::string_view fault);

/// Runs blocks one after another on a thread of its own, for the life of the process.
class Queue {
  public:
    Queue();
    void async(std::function<void()> block);

  private:
    [[noreturn]] void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> blocks_;
};

/// A reply that a synchronous call waits for. Only the first thing that happens counts.
struct Wait {
    std::mutex mutex;
    std::condition_variable changed;
    bool isOver = false;
    bool isReply = false;
    NSError* error = nil;

    void end(bool reply, NSError* withError);
};

}  // namespace Transport
