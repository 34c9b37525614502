#pragma once

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "Platform/Users.h"

/// What every Users promises. World has `users`, whose database has at least one entry.
namespace PlatformTests {

template <class World>
class UsersContract : public testing::Test {
  protected:
    using Entries = std::vector<std::pair<std::uint32_t, std::string>>;

    [[nodiscard]] Entries walk() {
        Entries entries;
        users.rewind();
        while (const auto entry = users.next()) {
            entries.emplace_back(entry->uid, entry->home);
        }
        users.close();
        return entries;
    }

    World world;
    Platform::Users& users = world.users;
};

TYPED_TEST_SUITE_P(UsersContract);

TYPED_TEST_P(UsersContract, AreTheSameOnEveryWalk) {
    const auto first = this->walk();
    EXPECT_FALSE(first.empty());
    EXPECT_EQ(this->walk(), first);
}

TYPED_TEST_P(UsersContract, BeginAnewAfterARewind) {
    this->users.rewind();
    const auto first = this->users.next();
    ASSERT_TRUE(first);
    (void)this->users.next();
    this->users.rewind();
    const auto again = this->users.next();
    ASSERT_TRUE(again);
    EXPECT_EQ(again->uid, first->uid);
    EXPECT_EQ(again->home, first->home);
    this->users.close();
}

TYPED_TEST_P(UsersContract, MayAlwaysBecomeWhoTheyAre) {
    EXPECT_EQ(this->users.setEffectiveUserId(this->users.realUserId()), 0);
}

REGISTER_TYPED_TEST_SUITE_P(UsersContract, AreTheSameOnEveryWalk, BeginAnewAfterARewind,
                            MayAlwaysBecomeWhoTheyAre);

}  // namespace PlatformTests
