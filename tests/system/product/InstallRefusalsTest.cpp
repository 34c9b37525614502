// Installations that do not happen or do not end, each with its one line, its log and what it leaves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/InstallerLine.h"
#include "support/ProductMac.h"

namespace {

using TestSupport::installerLine;
using namespace SystemTests;
using Lines = std::vector<std::string>;
using testing::StartsWith;

const Lines kOtherAntivirus{installerLine("There is other antivirus installed."),
                            installerLine("Can not install antivirus.")};

/// Items that were there before, and those that a blessing leaves.
std::set<std::string> withBlessedHelpers(std::set<std::string> inventory) {
    for (const std::string label : {"com.norvik.InstallerHelper", "com.norvik.SupportPrivilegedHelper"}) {
        inventory.insert("file /Library/PrivilegedHelperTools/" + label);
        inventory.insert("file /Library/LaunchDaemons/" + label + ".plist");
    }
    return inventory;
}

void expectFailure(const TestSupport::ProgramResult& result, const std::string& line) {
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "Install Sentrel: " + line + "\n");
}

TEST(InstallationRefused, BesideAnotherAntivirusApplication) {
    ProductMac mac({"--other-antivirus", "app"});
    const std::set<std::string> before = mac.inventory();
    expectFailure(mac.install(mac.makePayload("6.4/640")),
                  "the installation was refused; the system log says why");
    EXPECT_EQ(mac.installerLog(), kOtherAntivirus);
    EXPECT_EQ(mac.helperLog(), Lines{});
    EXPECT_EQ(mac.inventory(), withBlessedHelpers(before));
}

TEST(InstallationRefused, BesideAnotherAntivirusProcessAlsoByForce) {
    ProductMac mac({"--installed", "current", "--version", "6.3/630", "--other-antivirus", "process"});
    const std::set<std::string> before = mac.inventory();
    expectFailure(mac.install(mac.makePayload("6.4/640"), {"--force-overinstall"}),
                  "the installation was refused; the system log says why");
    Lines expected{installerLine("found installed version true, updatable: true")};
    expected.insert(expected.end(), kOtherAntivirus.begin(), kOtherAntivirus.end());
    EXPECT_EQ(mac.installerLog(), expected);
    EXPECT_EQ(mac.helperLog(), Lines{});
    EXPECT_EQ(mac.inventory(), withBlessedHelpers(before));
}

TEST(InstallationFails, WithoutAnAuthorization) {
    ProductMac mac({});
    const std::set<std::string> before = mac.inventory();
    expectFailure(mac.install(mac.makePayload("6.4/640"), {"--fault", "authorization"}),
                  "the administrator's authorization was not granted");
    EXPECT_EQ(mac.installerLog(), Lines{});
    EXPECT_EQ(mac.inventory(), before);
}

TEST(InstallationFails, WithoutEitherHelper) {
    ProductMac mac({});
    const std::string payload = mac.makePayload("6.4/640");
    for (const char* fault : {"bless-installer", "bless-support"}) {
        const std::size_t logged = mac.installerLog().size();
        expectFailure(mac.install(payload, {"--fault", fault}),
                      "the privileged helpers could not be installed; the system log says why");
        const Lines log = mac.installerLog();
        ASSERT_EQ(log.size(), logged + 1);
        EXPECT_THAT(log.back(), StartsWith("SMJobBless error: "));
    }
    EXPECT_FALSE(mac.exists("/Applications/Sentrel.app"));
}

TEST(InstallationFails, WithoutTheRuntimeSupport) {
    ProductMac mac({});
    expectFailure(mac.install(mac.makePayload("6.4/640"), {"--fault", "package"}),
                  "the runtime support could not be installed; the system log says why");
    ASSERT_EQ(mac.installerLog().size(), 1U);
    EXPECT_THAT(mac.installerLog().front(), StartsWith("installer: Error - "));
    EXPECT_FALSE(mac.exists("/Applications/Sentrel.app"));
}

TEST(InstallationFails, WhenTheHelperDiesAndTimeIsUp) {
    ProductMac mac({});
    const std::string payload = mac.makePayload("6.4/640");
    const auto result = mac.install(payload, {"--fault", "helper-exit-after=2", "--timeout", "60"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "  7.7 %  Installing settings...\n 15.4 %  Installing AV bases...\n");
    EXPECT_EQ(result.err, "Install Sentrel: no report of the end came within 60 seconds\n");
    EXPECT_FALSE(mac.exists("/Library/LaunchDaemons/com.norvik.fileaccessd.plist"));
    EXPECT_TRUE(std::filesystem::is_empty(mac.path("/Volumes")));
    // The data without a console counts as an installation that cannot be updated.
    EXPECT_FALSE(mac.exists("/Applications/Sentrel.app"));
    EXPECT_EQ(mac.install(payload).status, 0);
    EXPECT_EQ(mac.installerLog().back(), installerLine("Overinstall..."));
    EXPECT_TRUE(mac.exists("/Applications/Sentrel.app"));
}

}  // namespace
