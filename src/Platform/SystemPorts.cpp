#include "Platform/SystemPorts.h"

#include "Base/FatalError.h"
#include "Platform/ProcessOnce.h"

namespace Platform {

namespace {

const SystemPorts* currentPorts = nullptr;

// Constant-initialised, so that guards may register themselves during static initialisation.
OnceGuard* firstGuard = nullptr;

void logLastWords(std::string_view line) {
    currentPorts->log->log(line);
}

}  // namespace

const SystemPorts& SystemPorts::current() {
    if (currentPorts == nullptr) {
        Base::fatalError("The system's services were used before main set them.");
    }
    return *currentPorts;
}

void SystemPorts::setCurrent(const SystemPorts* ports) {
    currentPorts = ports;
    Base::setLastWords(ports != nullptr && ports->log ? &logLastWords : nullptr);
}

OnceGuard::OnceGuard() : next_(std::exchange(firstGuard, this)) {}

void OnceGuard::resetAll() {
    for (OnceGuard* guard = firstGuard; guard != nullptr; guard = guard->next_) {
        guard->reset();
    }
}

}  // namespace Platform
