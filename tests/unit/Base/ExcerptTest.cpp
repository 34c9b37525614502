#include "Base/Excerpt.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Excerpt, KeepsATextThatFits) {
    EXPECT_EQ(Base::excerpt("plain\ntext\xFF"), "plain\ntext\xFF");
    EXPECT_EQ(Base::excerpt("abc", 3), "abc");
    EXPECT_EQ(Base::excerpt(std::string(120, 'x')), std::string(120, 'x'));
}

TEST(Excerpt, CutsATextThatIsTooLongBetweenTwoCharacters) {
    EXPECT_EQ(Base::excerpt("abcdef", 3), "abc...");
    EXPECT_EQ(Base::excerpt(std::string(121, 'x')), std::string(120, 'x') + "...");
    EXPECT_EQ(Base::excerpt("ab\xE2\x98\x83z", 5), "ab\xE2\x98\x83...");
    EXPECT_EQ(Base::excerpt("ab\xE2\x98\x83z", 4), "ab...");
    EXPECT_EQ(Base::excerpt("ab\xE2\x98\x83z", 3), "ab...");
    EXPECT_EQ(Base::excerpt("\x80\x80\x80", 1), "...");
}

}  // namespace
