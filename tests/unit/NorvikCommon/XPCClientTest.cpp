#include "NorvikCommon/XPCClient.h"

#include <gtest/gtest.h>

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "support/FakeMac.h"

namespace {

using NorvikCommon::XPCClient;

class RecordingClient final : public XPCClient {
  public:
    RecordingClient(TestSupport::CallList& calls, bool privileged)
        : XPCClient("service", privileged), calls_(calls) {}

  protected:
    void willResumeConnection(Platform::XPCConnection& /*connection*/) override {
        calls_.push_back({"will resume"});
    }
    void didResumeConnection(Platform::XPCConnection& /*connection*/) override {
        calls_.push_back({"did resume"});
    }
    void connectionDidInvalidate() override { calls_.push_back({"did invalidate"}); }
    void connectionDidInterrupt() override { calls_.push_back({"did interrupt"}); }

  private:
    TestSupport::CallList& calls_;
};

TEST(XPCClientTest, CreatesNoConnectionUntilConnect) {
    const TestSupport::FakeMac mac;
    const auto client = std::make_shared<XPCClient>("name", true);
    EXPECT_EQ(client->machServiceName(), "name");
    EXPECT_TRUE(client->isServicePrivileged());
    EXPECT_EQ(client->connection(), nullptr);
    EXPECT_EQ(mac.calls, TestSupport::CallList());
}

TEST(XPCClientTest, ConnectsInTheFixedOrder) {
    TestSupport::FakeMac mac;
    const auto client = std::make_shared<RecordingClient>(mac.calls, true);
    client->connect();
    EXPECT_EQ(mac.calls, (TestSupport::CallList{{"connection", "service", 4096},
                                                {"set invalidation handler"},
                                                {"set interruption handler"},
                                                {"will resume"},
                                                {"resume", "service"},
                                                {"did resume"}}));
}

TEST(XPCClientTest, ConnectsWithoutOptionsWhenTheServiceIsNotPrivileged) {
    TestSupport::FakeMac mac;
    std::make_shared<RecordingClient>(mac.calls, false)->connect();
    EXPECT_EQ(mac.calls.front(), (TestSupport::Call{"connection", "service", 0}));
}

TEST(XPCClientTest, ConnectTwiceGivesTwoConnectionsAndTheFirstIsNotInvalidated) {
    TestSupport::FakeMac mac;
    const auto client = std::make_shared<RecordingClient>(mac.calls, true);
    client->connect();
    const auto first = client->connection();
    client->connect();
    EXPECT_NE(client->connection(), first);
    ASSERT_EQ(mac.xpc.connections.size(), 2U);
    EXPECT_FALSE(mac.xpc.connections[0]->isInvalidated);
}

TEST(XPCClientTest, StopBeforeConnectDoesNothingAndLeavesTheConnectionEmpty) {
    const TestSupport::FakeMac mac;
    const auto client = std::make_shared<XPCClient>("service", true);
    client->stop();
    EXPECT_EQ(client->connection(), nullptr);
    EXPECT_EQ(mac.calls, TestSupport::CallList());
}

TEST(XPCClientTest, StopInvalidatesTheConnectionAndDropsIt) {
    TestSupport::FakeMac mac;
    const auto client = std::make_shared<RecordingClient>(mac.calls, true);
    client->connect();
    client->stop();
    EXPECT_EQ(client->connection(), nullptr);
    EXPECT_EQ(mac.calls.back(), (TestSupport::Call{"invalidate", "service"}));
}

TEST(XPCClientTest, HandlersReachTheHooksAndLeaveTheConnectionInPlace) {
    TestSupport::FakeMac mac;
    const auto client = std::make_shared<RecordingClient>(mac.calls, true);
    client->connect();
    mac.calls.clear();
    mac.xpc.connections[0]->interruptionHandler();
    mac.xpc.connections[0]->invalidationHandler();
    EXPECT_EQ(mac.calls, (TestSupport::CallList{{"did interrupt"}, {"did invalidate"}}));
    EXPECT_NE(client->connection(), nullptr);
}

TEST(XPCClientTest, AnInvalidationAfterTheClientsReleaseCallsNothing) {
    TestSupport::FakeMac mac;
    auto client = std::make_shared<RecordingClient>(mac.calls, true);
    client->connect();
    mac.calls.clear();
    client.reset();
    mac.xpc.connections[0]->invalidationHandler();
    mac.xpc.connections[0]->interruptionHandler();
    EXPECT_EQ(mac.calls, TestSupport::CallList());
}

TEST(XPCClientTest, HooksOfTheBaseAreEmpty) {
    TestSupport::FakeMac mac;
    const auto client = std::make_shared<XPCClient>("service", true);
    client->connect();
    mac.xpc.connections[0]->invalidationHandler();
    EXPECT_EQ(mac.log.lines, std::vector<std::string>());
}

TEST(CommandExecutingInterface, AllowsExactlyTheSevenCommandsTheSevenRecordsAndFourValues) {
    const Platform::XPCInterface interface = InstallCommon::CreateCommandExecutingXPCInterface();
    EXPECT_EQ(interface.protocolName, "CommandExecuting");
    ASSERT_EQ(interface.methods.size(), 1U);
    const Platform::XPCMethod& method = interface.methods[0];
    EXPECT_EQ(method.selector, "executeWithCommands:delegate:");
    EXPECT_FALSE(method.replies);
    ASSERT_EQ(method.arguments.size(), 2U);
    std::vector<std::string> names;
    for (const Base::CodedClass* each : method.arguments[0].allowed.objects) {
        names.emplace_back(each->runtimeName);
    }
    EXPECT_EQ(names, (std::vector<std::string>{
                         "_TtC13InstallCommon11CopyCommand", "_TtC13InstallCommon22StartLaunchdJobCommand",
                         "_TtC13InstallCommon20UpdateLaunchServices", "_TtC13InstallCommon13RemoveCommand",
                         "_TtC13InstallCommon17UnloadKextCommand", "_TtC13InstallCommon18KillProcessCommand",
                         "_TtC13InstallCommon21StopLaunchdJobCommand", "FilesystemItemInfo", "BundleInfo",
                         "LaunchdInfo", "ApplicationInfo", "DaemonInfo", "BundleDaemonInfo", "KextInfo"}));
    const std::vector<std::string> values(method.arguments[0].allowed.values.begin(),
                                          method.arguments[0].allowed.values.end());
    EXPECT_EQ(values, (std::vector<std::string>{"NSArray", "NSURL", "NSString", "NSNumber"}));
}

TEST(CommandExecutingInterface, DelegateTravelsAsAProxyWithItsOneMethod) {
    const Platform::XPCInterface interface = InstallCommon::CreateCommandExecutingXPCInterface();
    const Platform::XPCArgument& delegate = interface.methods.at(0).arguments.at(1);
    EXPECT_EQ(delegate.kind, Platform::XPCArgumentKind::object);
    ASSERT_NE(delegate.proxy, nullptr);
    EXPECT_EQ(delegate.proxy->protocolName, "CommandExecutingDelegate");
    ASSERT_EQ(delegate.proxy->methods.size(), 1U);
    EXPECT_EQ(delegate.proxy->methods[0].selector, "commandExecutingDidExecuteCommand:withWeight:");
    EXPECT_EQ(delegate.proxy->methods[0].arguments.at(0).kind, Platform::XPCArgumentKind::string);
    EXPECT_EQ(delegate.proxy->methods[0].arguments.at(1).kind, Platform::XPCArgumentKind::int32);
}

TEST(CommandExecutingInterface, IsNewOnEveryCall) {
    const auto first = InstallCommon::CreateCommandExecutingXPCInterface();
    const auto second = InstallCommon::CreateCommandExecutingXPCInterface();
    EXPECT_NE(first.methods[0].arguments[1].proxy, second.methods[0].arguments[1].proxy);
}

}  // namespace
