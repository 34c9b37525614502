#include <gtest/gtest.h>

#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "support/FakeMac.h"

namespace {

using namespace NorvikCommon;

class SystemPathProviderTest : public testing::Test {
  protected:
    TestSupport::FakeMac mac_;
};

TEST_F(SystemPathProviderTest, NamesTheSystemsPlaces) {
    EXPECT_EQ(SystemPathProvider::daemonsPlists().path(), "/Library/LaunchDaemons");
    EXPECT_EQ(SystemPathProvider::userAgentsPlists().path(), "/Library/LaunchAgents");
    EXPECT_EQ(SystemPathProvider::extensions().path(), "/Library/Extensions");
    EXPECT_EQ(SystemPathProvider::lsRegisterDatabase().path(),
              "/System/Library/Frameworks/CoreServices.framework/Frameworks/LaunchServices.framework/Support/"
              "lsregister");
    EXPECT_EQ(SystemPathProvider::launchctlExecutable().path(), "/bin/launchctl");
    EXPECT_EQ(SystemPathProvider::localApplications().path(), "/Applications");
    EXPECT_EQ(SystemPathProvider::localApplicationSupport().path(), "/Library/Application Support");
}

}  // namespace
