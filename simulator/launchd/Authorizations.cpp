#include "launchd/Authorizations.h"

#include <algorithm>
#include <array>
#include <utility>

#include <sys/random.h>

namespace Simulator {

namespace {

constexpr std::uint32_t kInteractionAllowed = 1;

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

void Authorizations::grant(const Caller& caller, const Done& done) {
    const auto start = startOfProcess(caller.pid);
    if (!start) {
        done(kAuthorizationDenied, "");
        return;
    }
    forgetDead();
    const std::string token = randomToken();
    tokens_[token] = {caller.pid, *start};
    done(0, token);
}

void Authorizations::authorize(RequestId id, const Caller& caller, const AuthorizationRequest& request,
                               const Done& done) {
    if (faults_.contains("authorization") || request.rights.empty()) {
        done(kAuthorizationDenied, "");
    } else if (caller.uid == 0) {
        grant(caller, done);
    } else if ((request.flags & kInteractionAllowed) == 0 || !dialog_.canAsk(caller)) {
        done(kAuthorizationInteractionNotAllowed, "");
    } else {
        const bool asksAlready = std::any_of(questions_.begin(), questions_.end(),
                                             [id](const Question& question) { return question.id == id; });
        if (asksAlready) {
            done(kAuthorizationDenied, "");
            return;
        }
        questions_.push_back({id, caller, request.prompt, done});
        askNext();
    }
}

void Authorizations::askNext() {
    if (dialog_.isOpen() || questions_.empty()) {
        return;
    }
    const Question& first = questions_.front();
    dialog_.open(first.caller, first.prompt, [this](std::int32_t status) {
        const Question question = std::move(questions_.front());
        questions_.pop_front();
        if (status == 0) {
            grant(question.caller, question.done);
        } else {
            question.done(status, "");
        }
        askNext();
    });
}

void Authorizations::abandon(RequestId id) {
    const auto found = std::find_if(questions_.begin(), questions_.end(),
                                    [id](const Question& question) { return question.id == id; });
    if (found == questions_.end()) {
        return;
    }
    if (found == questions_.begin()) {
        dialog_.close();
    }
    questions_.erase(found);
    askNext();
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
