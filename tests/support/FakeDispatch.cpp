#include "support/FakeDispatch.h"

#include <utility>

namespace TestSupport {

namespace {

class FakeSemaphore final : public Platform::Semaphore {
  public:
    FakeSemaphore(std::int64_t value, FakeDispatch& owner, CallList& calls)
        : value_(value), owner_(owner), calls_(calls) {}

    void signal() override {
        if (owner_.onSignal) {
            owner_.onSignal();
        }
        ++value_;
    }
    [[nodiscard]] bool wait(std::uint64_t deadline) override {
        calls_.push_back({"wait until", deadline});
        if (owner_.onWait) {
            owner_.onWait();
        }
        if (value_ <= 0) {
            return false;
        }
        --value_;
        return true;
    }

  private:
    std::int64_t value_;
    FakeDispatch& owner_;
    CallList& calls_;
};

class FakeQueue final : public Platform::Queue {
  public:
    FakeQueue(FakeDispatch& owner, CallList& calls) : owner_(owner), calls_(calls) {}

    void async(std::function<void()> block) override {
        calls_.push_back({"async"});
        if (owner_.keepsBlocks) {
            owner_.kept.push_back(std::move(block));
        } else {
            block();
        }
    }
    void sync(const std::function<void()>& block) override {
        calls_.push_back({"sync"});
        block();
    }

  private:
    FakeDispatch& owner_;
    CallList& calls_;
};

class FakeTimer final : public Platform::Timer {
  public:
    explicit FakeTimer(CallList& calls) : calls_(calls) {}

    void schedule(std::uint64_t start, std::uint64_t interval, std::uint64_t leeway) override {
        calls_.push_back({"timer", start, interval, leeway});
    }
    void resume() override { calls_.push_back({"timer resume"}); }
    void cancel() override { calls_.push_back({"timer cancel"}); }

  private:
    CallList& calls_;
};

}  // namespace

void FakeDispatch::runKept() {
    while (!kept.empty()) {
        const std::function<void()> block = std::move(kept.front());
        kept.pop_front();
        block();
    }
}

std::unique_ptr<Platform::Semaphore> FakeDispatch::makeSemaphore(std::int64_t value) {
    calls_.push_back({"semaphore", value});
    return std::make_unique<FakeSemaphore>(value, *this, calls_);
}

std::unique_ptr<Platform::Queue> FakeDispatch::makeConcurrentQueue(const std::string& label) {
    calls_.push_back({"concurrent queue", label});
    return std::make_unique<FakeQueue>(*this, calls_);
}

std::unique_ptr<Platform::Queue> FakeDispatch::makeSerialQueue(const std::string& label) {
    calls_.push_back({"serial queue", label});
    return std::make_unique<FakeQueue>(*this, calls_);
}

std::unique_ptr<Platform::Timer> FakeDispatch::makeTimer(std::function<void()> handler) {
    timerHandlers.push_back(std::move(handler));
    return std::make_unique<FakeTimer>(calls_);
}

}  // namespace TestSupport
