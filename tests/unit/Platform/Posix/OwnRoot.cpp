#include "OwnRoot.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace PlatformTests {

namespace {

bool write(const char* path, const std::string& text) {
    std::FILE* file = std::fopen(path, "w");
    const bool written = file != nullptr && std::fputs(text.c_str(), file) >= 0;
    return file != nullptr && std::fclose(file) == 0 && written;
}

}  // namespace

bool becomeUser(unsigned user) {
    if (::geteuid() == 0) {
        return ::setuid(user) == 0;
    }
    const auto map = [user](unsigned own) { return std::to_string(user) + " " + std::to_string(own) + " 1"; };
    const std::string users = map(::geteuid());
    const std::string groups = map(::getegid());
    return ::unshare(CLONE_NEWUSER) == 0 && write("/proc/self/setgroups", "deny") &&
           write("/proc/self/uid_map", users) && write("/proc/self/gid_map", groups) && ::geteuid() == user;
}

OwnRoot::OwnRoot() {
    for (const char* name : {"Library", "Library/Application Support", "Library/LaunchDaemons", "Users",
                             "private", "private/etc", "private/var", "System", "usr", "Volumes"}) {
        makeFolder(scratch_.path(name));
    }
    makeFolder(scratch_.path("Applications"), 0775);
    makeFolder(scratch_.path("Users/alice"));
    makeFolder(scratch_.path("private/tmp"), 01777);
    for (const std::string name : {"tmp", "var", "etc"}) {
        makeLink("private/" + name, scratch_.path(name));
    }
    makeFile(scratch_.path("private/etc/passwd"),
             "root:x:0:0::/private/var/root:/bin/sh\nalice:x:1501:1501::/Users/alice:/bin/sh\n");
    makeFolder(scratch_.path("private/var/root"));
    if (knowsOthers()) {
        EXPECT_EQ(::chown(scratch_.path("Users/alice").c_str(), kAlice, kAlice), 0);
    }
}

bool OwnRoot::run(const std::function<void()>& check) const {
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        const bool inside = becomeUser(0) && ::chroot(scratch_.path().c_str()) == 0 && ::chdir("/") == 0;
        EXPECT_TRUE(inside) << "no root folder of its own";
        if (inside) {
            check();
        }
        std::fflush(stdout);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

bool OwnRoot::knowsOthers() {
    return ::geteuid() == 0;
}

}  // namespace PlatformTests
