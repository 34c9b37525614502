// Every way in which a silent run can fail, with its exact log and exit status 0.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <regex>

#include "support/InstallerLine.h"
#include "support/ProductMac.h"
#include "support/WholeFile.h"

namespace {

using TestSupport::contentsOf;
using TestSupport::installerLine;
using namespace SystemTests;
using Lines = std::vector<std::string>;

class SilentFailure : public testing::Test {
  protected:
    /// Runs the uninstaller under a fault; the exit status is always 0.
    void run(const Lines& faults, const std::string& user = "root") {
        const auto start = std::chrono::steady_clock::now();
        const auto result = mac_.uninstall(faults, user);
        seconds_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        EXPECT_EQ(result.status, 0) << result.err;
    }

    ProductMac mac_{{"--installed", "current"}};
    double seconds_ = 0;
};

TEST_F(SilentFailure, AuthorizationRefused) {
    run({"authorization"});
    EXPECT_EQ(mac_.uninstallerLog(),
              (Lines{"Helper authorization and blessing failed. Quitting...", kFailed}));
    mac_.expectInstalled();
}

TEST_F(SilentFailure, AProcessWithoutAdministratorRightsIsRefusedAtOnceWithNoDialog) {
    run({}, "alice");
    EXPECT_EQ(mac_.uninstallerLog(),
              (Lines{"Helper authorization and blessing failed. Quitting...", kFailed}));
    mac_.expectInstalled();
}

TEST_F(SilentFailure, StandardErrorEndsWithTheOutcomeWhereItIsRead) {
    mac_.put("/tmp/run",
             "#!/bin/sh\n\"" + std::string(kInstalledUninstaller) + "\" --silent 2>&1 | tail -1\n", 0755);
    const std::string line = mac_.run({"authorization"}, {"/tmp/run"}).out;
    EXPECT_TRUE(std::regex_match(line, std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} )"
                                                  R"(Uninstall Sentrel\[\d+:\d+\] \[SNTM Installer\] )"
                                                  R"(Uninstallation failed\.\n)")))
        << line;
}

TEST_F(SilentFailure, InstallerHelperNotBlessed) {
    run({"bless-installer"});
    const Lines log = mac_.uninstallerLog();
    ASSERT_EQ(log.size(), 3U);
    EXPECT_TRUE(log[0].starts_with("SMJobBless error: ")) << log[0];
    EXPECT_EQ(log[1], "Helper authorization and blessing failed. Quitting...");
    EXPECT_EQ(log[2], kFailed);
    mac_.expectInstalled();
}

TEST_F(SilentFailure, SupportHelperNotBlessed) {
    run({"bless-support"});
    const Lines log = mac_.uninstallerLog();
    ASSERT_EQ(log.size(), 3U);
    EXPECT_TRUE(log[0].starts_with("SMJobBless error: ")) << log[0];
    EXPECT_EQ(log[1], "Helper authorization and blessing failed. Quitting...");
    EXPECT_EQ(log[2], kFailed);
    mac_.expectInstalled();
}

TEST_F(SilentFailure, RuntimePackageNotInstalled) {
    run({"package"});
    const Lines log = mac_.uninstallerLog();
    ASSERT_EQ(log.size(), 3U);
    EXPECT_TRUE(log[0].starts_with("installer: Error - ")) << log[0];
    EXPECT_EQ(log[1], "Failed to install Swift runtime support. Quitting...");
    EXPECT_EQ(log[2], kFailed);
    mac_.expectInstalled();
}

/// An application in a folder of alice's, who replaces the runtime package in it.
class ForeignPackage : public testing::Test {
  protected:
    ForeignPackage() {
        mac_.putUninstaller("/Users/alice/Downloads");
        std::filesystem::remove(mac_.path(package_));
    }
    ~ForeignPackage() override {
        // Nothing was installed, and no copy is left.
        EXPECT_FALSE(mac_.exists("/var/db/receipts/com.norvik.SwiftRuntimeForCommandLineTools.plist"));
        EXPECT_FALSE(
            mac_.exists("/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper.package"));
        mac_.expectInstalled();
    }

    [[nodiscard]] Lines run() {
        const auto result = mac_.run(
            {},
            {"/Users/alice/Downloads/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel", "--silent"});
        EXPECT_EQ(result.status, 0);
        return mac_.uninstallerLog();
    }
    [[nodiscard]] static Lines failedWith(const std::string& reason) {
        return {reason, "Failed to install Swift runtime support. Quitting...", kFailed};
    }

    const std::string package_ =
        "/Users/alice/Downloads/Uninstall Sentrel.app/Contents/Resources/SwiftRuntimeForCommandLineTools.pkg";
    const std::string refused_ = "The package \"" + package_ + "\" is not the maker's: ";
    ProductMac mac_{{"--installed", "current"}};
};

