#include "launchd/Authorizations.h"

#include <array>

#include <sys/random.h>

namespace Simulator {

namespace {

std::string randomToken() {
    std::array<unsigned char, 16> bytes{};
    static_cast<void>(::getrandom(bytes.data(), bytes.size(), 0));
    std::string token;
    for (const unsigned char byte : bytes) {
        constexpr char kDigits[] = "0123456789abcdef";
        token += kDigits[byte >> 4U];
        token += kDigits[byte & 15U];
    }
    return token;
}

}  // namespace

std::int32_t Authorizations::askUser(const Caller& /*caller*/, std::uint32_t /*flags*/) const {
    // A simulated Mac has nobody in front of it who could answer.
    return kAuthorizationInteractionNotAllowed;
}

std::int32_t Authorizations::authorize(const Caller& caller, std::uint32_t flags,
                                       std::span<const std::string> rights, std::string& token) {
    if (faults_.contains("authorization") || rights.empty()) {
        return kAuthorizationDenied;
    }
    if (caller.uid != 0) {
        if (const std::int32_t status = askUser(caller, flags); status != 0) {
            return status;
        }
    }
    const auto start = startOfProcess(caller.pid);
    if (!start) {
        return kAuthorizationDenied;
    }
    forgetDead();
    token = randomToken();
    tokens_[token] = {caller.pid, *start};
    return 0;
}

bool Authorizations::isValid(const std::string& token, const Caller& caller) const {
    const auto found = tokens_.find(token);
    return found != tokens_.end() && found->second.pid == caller.pid &&
           startOfProcess(caller.pid) == found->second.start;
}

void Authorizations::release(const std::string& token, const Caller& caller) {
    if (isValid(token, caller)) {
        tokens_.erase(token);
    }
}

void Authorizations::forgetDead() {
    std::erase_if(tokens_,
                  [](const auto& entry) { return startOfProcess(entry.second.pid) != entry.second.start; });
}

}  // namespace Simulator
