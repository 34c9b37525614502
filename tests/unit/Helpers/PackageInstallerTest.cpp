#include "Helpers/PackageInstaller.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "support/FakeMac.h"

namespace {

using TestSupport::CallList;

class PackageInstaller : public testing::Test {
  protected:
    PackageInstaller() { mac_.privateCopies.files["/p/a b.pkg"] = {maker_.size, std::string(maker_.sha256)}; }

    [[nodiscard]] std::optional<Platform::Error> install() const {
        return Helpers::installPackage(package_, maker_);
    }

    TestSupport::FakeMac mac_;
    const Base::URL package_ = Base::URL::fileURL("/p/a b.pkg");
    const Helpers::PackageFingerprint maker_{1000, "d1"};
    const std::string copy_ =
        "/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper.package/"
        "SwiftRuntimeForCommandLineTools.pkg";
    const std::string command_ = "/usr/sbin/installer -pkg " + copy_ + " -target /";
    const CallList refused_{{"private copy", "/p/a b.pkg", copy_}, {"remove private copy", copy_}};
};

TEST_F(PackageInstaller, InstallsACopyThatOnlyRootCanReachAndRemovesIt) {
    EXPECT_EQ(install(), std::nullopt);
    // The output is read before the wait: a tool that says more than a pipe holds would never end.
    EXPECT_EQ(mac_.calls, (CallList{{"private copy", "/p/a b.pkg", copy_},
                                    {"launch", command_},
                                    {"read output"},
                                    {"read error"},
                                    {"wait"},
                                    {"remove private copy", copy_}}));
    // One extra byte reveals a longer package.
    EXPECT_EQ(mac_.privateCopies.lastLimit, 1001U);
    ASSERT_EQ(mac_.tasks.argumentVectors.size(), 1U);
    EXPECT_EQ(*mac_.tasks.argumentVectors[0], (std::vector<std::string>{"-pkg", copy_, "-target", "/"}));
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

TEST_F(PackageInstaller, AnswersWithTheToolsOwnWordsWithoutTheirLineBreak) {
    mac_.tasks.results[command_] = {"", "installer: Error - the package is damaged.\n", 1};
    EXPECT_EQ(install(), (Platform::Error{"installer: Error - the package is damaged.", 1}));
    EXPECT_EQ(mac_.calls.back(), (TestSupport::Call{"remove private copy", copy_}));
}

TEST_F(PackageInstaller, LeavesEverythingButTheLineBreaksToTheToolsWords) {
    mac_.tasks.results[command_] = {"", "no ~\r\n\n", 1};
    EXPECT_EQ(install(), (Platform::Error{"no ~", 1}));
}

TEST_F(PackageInstaller, AnswersInItsOwnWordsWhenTheToolHasNone) {
    mac_.tasks.results[command_] = {"", "", 9, Platform::TerminationReason::uncaughtSignal};
    EXPECT_EQ(install(), (Platform::Error{"The package \"/p/a b.pkg\" could not be installed.", 9}));
}

TEST_F(PackageInstaller, AToolThatEndsByASignalHasNotSucceededWhateverItsStatus) {
    mac_.tasks.results[command_] = {"", "", 0, Platform::TerminationReason::uncaughtSignal};
    EXPECT_EQ(install(), (Platform::Error{"The package \"/p/a b.pkg\" could not be installed.", 0}));
}

TEST_F(PackageInstaller, AnswersWithAnErrorWhenTheToolCannotBeRun) {
    mac_.tasks.notExecutable = {"/usr/sbin/installer"};
    EXPECT_EQ(install(),
              (Platform::Error{"The system's installer tool /usr/sbin/installer cannot be run.", 1}));
    EXPECT_EQ(mac_.calls.back(), (TestSupport::Call{"remove private copy", copy_}));
}

TEST_F(PackageInstaller, AnswersWithTheErrorOfAPackageThatCannotBeCopied) {
    const Platform::Error full{"\"/p/a b.pkg\" could not be copied to \"...\": No space left on device",
                               ENOSPC};
    mac_.privateCopies.failures["/p/a b.pkg"] = full;
    EXPECT_EQ(install(), full);
    EXPECT_EQ(mac_.calls, (CallList{{"private copy", "/p/a b.pkg", copy_}}));
}

TEST_F(PackageInstaller, RefusesOtherBytesOfTheSameLength) {
    mac_.privateCopies.files["/p/a b.pkg"].sha256 = "d2";
    EXPECT_EQ(install(),
              (Platform::Error{
                  "The package \"/p/a b.pkg\" is not the maker's: its SHA-256 is d2 instead of d1", 1}));
    EXPECT_EQ(mac_.calls, refused_);
}

TEST_F(PackageInstaller, RefusesADigestThatCouldNotBeTaken) {
    mac_.privateCopies.files["/p/a b.pkg"].sha256 = "";
    EXPECT_NE(install(), std::nullopt);
    EXPECT_EQ(mac_.calls, refused_);
}

TEST_F(PackageInstaller, RefusesAShorterPackage) {
    mac_.privateCopies.files["/p/a b.pkg"].size = 999;
    EXPECT_EQ(install(),
              (Platform::Error{
                  "The package \"/p/a b.pkg\" is not the maker's: it has 999 bytes instead of 1000", 1}));
    EXPECT_EQ(mac_.calls, refused_);
}

TEST_F(PackageInstaller, RefusesALongerPackageWithoutReadingItWhole) {
    mac_.privateCopies.files["/p/a b.pkg"].size = std::uint64_t{1} << 60;
    EXPECT_EQ(
        install(),
        (Platform::Error{"The package \"/p/a b.pkg\" is not the maker's: it has more than 1000 bytes", 1}));
    EXPECT_EQ(mac_.calls, refused_);
}

TEST_F(PackageInstaller, RemovesWhatAnInterruptedInstallationLeft) {
    const std::string folder = "/Library/PrivilegedHelperTools/com.norvik.SupportPrivilegedHelper.package";
    EXPECT_EQ(Helpers::removeLeftPackage(), std::nullopt);
    EXPECT_EQ(mac_.calls, (CallList{{"remove private folder", folder}}));
    const Platform::Error busy{"busy", EBUSY};
    mac_.privateCopies.failures[folder] = busy;
    EXPECT_EQ(Helpers::removeLeftPackage(), busy);
}

}  // namespace
