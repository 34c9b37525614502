#include <gtest/gtest.h>

#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"
#include "support/FakeMac.h"

namespace {

using namespace NorvikCommon;

class FeaturePathProviderTest : public testing::Test {
  protected:
    TestSupport::FakeMac mac_;
};

TEST_F(FeaturePathProviderTest, NamesTheFilesOfTheDataFolder) {
    const std::string folder = "/Library/Application Support/NORVIK/SNT/";
    EXPECT_EQ(FeaturePathProvider::quarantineFolder().path(), folder + "Quarantine");
    EXPECT_EQ(FeaturePathProvider::quarantineDatabase().path(), folder + "quarantine.db");
    EXPECT_EQ(FeaturePathProvider::settingsPlist().location->path(), folder + "settings.plist");
    EXPECT_EQ(FeaturePathProvider::settingsPlist().name, "settings.plist");
    EXPECT_EQ(FeaturePathProvider::avBases().location->path(), folder + "bases.nvb");
    EXPECT_EQ(FeaturePathProvider::repairFolder().path(), folder + "Repair");
    EXPECT_EQ(FeaturePathProvider::logDirectory().path(), folder + "Logs");
    EXPECT_EQ(FeaturePathProvider::logFileExtension, "log");
    EXPECT_EQ(FeaturePathProvider::containmentServiceFolder().path(), folder + "ContainmentRoot");
    EXPECT_EQ(FeaturePathProvider::preferencesFolder().path(), "/Users/Shared/Norvik");
}

TEST_F(FeaturePathProviderTest, ThreeStoragesShareOneFile) {
    const std::string file = "/Library/Application Support/NORVIK/SNT/filerating.db";
    EXPECT_EQ(FeaturePathProvider::flsStorage().path(), file);
    EXPECT_EQ(FeaturePathProvider::verdictStorage().path(), file);
    EXPECT_EQ(FeaturePathProvider::fileRatingStorage().path(), file);
}

}  // namespace
