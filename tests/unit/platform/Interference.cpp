#include "Interference.h"

#include <utility>

namespace PlatformTests {

namespace {

Interference* current = nullptr;

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
    Interference* const found = current;
    if (found == nullptr || found->moment_ != moment || found->name_ != name ||
        (found->once_ && found->count_ > 0)) {
        return;
    }
    ++found->count_;
    // What is done may itself be file work.
    current = nullptr;
    found->act_(folder);
    current = found;
}

}  // namespace PlatformTests

namespace Platform::Posix {

void atMoment(Moment moment, int folder, const char* name) {
    PlatformTests::meet(moment, folder, name);
}

}  // namespace Platform::Posix
