#include "Helpers/PackageInstaller.h"

#include <gtest/gtest.h>

#include "support/FakeMac.h"

namespace {

class PackageInstaller : public testing::Test {
  protected:
    PackageInstaller() { mac_.files.addFile("/p/a b.pkg"); }

    TestSupport::FakeMac mac_;
    const Base::URL package_ = Base::URL::fileURL("/p/a b.pkg");
    const std::string command_ = "/usr/sbin/installer -pkg /p/a b.pkg -target /";
};

TEST_F(PackageInstaller, RunsTheSystemsToolOnTheRunningSystem) {
    EXPECT_EQ(Helpers::installPackage(package_), std::nullopt);
    ASSERT_EQ(mac_.tasks.argumentVectors.size(), 1U);
    EXPECT_EQ(*mac_.tasks.argumentVectors[0],
              (std::vector<std::string>{"-pkg", "/p/a b.pkg", "-target", "/"}));
    EXPECT_EQ(mac_.log.lines, std::vector<std::string>());
}

TEST_F(PackageInstaller, AnswersWithTheToolsOwnWordsWithoutTheirLineBreak) {
    mac_.tasks.results[command_] = {"", "installer: Error - the package is damaged.\n", 1};
    EXPECT_EQ(Helpers::installPackage(package_),
              (Platform::Error{"installer: Error - the package is damaged.", 1}));
}

TEST_F(PackageInstaller, AnswersInItsOwnWordsWhenTheToolHasNone) {
    mac_.tasks.results[command_] = {"", "", 9, Platform::TerminationReason::uncaughtSignal};
    EXPECT_EQ(Helpers::installPackage(package_),
              (Platform::Error{"The package \"/p/a b.pkg\" could not be installed.", 9}));
}

TEST_F(PackageInstaller, AnswersWithAnErrorForAPackageThatDoesNotExist) {
    EXPECT_EQ(Helpers::installPackage(Base::URL::fileURL("/none.pkg")),
              (Platform::Error{"The package \"/none.pkg\" does not exist.", 1}));
    EXPECT_EQ(mac_.callsOf("launch "), TestSupport::CallList());
}

TEST_F(PackageInstaller, AnswersWithAnErrorWhenTheToolCannotBeRun) {
    mac_.tasks.notExecutable = {"/usr/sbin/installer"};
    EXPECT_EQ(Helpers::installPackage(package_),
              (Platform::Error{"The system's installer tool /usr/sbin/installer cannot be run.", 1}));
}

}  // namespace
