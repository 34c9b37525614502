#include "Helpers/SupportHelper.h"

#include <gtest/gtest.h>

#include "FakeListener.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using HelperTests::FakeListener;
using InstallCommon::SupportPrivilegedHelperClient;
using TestSupport::CallList;
using TestSupport::installerLine;

constexpr Helpers::PackageFingerprint kMaker{1000, "d1"};

class SupportHelper : public testing::Test {
  protected:
    SupportHelper() { mac_.privateCopies.files["/p.pkg"] = {kMaker.size, std::string(kMaker.sha256)}; }

    /// What the helper replies to a message; nothing for a success.
    std::optional<Platform::Error> reply(Helpers::SupportHelper& helper, std::string_view selector) {
        std::vector<std::optional<Platform::Error>> replies;
        helper.message(selector, package(), [&](const auto& error) {
            openAtReply_ = listener_.open;
            replies.push_back(error);
        });
        EXPECT_EQ(replies.size(), 1U);
        return replies.at(0);
    }

    [[nodiscard]] static std::vector<Platform::XPCValue> package() {
        std::vector<Platform::XPCValue> arguments;
        arguments.emplace_back(Base::URL::fileURL("/p.pkg"));
        return arguments;
    }

    TestSupport::FakeMac mac_;
    FakeListener listener_;
    int openAtReply_ = 0;
};

TEST_F(SupportHelper, InstallsThePackageOfTheMakerInATransaction) {
    Helpers::SupportHelper helper(listener_, kMaker);
    EXPECT_EQ(reply(helper, "installSwiftSupportPackage:completion:"), std::nullopt);
    EXPECT_EQ(mac_.callsOf("launch", "/usr/sbin/installer").size(), 1U);
    EXPECT_EQ(openAtReply_, 1);
    EXPECT_EQ(listener_.open, 0);
}

TEST_F(SupportHelper, RepliesWithTheErrorOfAPackageThatIsNotTheMakers) {
    Helpers::SupportHelper helper(listener_, {.size = 1000, .sha256 = "d2"});
    EXPECT_EQ(
        reply(helper, "installSwiftSupportPackage:completion:"),
        (Platform::Error{"The package \"/p.pkg\" is not the maker's: its SHA-256 is d1 instead of d2", 1}));
    EXPECT_EQ(mac_.callsOf("launch"), CallList());
}

TEST_F(SupportHelper, IsNotKeptByAClientThatHasBeenServed) {
    Helpers::SupportHelper helper(listener_, kMaker);
    EXPECT_FALSE(listener_.disregardsPeers);
    EXPECT_EQ(reply(helper, "installSwiftSupportPackage:completion:"), std::nullopt);
    EXPECT_TRUE(listener_.disregardsPeers);
}

TEST_F(SupportHelper, AnswersAnotherSelectorWithAnErrorAndInstallsNothing) {
    Helpers::SupportHelper helper(listener_, kMaker);
    EXPECT_EQ(reply(helper, "installSwiftSupportPackage:"),
              (Platform::Error{"The support helper does not understand installSwiftSupportPackage:.", 1}));
    EXPECT_EQ(mac_.callsOf("launch"), CallList());
    EXPECT_FALSE(listener_.disregardsPeers);
    EXPECT_EQ(listener_.opened, 0);
}

TEST_F(SupportHelper, AnswersArgumentsThatDoNotFitWithAnErrorAndInstallsNothing) {
    Helpers::SupportHelper helper(listener_, kMaker);
    std::optional<Platform::Error> refusal;
    helper.message("installSwiftSupportPackage:completion:", {},
                   [&refusal](const auto& error) { refusal = error; });
    EXPECT_EQ(refusal,
              (Platform::Error{
                  "The support helper does not understand installSwiftSupportPackage:completion:.", 1}));
    EXPECT_EQ(mac_.callsOf("launch "), CallList());
    EXPECT_EQ(listener_.opened, 0);
}

TEST_F(SupportHelper, SaysThatLaunchdHandedOverNoService) {
    EXPECT_FALSE(Helpers::SupportHelper::serve(kMaker));
    EXPECT_EQ(mac_.log.lines,
              std::vector<std::string>{
                  installerLine("launchd handed over no service named com.norvik.SupportPrivilegedHelper")});
}

TEST_F(SupportHelper, ServesItsOwnServiceUntilItHasBeenIdleForTwoSeconds) {
    auto made = std::make_unique<FakeListener>();
    const auto connection = std::make_shared<TestSupport::FakeConnection>(mac_.calls, "client", nullptr);
    std::optional<Platform::Error> refusal{{"not called", 1}};
    std::uint32_t idleSeconds = 0;
    made->onRun = [&, listener = made.get()](const auto& accept, const auto& refused) {
        idleSeconds = listener->idleSeconds;
        EXPECT_TRUE(accept(connection, {}));
        connection->exportedObject->message(SupportPrivilegedHelperClient::installPackage.selector(),
                                            package(), [&](const auto& error) { refusal = error; });
        for (int time = 0; time < 6; ++time) {
            refused("process 9 of user 502: no");
        }
    };
    mac_.xpc.listener = std::move(made);
    EXPECT_TRUE(Helpers::SupportHelper::serve(kMaker));
    EXPECT_EQ(mac_.callsOf("listen"), (CallList{{"listen", "com.norvik.SupportPrivilegedHelper"}}));
    EXPECT_EQ(mac_.xpc.requirements.size(), 2U);
    EXPECT_EQ(connection->exportedInterface->protocolName, "NVKSupportPrivilegedHelper");
    EXPECT_EQ(connection->exportedObject->protocolName(), "NVKSupportPrivilegedHelper");
    EXPECT_EQ(refusal, std::nullopt);
    EXPECT_EQ(idleSeconds, 2U);
    std::vector<std::string> expected(5, installerLine("Refused process 9 of user 502: no"));
    expected.emplace_back(installerLine("Refused in all: 6 times, no"));
    EXPECT_EQ(mac_.log.lines, expected);
}

}  // namespace
