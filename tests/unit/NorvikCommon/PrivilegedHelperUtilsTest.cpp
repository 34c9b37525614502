#include <gtest/gtest.h>

#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "NorvikCommon/AuthorizationUtils.h"
#include "NorvikCommon/PrivilegedHelperUtils.h"
#include "support/FakeMac.h"

namespace {

using InstallCommon::SupportPrivilegedHelperClient;
using NorvikCommon::AuthorizationUtils;

class BlessingTest : public testing::Test {
  protected:
    TestSupport::FakeMac mac_;
};

TEST_F(BlessingTest, AsksTheSystemForTheLabel) {
    const auto authorization = AuthorizationUtils::authorizationForRootAction(false);
    EXPECT_TRUE(NorvikCommon::BlessHelperWithLabel("com.norvik.InstallerHelper", *authorization));
    EXPECT_EQ(mac_.callsOf("bless"), (TestSupport::CallList{{"bless", "com.norvik.InstallerHelper"}}));
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

TEST_F(BlessingTest, WithoutAReferenceRefusesWithoutAskingTheSystemAndWithoutLogging) {
    mac_.authorization.hasReference = false;
    const auto authorization = AuthorizationUtils::authorizationForRootAction(false);
    EXPECT_FALSE(NorvikCommon::BlessHelperWithLabel("label", *authorization));
    EXPECT_EQ(mac_.callsOf("bless"), TestSupport::CallList());
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

TEST_F(BlessingTest, AFailureIsLoggedWithTheSystemsError) {
    mac_.serviceManagement.failures["label"] = {"The operation couldn't be completed.", 4};
    const auto authorization = AuthorizationUtils::authorizationForRootAction(false);
    EXPECT_FALSE(NorvikCommon::BlessHelperWithLabel("label", *authorization));
    EXPECT_EQ(mac_.log.lines,
              std::vector<std::string>{"SMJobBless error: The operation couldn't be completed."});
}

TEST_F(BlessingTest, OfTheSupportHelperUsesItsLabel) {
    const auto authorization = AuthorizationUtils::authorizationForRootAction(false);
    EXPECT_TRUE(SupportPrivilegedHelperClient::blessHelper(*authorization));
    EXPECT_EQ(mac_.callsOf("bless"),
              (TestSupport::CallList{{"bless", "com.norvik.SupportPrivilegedHelper"}}));
}

}  // namespace
