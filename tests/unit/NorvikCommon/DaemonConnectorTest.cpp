#include "NorvikCommon/DaemonConnector.h"

#include <gtest/gtest.h>

#include "support/FakeMac.h"

namespace {

using NorvikCommon::DaemonConnector;
using TestSupport::CallList;

constexpr const char* kDaemonRoot = "com.norvik.antivirus.DaemonRoot";
constexpr const char* kScanner = "com.norvik.antivirus.OnDemandScannerRoot";
const TestSupport::Call kAskForRoot{"root proxy", "com.norvik.antivirus.DaemonRoot"};
const TestSupport::Call kAskForScanner{"root proxy", "com.norvik.antivirus.OnDemandScannerRoot"};
const TestSupport::Call kModes{"common request modes"};

TEST(DaemonConnector, NamesTheTwoObjects) {
    EXPECT_EQ(DaemonConnector::rootName, kDaemonRoot);
    EXPECT_EQ(DaemonConnector::onDemandScannerRootName, kScanner);
}

TEST(DaemonConnector, RootObjectIsLookedUpOnceAndKeptWithTheCommonModes) {
    TestSupport::FakeMac mac;
    mac.distantObjects.registered = {kDaemonRoot};
    const auto first = DaemonConnector::rootObject();
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(DaemonConnector::rootObject(), first);
    EXPECT_EQ(mac.calls, (CallList{kAskForRoot, kModes}));
}

TEST(DaemonConnector, WithoutADaemonThereIsNothingAndEveryCallLooksAgain) {
    TestSupport::FakeMac mac;
    EXPECT_EQ(DaemonConnector::rootObject(), nullptr);
    EXPECT_EQ(DaemonConnector::rootObject(), nullptr);
    EXPECT_EQ(mac.calls, (CallList{kAskForRoot, kAskForRoot}));
}

TEST(DaemonConnector, ARootObjectIsValidOnlyWithConnectionSendPortAndReceivePort) {
    for (bool TestSupport::FakeDistantObject::*part : {&TestSupport::FakeDistantObject::connectionIsValid,
                                                       &TestSupport::FakeDistantObject::sendPortIsValid,
                                                       &TestSupport::FakeDistantObject::receivePortIsValid}) {
        TestSupport::FakeMac mac;
        mac.distantObjects.registered = {kDaemonRoot};
        const auto first = DaemonConnector::rootObject();
        *mac.distantObjects.proxies.at(0).*part = false;
        const auto second = DaemonConnector::rootObject();
        EXPECT_NE(second, nullptr);
        EXPECT_NE(second, first);
        EXPECT_EQ(mac.calls, (CallList{kAskForRoot, kModes, kAskForRoot, kModes}));
    }
}

TEST(DaemonConnector, ABrokenRootObjectIsDroppedAlsoWhenTheDaemonStaysAway) {
    TestSupport::FakeMac mac;
    mac.distantObjects.registered = {kDaemonRoot};
    static_cast<void>(DaemonConnector::rootObject());
    mac.distantObjects.registered.clear();
    mac.distantObjects.proxies.at(0)->connectionIsValid = false;
    EXPECT_EQ(DaemonConnector::rootObject(), nullptr);
    EXPECT_EQ(mac.distantObjects.proxies.at(0).use_count(), 1);
}

TEST(DaemonConnector, TheScannerIsLookedUpAnewAsLongAsNoRootProxyIsKept) {
    TestSupport::FakeMac mac;
    mac.distantObjects.registered = {kDaemonRoot, kScanner};
    const auto first = DaemonConnector::onDemandScannerObject();
    const auto second = DaemonConnector::onDemandScannerObject();
    EXPECT_NE(first, nullptr);
    EXPECT_NE(second, first);
    EXPECT_EQ(mac.calls, (CallList{kAskForScanner, kModes, kAskForScanner, kModes}));
}

TEST(DaemonConnector, WithAValidRootProxyABrokenScannerIsStillHandedOut) {
    TestSupport::FakeMac mac;
    mac.distantObjects.registered = {kDaemonRoot, kScanner};
    const auto scanner = DaemonConnector::onDemandScannerObject();
    static_cast<void>(DaemonConnector::rootObject());
    mac.distantObjects.proxies.at(0)->connectionIsValid = false;
    EXPECT_EQ(DaemonConnector::onDemandScannerObject(), scanner);
}

TEST(DaemonConnector, WithAValidRootProxyAScannerThatWasNeverLookedUpIsAbsent) {
    TestSupport::FakeMac mac;
    mac.distantObjects.registered = {kDaemonRoot, kScanner};
    static_cast<void>(DaemonConnector::rootObject());
    EXPECT_EQ(DaemonConnector::onDemandScannerObject(), nullptr);
    EXPECT_EQ(mac.callsOf("root proxy"), CallList{kAskForRoot});
}

TEST(DaemonConnector, ABrokenRootProxyMakesAGoodScannerBeLookedUpAnew) {
    TestSupport::FakeMac mac;
    mac.distantObjects.registered = {kDaemonRoot, kScanner};
    const auto scanner = DaemonConnector::onDemandScannerObject();
    static_cast<void>(DaemonConnector::rootObject());
    mac.distantObjects.proxies.at(1)->receivePortIsValid = false;
    const auto again = DaemonConnector::onDemandScannerObject();
    EXPECT_NE(again, nullptr);
    EXPECT_NE(again, scanner);
}

}  // namespace
