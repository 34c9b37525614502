#pragma once

#include <functional>
#include <mutex>
#include <string>

#include "Platform/Posix/Moments.h"

namespace PlatformTests {

/// Does something at the first moment of a kind that concerns an entry of this name of an open folder, once,
/// on the thread that works, one thread at a time; takes the place of the product's Moments.cpp.
class Interference {
  public:
    Interference(Platform::Posix::Moment moment, std::string name, std::function<void(int folder)> act);
    Interference(const Interference&) = delete;
    Interference& operator=(const Interference&) = delete;
    ~Interference();

    /// Does it every time instead.
    Interference& always();
    /// How often it was done.
    [[nodiscard]] int count() const { return count_; }

  private:
    friend void meet(Platform::Posix::Moment moment, int folder, const char* name);

    const Platform::Posix::Moment moment_;
    const std::string name_;
    const std::function<void(int folder)> act_;
    std::mutex mutex_;
    bool once_ = true;
    int count_ = 0;
};

}  // namespace PlatformTests
