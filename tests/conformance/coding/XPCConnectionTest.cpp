#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "SystemDoubles.h"

// What the system's connections and interfaces are told.

namespace {

using SystemDoubles::Connection;
using SystemDoubles::InterfaceRecord;

std::vector<std::string> sorted(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

TEST(SystemInterface, AllowsExactlyTheClassesOfACommandList) {
    const InterfaceRecord record =
        SystemDoubles::recordOf(InstallCommon::CreateCommandExecutingXPCInterface());
    EXPECT_EQ(record.protocolName, "CommandExecuting");
    ASSERT_EQ(record.arguments.size(), 2U);
    const InterfaceRecord::Argument& commands = record.arguments.front();
    EXPECT_EQ(commands.selector, "executeWithCommands:delegate:");
    EXPECT_EQ(commands.index, 0U);
    EXPECT_FALSE(commands.ofReply);
    EXPECT_EQ(commands.classes,
              sorted({"_TtC13InstallCommon11CopyCommand", "_TtC13InstallCommon22StartLaunchdJobCommand",
                      "_TtC13InstallCommon20UpdateLaunchServices", "_TtC13InstallCommon13RemoveCommand",
                      "_TtC13InstallCommon17UnloadKextCommand", "_TtC13InstallCommon18KillProcessCommand",
                      "_TtC13InstallCommon21StopLaunchdJobCommand", "FilesystemItemInfo", "BundleInfo",
                      "LaunchdInfo", "ApplicationInfo", "DaemonInfo", "BundleDaemonInfo", "KextInfo",
                      "NSArray", "NSURL", "NSString", "NSNumber"}));
}

TEST(SystemInterface, HasTheDelegateTravelAsAProxy) {
    const InterfaceRecord record =
        SystemDoubles::recordOf(InstallCommon::CreateCommandExecutingXPCInterface());
    const InterfaceRecord::Argument& delegate = record.arguments.at(1);
    EXPECT_EQ(delegate.selector, "executeWithCommands:delegate:");
    EXPECT_EQ(delegate.index, 1U);
    EXPECT_FALSE(delegate.ofReply);
    ASSERT_EQ(delegate.interface.size(), 1U);
    EXPECT_EQ(delegate.interface.front().protocolName, "CommandExecutingDelegate");
    EXPECT_TRUE(delegate.interface.front().arguments.empty());
}

TEST(SystemInterface, OfTheSupportHelperIsItsProtocolAlone) {
    const InterfaceRecord record =
        SystemDoubles::recordOf(InstallCommon::SupportPrivilegedHelperClient::xpcInterface());
    EXPECT_EQ(record.protocolName, "NVKSupportPrivilegedHelper");
    EXPECT_TRUE(record.arguments.empty());
}

TEST(SystemInterface, OfAnotherProtocolEndsTheProcess) {
    EXPECT_DEATH(static_cast<void>(SystemDoubles::recordOf({"Other", {}})),
                 "no connection knows the protocol Other");
}

class ConnectionLife : public testing::Test {
  protected:
    std::shared_ptr<int> token_ = std::make_shared<int>(0);
    const std::weak_ptr<int> inUse_ = token_;
    Connection connection_{std::move(token_)};
    int invalidations_ = 0;
    int interruptions_ = 0;

    void resume() {
        connection_.port->setInvalidationHandler([this] { ++invalidations_; });
        connection_.port->setInterruptionHandler([this] { ++interruptions_; });
        connection_.port->resume();
    }
};

TEST_F(ConnectionLife, GoesOnAfterItWasDroppedUntilItIsInvalid) {
    resume();
    const std::weak_ptr<Platform::XPCConnection> port = connection_.port;
    connection_.drop();
    EXPECT_FALSE(port.expired());
    EXPECT_FALSE(inUse_.expired());
    connection_.invalidate();
    EXPECT_TRUE(port.expired());
    EXPECT_TRUE(inUse_.expired());
    EXPECT_EQ(invalidations_, 1);
}

TEST_F(ConnectionLife, TellsAnInterruptionAndGoesOn) {
    resume();
    connection_.interrupt();
    connection_.interrupt();
    EXPECT_EQ(interruptions_, 2);
    EXPECT_FALSE(inUse_.expired());
    EXPECT_EQ(invalidations_, 0);
}

TEST_F(ConnectionLife, TellsItsInvalidationOnce) {
    resume();
    connection_.invalidate();
    connection_.invalidate();
    EXPECT_EQ(invalidations_, 1);
    EXPECT_TRUE(inUse_.expired());
}

TEST_F(ConnectionLife, EndsWithoutAWordWhenItWasNeverResumed) {
    connection_.drop();
    EXPECT_TRUE(inUse_.expired());
    EXPECT_EQ(connection_.resumed(), 0) << "the system ends a connection that its listener does not take";
    EXPECT_EQ(connection_.invalidated(), 0);
}

TEST_F(ConnectionLife, IsResumedBeforeItIsInvalidated) {
    connection_.port->invalidate();
    EXPECT_EQ(connection_.resumed(), 1);
    EXPECT_EQ(connection_.invalidated(), 1);
    connection_.invalidate();
    EXPECT_TRUE(inUse_.expired());
}

TEST_F(ConnectionLife, HasNoProxyWithoutAnInterface) {
    EXPECT_EQ(connection_.port->remoteObjectProxy(), nullptr);
    EXPECT_EQ(connection_.port->synchronousRemoteObjectProxy({}), nullptr);
    resume();
    connection_.invalidate();
}

}  // namespace
