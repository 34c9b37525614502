#include <chrono>

#include <gtest/gtest.h>

#include "support/SimulatedMac.h"

namespace {

using namespace std::chrono_literals;
using TestSupport::ProgramResult;
using TestSupport::SimulatedMac;

constexpr const char* kKext = "com.norvik.kext.FileAccessFilter";

class MacsimFaults : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(mac_.create({"--installed", "current", "--without-uninstaller"}).status, 0);
        mac_.putCopy("/usr/local/bin/client", SENTREL_FIXTURES "/macsim_client");
        mac_.putCopy("/tmp/runtime.pkg", SENTREL_RUNTIME_PACKAGE, 0644);
    }

    SimulatedMac mac_;
};

TEST_F(MacsimFaults, ALoadedKextIsUnloadedOnceByRoot) {
    EXPECT_EQ(mac_.run({}, {"client", "unload-kext", kKext}, "alice").out, "-603947004\n");
    EXPECT_EQ(mac_.state().at("kexts"), std::vector<std::string>{kKext});
    EXPECT_EQ(mac_.run({}, {"client", "unload-kext", kKext, ",", "unload-kext", kKext}).out,
              "0\n-603947002\n");
    EXPECT_EQ(mac_.state().at("kexts"), std::vector<std::string>{});
}

TEST_F(MacsimFaults, ABusyKextStaysLoaded) {
    EXPECT_EQ(mac_.run({"kext-busy"}, {"client", "unload-kext", kKext}).out, "-603946984\n");
    EXPECT_EQ(mac_.state().at("kexts"), std::vector<std::string>{kKext});
}

TEST_F(MacsimFaults, LaunchctlFailsForTheVerbAsked) {
    const std::string line =
        "launchctl bootout system/com.norvik.fileaccessd; s=$?; launchctl print system >/dev/null "
        "|| s=99; exit $s";
    const ProgramResult result = mac_.run({"launchctl-fail=bootout"}, {"sh", "-c", line});
    EXPECT_EQ(result.status, 5);
    EXPECT_EQ(result.err, "Boot-out failed: 5: Input/output error\n");
    EXPECT_EQ(mac_.run({"launchctl-fail=print"}, {"launchctl", "print", "system"}).err,
              "Print failed: 5: Input/output error\n");
}

TEST_F(MacsimFaults, LaunchctlTakesTheTimeAsked) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(mac_.run({"launchctl-hang=1.2"}, {"launchctl", "print", "system"}).status, 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 1200ms);
}

TEST_F(MacsimFaults, AnImmutableItemResistsRootAndIsFreeAfterwards) {
    const ProgramResult result = mac_.run({"immutable=/Applications/Sentrel.app/Contents/Info.plist"},
                                          {"rm", "-rf", "/Applications/Sentrel.app"});
    EXPECT_EQ(result.status, 1) << result.err;
    EXPECT_TRUE(mac_.exists("/Applications/Sentrel.app/Contents/Info.plist"));
    EXPECT_FALSE(mac_.exists("/Applications/Sentrel.app/Contents/MacOS"));
    EXPECT_EQ(mac_.shell("rm -rf /Applications/Sentrel.app").status, 0);
}

TEST_F(MacsimFaults, AMissingItemCannotBeImmutable) {
    const ProgramResult result = mac_.run({"immutable=/no/such/item"}, {"true"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.err.starts_with("macsim: cannot make /no/such/item immutable")) << result.err;
}

TEST_F(MacsimFaults, AFullDiskFailsTheInstallation) {
    const ProgramResult result =
        mac_.run({"disk-full"}, {"installer", "-pkg", "/tmp/runtime.pkg", "-target", "/"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "installer: Error - The Installer could not install some files in \"/\".\n");
    EXPECT_FALSE(mac_.exists("/var/db/receipts/com.norvik.SwiftRuntimeForCommandLineTools.plist"));
    EXPECT_EQ(mac_.run({}, {"installer", "-pkg", "/tmp/runtime.pkg", "-target", "/"}).status, 0);
}

TEST_F(MacsimFaults, ThePackageFaultFailsEveryPackage) {
    const ProgramResult result =
        mac_.run({"package"}, {"installer", "-pkg", "/tmp/runtime.pkg", "-target", "/"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.err.starts_with("installer: Error - ")) << result.err;
}

TEST_F(MacsimFaults, AnUnreadablePasswordDatabaseHasNoEntries) {
    EXPECT_EQ(mac_.run({"unreadable-passwd"}, {"getent", "passwd"}).out, "");
    EXPECT_NE(mac_.run({}, {"getent", "passwd"}).out, "");
}

}  // namespace
