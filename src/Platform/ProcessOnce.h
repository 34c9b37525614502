#pragma once

#include <mutex>
#include <optional>
#include <utility>

namespace Platform {

/// Base of everything that a process makes once; keeps a list of them, so that a test can start like a new
/// process.
class OnceGuard {
  public:
    OnceGuard(const OnceGuard&) = delete;
    OnceGuard& operator=(const OnceGuard&) = delete;

    /// Discards what every guard of this process has made. For the test harness; no other thread may be using
    /// one.
    static void resetAll();

  protected:
    OnceGuard();
    ~OnceGuard() = default;
    virtual void reset() = 0;

  private:
    OnceGuard* next_;
};

/// A value that is made at the first use, once per process, safely against concurrent first uses
/// (dispatch_once). Instances are namespace-scope variables. The value is never destroyed: other threads may
/// still use it while the process ends.
template <class Value>
class ProcessOnce final : public OnceGuard {
  public:
    /// The value; `make` is called for the first use only.
    template <class Make>
    const Value& get(Make&& make) {
        std::call_once(state_->flag, [&] { state_->value.emplace(std::forward<Make>(make)()); });
        return *state_->value;
    }

  private:
    struct State {
        std::once_flag flag;
        std::optional<Value> value;
    };

    void reset() override {
        delete state_;
        state_ = new State;
    }

    State* state_ = new State;
};

}  // namespace Platform
