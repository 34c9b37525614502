#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "ClockContract.h"
#include "Platform/Posix/PosixClock.h"
#include "Platform/Posix/PosixUsers.h"
#include "UsersContract.h"
#include "support/FakeMac.h"
#include "support/Scratch.h"

namespace PlatformTests {

using Platform::Posix::PosixUsers;

struct RealUsers {
    PosixUsers users;
};

struct FakeUserDatabase {
    FakeUserDatabase() { users.entries = {{501, "/Users/one"}, {502, "/Users/two"}, {0, ""}}; }

    TestSupport::CallList calls;
    TestSupport::FakeUsers users{calls};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, UsersContract, RealUsers);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, UsersContract, FakeUserDatabase);
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, ClockContract, Platform::Posix::PosixClock);

namespace {

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

}  // namespace
}  // namespace PlatformTests
