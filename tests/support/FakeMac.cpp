#include "support/FakeMac.h"

#include <algorithm>
#include <iterator>

#include "Platform/ProcessOnce.h"

namespace TestSupport {

ScopedSystemPorts::ScopedSystemPorts(const Platform::SystemPorts& ports) {
    Platform::SystemPorts::setCurrent(&ports);
    Platform::OnceGuard::resetAll();
}

ScopedSystemPorts::~ScopedSystemPorts() {
    Platform::OnceGuard::resetAll();
    Platform::SystemPorts::setCurrent(nullptr);
}

FakeMac::FakeMac() : ports_(Platform::portsOf(*this)), scope_(ports_) {}

CallList FakeMac::callsOf(const std::string& operation, const std::string& start) const {
    CallList found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found), [&](const Call& call) {
        return call.operation == operation &&
               (start.empty() || (!call.operands.empty() && call.operands.front().starts_with(start)));
    });
    return found;
}

}  // namespace TestSupport
