#include <gtest/gtest.h>

#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "support/FakeHelper.h"
#include "support/FakeMac.h"

namespace {

using InstallCommon::SupportPrivilegedHelperClient;

class SupportHelperTest : public testing::Test {
  protected:
    SupportHelperTest() { helper_.serve(mac_); }

    TestSupport::FakeMac mac_;
    TestSupport::FakeHelper helper_;
};

TEST_F(SupportHelperTest, WithoutThePackageInTheBundleFailsWithoutLoggingOrConnecting) {
    EXPECT_FALSE(SupportPrivilegedHelperClient::installSwiftSupportPackage());
    EXPECT_TRUE(mac_.xpc.connections.empty());
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

constexpr std::uint64_t kHour = 3'600'000'000'000;

class SupportHelperWithPackage : public SupportHelperTest {
  protected:
    SupportHelperWithPackage() { mac_.bundles.mainResources = {"SwiftRuntimeForCommandLineTools.pkg"}; }
};

TEST_F(SupportHelperWithPackage, SendsThePackagesURLThroughASynchronousProxy) {
    EXPECT_TRUE(SupportPrivilegedHelperClient::installSwiftSupportPackage());
    EXPECT_EQ(helper_.packages,
              std::vector<std::string>{"/Applications/Uninstall Sentrel.app/Contents/Resources/"
                                       "SwiftRuntimeForCommandLineTools.pkg"});
    EXPECT_EQ(mac_.calls, (TestSupport::CallList{{"connection", "com.norvik.SupportPrivilegedHelper", 4096},
                                                 {"interface", "NVKSupportPrivilegedHelper"},
                                                 {"resume", "com.norvik.SupportPrivilegedHelper"},
                                                 {"synchronous proxy"},
                                                 {"timer", mac_.clock.present + kHour, kHour, 0},
                                                 {"timer resume"}}));
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
