#include <gtest/gtest.h>
#include <pwd.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "Platform/Posix/PosixClock.h"
#include "Platform/Posix/PosixUsers.h"
#include "Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Posix::PosixUsers;
using Entries = std::vector<std::pair<std::uint32_t, std::string>>;

Entries walk(PosixUsers& users) {
    Entries entries;
    users.rewind();
    while (const auto entry = users.next()) {
        entries.emplace_back(entry->uid, entry->home);
    }
    users.close();
    return entries;
}

TEST(Users, AreThoseOfThePasswordDatabase) {
    Entries expected;
    std::FILE* database = ::popen("getent passwd", "r");
    ASSERT_NE(database, nullptr);
    char* line = nullptr;
    std::size_t size = 0;
    while (::getline(&line, &size, database) > 0) {
        // name:password:uid:gid:comment:home:shell
        std::istringstream text(line);
        std::vector<std::string> fields;
        for (std::string field; std::getline(text, field, ':');) {
            fields.push_back(field);
        }
        ASSERT_EQ(fields.size(), 7U) << line;
        expected.emplace_back(static_cast<std::uint32_t>(std::stoul(fields[2])), fields[5]);
    }
    std::free(line);
    ::pclose(database);
    PosixUsers users;
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(walk(users), expected);
}

TEST(Users, BeginAnewAfterARewind) {
    PosixUsers users;
    users.rewind();
    const auto first = users.next();
    ASSERT_TRUE(first);
    (void)users.next();
    users.rewind();
    const auto again = users.next();
    ASSERT_TRUE(again);
    EXPECT_EQ(again->uid, first->uid);
    EXPECT_EQ(again->home, first->home);
    users.close();
}

TEST(Users, ChangeTheEffectiveUserOfTheProcess) {
    PosixUsers users;
    EXPECT_EQ(users.realUserId(), ::getuid());
    EXPECT_EQ(users.setEffectiveUserId(::geteuid()), 0);
    const auto result = withoutPrivileges([&users] {
        const uid_t own = ::geteuid();
        const bool refused = own == ::getuid() || ::getuid() != 0
                                 ? users.setEffectiveUserId(own + 1) == -1 && ::geteuid() == own
                                 : users.setEffectiveUserId(0) == 0 && ::geteuid() == 0;
        return refused ? 0 : 1;
    });
    EXPECT_EQ(result, std::optional(0));
}

TEST(Clock, IsMonotonicInNanoseconds) {
    Platform::Posix::PosixClock clock;
    const std::uint64_t before = clock.now();
    const auto start = std::chrono::steady_clock::now();
    clock.sleep(1);
    const std::chrono::nanoseconds slept = std::chrono::steady_clock::now() - start;
    const std::uint64_t after = clock.now();
    EXPECT_GE(slept, std::chrono::seconds(1));
    EXPECT_GE(after - before, 1'000'000'000U);
    EXPECT_LE(after - before, static_cast<std::uint64_t>(slept.count()) + 100'000'000U);
    EXPECT_GE(clock.time(5), after + 5);
}

TEST(Clock, SleepsOnWhenASignalArrives) {
    Platform::Posix::PosixClock clock;
    struct sigaction handler {};
    struct sigaction before {};
    handler.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGALRM, &handler, &before), 0);
    const itimerval soon{{0, 0}, {0, 100'000}};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &soon, nullptr), 0);
    const std::uint64_t start = clock.now();
    clock.sleep(1);
    EXPECT_GE(clock.now() - start, 1'000'000'000U);
    ::sigaction(SIGALRM, &before, nullptr);
}

}  // namespace
}  // namespace PlatformTests
