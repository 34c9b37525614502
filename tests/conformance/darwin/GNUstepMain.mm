// The main function of tests that use GNUstep's Foundation: they run in a child process whose GNUstep keeps
// its temporary files and its defaults in a scratch folder instead of the user's home folder.
#import <Foundation/Foundation.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "support/Scratch.h"

namespace {

// GNUstep takes its environment as the process was started with it, so the program starts itself.
constexpr const char* kPrepared = "SENTREL_GNUSTEP_SCRATCH";

int runPrepared(char** arguments) {
    const PlatformTests::Scratch scratch;
    PlatformTests::makeFolder(scratch.path("temporary"), 0700);
    PlatformTests::makeFile(scratch.path("GNUstep.conf"),
                            "GNUSTEP_USER_DEFAULTS_DIR=" + scratch.path("defaults") + "\n");
    const pid_t child = ::fork();
    if (child == 0) {
        ::setenv("TEMP", scratch.path("temporary").c_str(), 1);
        ::setenv("GNUSTEP_CONFIG_FILE", scratch.path("GNUstep.conf").c_str(), 1);
        ::setenv(kPrepared, scratch.path().c_str(), 1);
        ::execv("/proc/self/exe", arguments);
        ::_exit(127);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) {
        return EXIT_FAILURE;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    if (std::getenv(kPrepared) == nullptr) {
        return runPrepared(argv);
    }
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    // A new file manager copies nothing there until the shared one has been requested.
    (void)[NSFileManager defaultManager];
    [pool release];
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
