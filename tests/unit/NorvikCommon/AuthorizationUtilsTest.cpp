#include <gtest/gtest.h>

#include "NorvikCommon/AuthorizationUtils.h"
#include "support/FakeMac.h"

namespace {

using NorvikCommon::AuthorizationUtils;

class AuthorizationTest : public testing::Test {
  protected:
    TestSupport::FakeMac mac_;
};

const Platform::AuthorizationItem kAdministrator{"system.privilege.admin", std::nullopt, 0, 0};
const Platform::AuthorizationItem kEmptyPrompt{"prompt", "", 0, 0};

TEST_F(AuthorizationTest, InteractiveAsksForTheAdministratorRightWithFlags3AndAnEmptyPrompt) {
    EXPECT_NE(AuthorizationUtils::authorizationForRootAction(true), nullptr);
    ASSERT_EQ(mac_.authorization.requests.size(), 1U);
    EXPECT_EQ(mac_.authorization.requests[0].rights, std::vector{kAdministrator});
    EXPECT_EQ(mac_.authorization.requests[0].flags, 3U);
    EXPECT_EQ(mac_.authorization.requests[0].environment, std::vector{kEmptyPrompt});
}

TEST_F(AuthorizationTest, NonInteractiveAsksWithFlags2) {
    EXPECT_NE(AuthorizationUtils::authorizationForRootAction(false), nullptr);
    ASSERT_EQ(mac_.authorization.requests.size(), 1U);
    EXPECT_EQ(mac_.authorization.requests[0].flags, 2U);
    EXPECT_EQ(mac_.authorization.requests[0].environment, std::vector{kEmptyPrompt});
}

TEST_F(AuthorizationTest, NonInteractiveWithoutAdministratorRightsReturnsNothingAtOnceWithNoDialog) {
    mac_.authorization.grants = false;
    EXPECT_EQ(AuthorizationUtils::authorizationForRootAction(false), nullptr);
    EXPECT_EQ(mac_.calls,
              (TestSupport::CallList{{"authorize", "system.privilege.admin", 2}, {"end of authorization"}}));
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

TEST_F(AuthorizationTest, PromptLengthCountsCharactersNotBytes) {
    static_cast<void>(
        AuthorizationUtils::askAuthorizationForRight("right", "M\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80"));
    ASSERT_EQ(mac_.authorization.requests.size(), 1U);
    const Platform::AuthorizationItem& prompt = mac_.authorization.requests[0].environment.at(0);
    EXPECT_EQ(prompt.name, "prompt");
    EXPECT_EQ(prompt.value, "M\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(prompt.valueLength, 5U);
    EXPECT_EQ(mac_.authorization.requests[0].flags, 3U);
}

TEST_F(AuthorizationTest, PromptLengthCountsTwoForEveryCharacterBeyondTheBasicPlane) {
    const std::vector<std::pair<std::string, std::size_t>> prompts{
        {"", 0}, {"\xEF\xBC\xA1", 1}, {"\xF0\x90\x80\x80", 2}, {"\xF4\x8F\xBF\xBF", 2}};
    for (const auto& [prompt, length] : prompts) {
        static_cast<void>(AuthorizationUtils::askAuthorizationForRight("right", prompt));
        EXPECT_EQ(mac_.authorization.requests.back().environment.at(0).valueLength, length) << prompt;
    }
}

TEST_F(AuthorizationTest, ARightAloneIsAskedForWithAnEmptyMessage) {
    static_cast<void>(AuthorizationUtils::askAuthorizationForRight("right"));
    ASSERT_EQ(mac_.authorization.requests.size(), 1U);
    EXPECT_EQ(mac_.authorization.requests[0].rights.at(0).name, "right");
    EXPECT_EQ(mac_.authorization.requests[0].environment, std::vector{kEmptyPrompt});
}

}  // namespace