TEST_F(ForeignPackage, OfOneChangedByteIsNotInstalled) {
    std::string bytes = contentsOf(SENTREL_RUNTIME_PACKAGE);
    bytes[bytes.size() / 2] = static_cast<char>(~bytes[bytes.size() / 2]);
    mac_.put(package_, bytes);
    const Lines log = run();
    ASSERT_EQ(log.size(), 3U);
    EXPECT_TRUE(std::regex_match(log[0], std::regex(".*is not the maker's: its SHA-256 is [0-9a-f]{64} "
                                                    "instead of [0-9a-f]{64}")))
        << log[0];
    EXPECT_EQ(log, failedWith(log[0]));
}

TEST_F(ForeignPackage, ThatIsSparseAndHugeIsNotInstalled) {
    mac_.put(package_, contentsOf(SENTREL_RUNTIME_PACKAGE));
    std::filesystem::resize_file(mac_.path(package_), std::uintmax_t{1} << 40);
    EXPECT_EQ(run(),
              failedWith(refused_ + "it has more than " +
                         std::to_string(std::filesystem::file_size(SENTREL_RUNTIME_PACKAGE)) + " bytes"));
}

TEST_F(ForeignPackage, ThatIsAFIFOHoldsNobodyUp) {
    ASSERT_EQ(::mkfifo(mac_.path(package_).c_str(), 0666), 0);
    EXPECT_EQ(run(), failedWith("\"" + package_ + "\" could not be read: Invalid argument"));
}

TEST_F(ForeignPackage, ThatIsALinkIsNotFollowed) {
    mac_.put("/Users/alice/real.pkg", contentsOf(SENTREL_RUNTIME_PACKAGE));
    std::filesystem::create_symlink("/Users/alice/real.pkg", mac_.path(package_));
    EXPECT_EQ(run(), failedWith("\"" + package_ + "\" could not be read: Too many levels of symbolic links"));
}

TEST_F(SilentFailure, ANewerProductIsNotUninstalled) {
    ProductMac newer({"--installed", "current", "--version", "99.0/9900"});
    newer.putUninstaller("/Users/alice/Downloads");
    const auto result = newer.run(
        {}, {"/Users/alice/Downloads/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel", "--silent"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(newer.uninstallerLog(), (Lines{kFound, "Antivirus cannot be uninstalled", kFailed}));
    newer.expectInstalled();
}

TEST_F(SilentFailure, NoProductCannotBeUninstalled) {
    ProductMac bare({});
    bare.putUninstaller("/Users/alice/Downloads");
    const auto result =
        bare.run({}, {"/Users/alice/Downloads/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel", "-s"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(bare.uninstallerLog(), (Lines{"Antivirus cannot be uninstalled", kFailed}));
}

TEST_F(SilentFailure, AHelperThatNeverReportsTimesOutAfter60Seconds) {
    run({"helper-mute"});
    EXPECT_EQ(mac_.uninstallerLog(), (Lines{kFound, kFailed}));
    EXPECT_GE(seconds_, 60.0);
    // The helper still did its work.
    EXPECT_FALSE(mac_.exists("/Applications/Sentrel.app"));
}

TEST_F(SilentFailure, AHelperThatDiesInTheMiddleTimesOutAfter60Seconds) {
    run({"helper-exit-after=20"});
    EXPECT_EQ(mac_.uninstallerLog(), (Lines{kFound, kFailed}));
    EXPECT_GE(seconds_, 60.0);
    EXPECT_TRUE(mac_.exists("/Library/Application Support/NORVIK/SNT/settings.plist"));
}

TEST_F(SilentFailure, AHelperThatCannotBeReachedTimesOutAfter60Seconds) {
    run({"no-installer-service"});
    EXPECT_EQ(mac_.uninstallerLog(), (Lines{kFound, kFailed}));
    EXPECT_GE(seconds_, 60.0);
    mac_.expectInstalled();
}

TEST_F(SilentFailure, ReportsAfterTheDeadlineComeTooLate) {
    // Each of the many launchctl calls takes two seconds: the list is not done in time.
    run({"launchctl-hang=2"});
    const Lines log = mac_.uninstallerLog();
    EXPECT_EQ(log, (Lines{kFound, kFailed}));
    EXPECT_GE(seconds_, 60.0);
}

TEST_F(SilentFailure, OfARunCanBeMadeGoodByTheNext) {
    run({"package"});
    run({});
    mac_.expectClean();
    EXPECT_EQ(mac_.uninstallerLog().back(), installerLine("Uninstallation finished."));
}

}  // namespace
