// The checks that run where there is no Mac: those over this system's adapters, and over GNUstep with the
// transport of this folder.

#include "Check.h"

namespace Selftest {

Checks allChecks() {
    Checks all;
    for (const auto group :
         {runtimeChecks, connectionChecks, refusalChecks, systemChecks, processChecks, fileChecks}) {
        const Checks checks = group();
        all.insert(all.end(), checks.begin(), checks.end());
    }
    return all;
}

}  // namespace Selftest
