// sentrel-selftest: asks a Mac whether everything holds that the macOS side of the program relies on.
//
//   sentrel-selftest                all checks, each in a process of its own
//   sentrel-selftest NAME...        some of them, or some groups
//   sentrel-selftest --list         the names of all checks
//   sentrel-selftest --only NAME    this one check, here; what the others are started with
//   sentrel-selftest --wait         does nothing for a minute: a process for the checks to look at

#import <Foundation/Foundation.h>

#include <string>

#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/SystemPorts.h"
#include "Run.h"

int main(int argc, char** argv) {
    const Platform::Darwin::Pool pool;
    Platform::SystemPorts::setCurrent(&Platform::createSystemPorts());
    const std::string path = Platform::Darwin::text([[NSBundle mainBundle] executablePath]);
    return Selftest::runSelftest(path, argc, argv, Selftest::allChecks());
}
