#include "Check.h"

namespace Selftest {

Checks allChecks() {
    Checks all;
    for (const auto group : {runtimeChecks, connectionChecks, refusalChecks, peerChecks, authorizationChecks,
                             systemChecks, processChecks, fileChecks, protectionChecks, windowChecks}) {
        const Checks checks = group();
        all.insert(all.end(), checks.begin(), checks.end());
    }
    return all;
}

}  // namespace Selftest
