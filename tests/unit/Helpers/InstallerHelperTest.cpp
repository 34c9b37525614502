#include "Helpers/InstallerHelper.h"

#include <gtest/gtest.h>

#include "FakeListener.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using HelperTests::FakeListener;
using TestSupport::CallList;
using TestSupport::installerLine;

class InstallerHelper : public testing::Test {
  protected:
    /// The helper on a listener that does `onRun`; its port calls start over.
    void serve(decltype(FakeListener::onRun) onRun) {
        auto listener = std::make_unique<FakeListener>();
        listener_ = listener.get();
        listener_->onRun = std::move(onRun);
        mac_.xpc.listener = std::move(listener);
        helper_ = Helpers::InstallerHelper::make();
        ASSERT_NE(helper_, nullptr);
        helper_->serve();
    }

    TestSupport::FakeMac mac_;
    std::unique_ptr<Helpers::InstallerHelper> helper_;
    FakeListener* listener_ = nullptr;
};

TEST_F(InstallerHelper, AsksForItsOwnServiceAndTheTwoProgramsOfTheMaker) {
    serve(nullptr);
    EXPECT_EQ(mac_.calls.front(), (TestSupport::Call{"register classes", 14}));
    EXPECT_EQ(mac_.callsOf("listen"), (CallList{{"listen", "com.norvik.InstallerHelper"}}));
    ASSERT_EQ(mac_.xpc.requirements.size(), 2U);
    EXPECT_NE(mac_.xpc.requirements[0].find("com.NORVIK.Uninstall-NORVIK-Antivirus"), std::string::npos)
        << mac_.xpc.requirements[0];
    EXPECT_NE(mac_.xpc.requirements[1].find("com.NORVIK.Install-Sentrel"), std::string::npos)
        << mac_.xpc.requirements[1];
}

TEST_F(InstallerHelper, IsNotMadeWithoutAServiceAndSaysSo) {
    EXPECT_EQ(Helpers::InstallerHelper::make(), nullptr);
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>{installerLine(
                                  "launchd handed over no service named com.norvik.InstallerHelper")});
}

TEST_F(InstallerHelper, EndsAfterTwoIdleSeconds) {
    serve(nullptr);
    EXPECT_EQ(listener_->idleSeconds, 2U);
}

TEST_F(InstallerHelper, ExportsTheCommandInterfaceToEveryClientThatTheListenerLetsIn) {
    const auto first = std::make_shared<TestSupport::FakeConnection>(mac_.calls, "first", nullptr);
    const auto second = std::make_shared<TestSupport::FakeConnection>(mac_.calls, "second", nullptr);
    serve([&](const auto& accept, const auto&) {
        EXPECT_TRUE(accept(first, {.pid = 1, .uid = 501}));
        EXPECT_TRUE(accept(second, {.pid = 2, .uid = 502}));
    });
    const Platform::XPCInterface expected = InstallCommon::CreateCommandExecutingXPCInterface();
    for (const auto& connection : {first, second}) {
        ASSERT_TRUE(connection->exportedInterface);
        EXPECT_EQ(connection->exportedInterface->protocolName, expected.protocolName);
        const Base::AllowedClasses& allowed =
            connection->exportedInterface->methods.at(0).arguments.at(0).allowed;
        EXPECT_EQ(allowed.objects.size(), expected.methods.at(0).arguments.at(0).allowed.objects.size());
    }
}

// Over NSXPC a client may send nil for the delegate.
TEST_F(InstallerHelper, ExecutesTheListsThatArriveAlsoWithoutADelegate) {
    mac_.files.addFile("/Library/PrivilegedHelperTools/com.norvik.InstallerHelper");
    mac_.files.addFile("/a");
    const auto connection = std::make_shared<TestSupport::FakeConnection>(mac_.calls, "client", nullptr);
    serve([&](const auto& accept, const auto&) {
        accept(connection, {});
        Base::CodedObjectList objects;
        objects.push_back(std::make_unique<InstallCommon::RemoveCommand>("first", Base::URL::fileURL("/a")));
        std::vector<Platform::XPCValue> arguments;
        arguments.emplace_back(std::move(objects));
        arguments.emplace_back(std::shared_ptr<Platform::XPCObject>());
        connection->exportedObject->message("executeWithCommands:delegate:", std::move(arguments), {});
    });
    EXPECT_FALSE(mac_.files.has("/a"));
    EXPECT_EQ(listener_->opened, 1);
    EXPECT_EQ(listener_->open, 0);
}

TEST_F(InstallerHelper, LogsWhoWasRefusedAndCountsTheRestWhenItEnds) {
    serve([](const auto&, const auto& refused) {
        for (int time = 0; time < 7; ++time) {
            refused("process 9 of user 502: no");
        }
    });
    std::vector<std::string> expected(5, installerLine("Refused process 9 of user 502: no"));
    expected.emplace_back(installerLine("Refused in all: 7 times, no"));
    EXPECT_EQ(mac_.log.lines, expected);
}

TEST_F(InstallerHelper, LogsAMessageThatItDoesNotUnderstand) {
    const auto connection = std::make_shared<TestSupport::FakeConnection>(mac_.calls, "client", nullptr);
    serve([&](const auto& accept, const auto&) {
        accept(connection, {});
        connection->exportedObject->message("remove:", {}, {});
    });
    ASSERT_EQ(mac_.log.lines.size(), 1U);
    EXPECT_NE(mac_.log.lines[0].find("remove:"), std::string::npos) << mac_.log.lines[0];
}

TEST_F(InstallerHelper, StopsItsListenerWhenLaunchdAsksItToEnd) {
    serve([this](const auto&, const auto&) {
        ASSERT_TRUE(mac_.termination.request);
        EXPECT_FALSE(listener_->isStopped);
        mac_.termination.request();
        EXPECT_TRUE(listener_->isStopped);
    });
}

}  // namespace
