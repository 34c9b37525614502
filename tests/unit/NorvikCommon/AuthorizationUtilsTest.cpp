#include <gtest/gtest.h>

#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "NorvikCommon/AuthorizationUtils.h"
#include "NorvikCommon/PrivilegedHelperUtils.h"
#include "support/FakeHelper.h"
#include "support/FakeMac.h"

namespace {

using InstallCommon::SupportPrivilegedHelperClient;
using NorvikCommon::AuthorizationUtils;

class Privileges : public testing::Test {
  protected:
    Privileges() { helper_.serve(mac_); }

    TestSupport::FakeMac mac_;
    TestSupport::FakeHelper helper_;
};

using AuthorizationTest = Privileges;
using BlessingTest = Privileges;
using SupportHelperTest = Privileges;

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
              (TestSupport::CallList{"authorize system.privilege.admin 2", "end of authorization"}));
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

TEST_F(BlessingTest, AsksTheSystemForTheLabel) {
    const auto authorization = AuthorizationUtils::authorizationForRootAction(false);
    EXPECT_TRUE(NorvikCommon::BlessHelperWithLabel("com.norvik.InstallerHelper", *authorization));
    EXPECT_EQ(mac_.callsOf("bless"), TestSupport::CallList{"bless com.norvik.InstallerHelper"});
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
    EXPECT_EQ(mac_.callsOf("bless"), TestSupport::CallList{"bless com.norvik.SupportPrivilegedHelper"});
}

TEST_F(SupportHelperTest, WithoutThePackageInTheBundleFailsWithoutLoggingOrConnecting) {
    EXPECT_FALSE(SupportPrivilegedHelperClient::installSwiftSupportPackage());
    EXPECT_TRUE(mac_.xpc.connections.empty());
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

constexpr std::uint64_t kHour = 3'600'000'000'000;

class SupportHelperWithPackage : public Privileges {
  protected:
    SupportHelperWithPackage() { mac_.bundles.mainResources = {"SwiftRuntimeForCommandLineTools.pkg"}; }
};

TEST_F(SupportHelperWithPackage, SendsThePackagesURLThroughASynchronousProxy) {
    EXPECT_TRUE(SupportPrivilegedHelperClient::installSwiftSupportPackage());
    EXPECT_EQ(helper_.packages,
              std::vector<std::string>{"/Applications/Uninstall Sentrel.app/Contents/Resources/"
                                       "SwiftRuntimeForCommandLineTools.pkg"});
    EXPECT_EQ(
        mac_.calls,
        (TestSupport::CallList{
            "connection com.norvik.SupportPrivilegedHelper 4096", "interface NVKSupportPrivilegedHelper",
            "resume com.norvik.SupportPrivilegedHelper", "synchronous proxy",
            "timer " + std::to_string(mac_.clock.present + kHour) + " " + std::to_string(kHour) + " 0",
            "timer resume"}));
}

TEST_F(SupportHelperWithPackage, AHelperThatHasNotAnsweredAfterAnHourEndsTheWaitWithTheConnectionsError) {
    mac_.xpc.services["com.norvik.SupportPrivilegedHelper"] =
        [this](std::string_view, std::vector<Platform::XPCValue>, const Platform::XPCReply&) {
            ASSERT_EQ(mac_.dispatch.timerHandlers.size(), 1U);
            mac_.dispatch.timerHandlers.front()();
        };
    EXPECT_FALSE(SupportPrivilegedHelperClient::installSwiftSupportPackage());
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>{
                                  "The connection to service named com.norvik.SupportPrivilegedHelper was "
                                  "invalidated."});
}

TEST_F(SupportHelperWithPackage, ReleasesTheConnectionWithoutInvalidatingIt) {
    static_cast<void>(SupportPrivilegedHelperClient::installSwiftSupportPackage());
    ASSERT_EQ(mac_.xpc.connections.size(), 1U);
    EXPECT_FALSE(mac_.xpc.connections[0]->isInvalidated);
    // The fake's own reference is the last.
    EXPECT_EQ(mac_.xpc.connections[0].use_count(), 1);
}

TEST_F(SupportHelperWithPackage, ACompletionWithAnErrorLeavesTheResultFalseAlthoughTheCallReturned) {
    helper_.packageError = Platform::Error{"the package is broken", 1};
    EXPECT_FALSE(SupportPrivilegedHelperClient::installSwiftSupportPackage());
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>{"the package is broken"});
}

TEST_F(SupportHelperWithPackage, AnUnreachableHelperIsLoggedWithTheConnectionsErrorAlone) {
    mac_.xpc.unreachable["com.norvik.SupportPrivilegedHelper"] = {"Couldn't communicate with a helper.",
                                                                  4099};
    EXPECT_FALSE(SupportPrivilegedHelperClient::installSwiftSupportPackage());
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>{"Couldn't communicate with a helper."});
}

TEST_F(SupportHelperWithPackage, AProxyOfAnotherProtocolFailsSilently) {
    mac_.xpc.protocolOfProxies = "SomethingElse";
    EXPECT_FALSE(SupportPrivilegedHelperClient::installSwiftSupportPackage());
    EXPECT_TRUE(helper_.packages.empty());
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

TEST(SupportHelperInterface, HasTheOneMethodThatReplies) {
    const Platform::XPCInterface interface = SupportPrivilegedHelperClient::xpcInterface();
    EXPECT_EQ(interface.protocolName, "NVKSupportPrivilegedHelper");
    ASSERT_EQ(interface.methods.size(), 1U);
    EXPECT_EQ(interface.methods[0].selector, "installSwiftSupportPackage:completion:");
    EXPECT_TRUE(interface.methods[0].replies);
    EXPECT_EQ(interface.methods[0].arguments.at(0).kind, Platform::XPCArgumentKind::url);
}

}  // namespace
