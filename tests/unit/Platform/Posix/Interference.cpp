#include "Interference.h"

#include <atomic>
#include <utility>

namespace PlatformTests {

namespace {

std::atomic<Interference*> current = nullptr;
/// The action may itself be file work.
thread_local bool acting = false;

}  // namespace

Interference::Interference(Platform::Posix::Moment moment, std::string name,
                           std::function<void(int folder)> act)
    : moment_(moment), name_(std::move(name)), act_(std::move(act)) {
    current = this;
}

Interference::~Interference() {
    current = nullptr;
}

Interference& Interference::always() {
    once_ = false;
    return *this;
}

void meet(Platform::Posix::Moment moment, int folder, const char* name) {
    Interference* const found = acting ? nullptr : current.load();
    if (found == nullptr || found->moment_ != moment || found->name_ != name) {
        return;
    }
    const std::lock_guard lock(found->mutex_);
    if (found->once_ && found->count_ > 0) {
        return;
    }
    ++found->count_;
    acting = true;
    found->act_(folder);
    acting = false;
}

}  // namespace PlatformTests

namespace Platform::Posix {

void atMoment(Moment moment, int folder, const char* name) {
    PlatformTests::meet(moment, folder, name);
}

}  // namespace Platform::Posix
