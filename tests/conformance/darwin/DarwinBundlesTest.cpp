// The macOS bundles over GNUstep's Foundation.
#include <unistd.h>

#include "BundlesContract.h"
#include "Platform/Darwin/DarwinBundles.h"

namespace PlatformTests {

using Platform::Darwin::DarwinBundles;

INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, BundlesContract, DarwinBundles);

namespace {

using DarwinResources = BundlesContract<DarwinBundles>;

class DarwinTexts : public BundlesContract<DarwinBundles> {
  protected:
    void makeTextTable(const std::string& localization, const std::string& text) {
        const std::string folder = "X.app/Contents/Resources/" + localization + ".lproj";
        makeFolder(scratch.path(folder));
        makeFile(scratch.path(folder + "/Words.strings"), text);
    }
};

TEST_F(DarwinTexts, AreFoundInTablesOfTheTextForm) {
    makeBundle();
    makeTextTable("en", "\"Quit\" = \"Quit \\\"now\\\"\";\n\"Empty\" = \"\";\n");
    const auto bundle = openWithInfo(kInfoXML);
    EXPECT_EQ(bundle->localizedString("Quit", "Words"), "Quit \"now\"");
    EXPECT_EQ(bundle->localizedString("Empty", "Words"), "");
}

TEST_F(DarwinTexts, AreNothingWhereThereIsNoKeyOrTable) {
    makeBundle();
    makeTextTable("en", "\"Quit\" = \"Quit\";\n");
    const auto bundle = openWithInfo(kInfoXML);
    EXPECT_EQ(bundle->localizedString("Quit", "Words"), "Quit");
    EXPECT_EQ(bundle->localizedString("Absent", "Words"), std::nullopt);
    EXPECT_EQ(bundle->localizedString("Quit", "Other"), std::nullopt);
    EXPECT_EQ(bundle->localizedString("\xff", "Words"), std::nullopt);
}

TEST_F(DarwinTexts, AreNothingInABrokenTable) {
    makeBundle();
    makeTextTable("en", "\"Quit\" = ");
    EXPECT_EQ(openWithInfo(kInfoXML)->localizedString("Quit", "Words"), std::nullopt);
}

// Where GNUstep is not like a Mac. A test here that fails says that BundleLookupContract can be held there
// now.

TEST_F(DarwinTexts, OnGNUstepAreNotFoundInTablesOfThePropertyListForm) {
    makeBundle();
    makeTextTable("en", propertyListXML("<key>Quit</key><string>Quit</string>\n"));
    EXPECT_EQ(openWithInfo(kInfoXML)->localizedString("Quit", "Words"), std::nullopt);
}

TEST_F(DarwinTexts, OnGNUstepDoNotFallBackToTheDevelopmentRegion) {
    makeBundle();
    makeTextTable("tlh", "\"Quit\" = \"bup\";\n");
    const auto bundle =
        openWithInfo(propertyListXML("<key>CFBundleDevelopmentRegion</key><string>tlh</string>\n"));
    EXPECT_EQ(bundle->localizedString("Quit", "Words"), std::nullopt);
}

TEST_F(DarwinResources, OnGNUstepNeedAType) {
    makeBundle();
    makeFile(scratch.path("X.app/Contents/Resources/plain"));
    EXPECT_EQ(openWithInfo(kInfoXML)->resource("plain", ""), std::nullopt);
}

// GNUstep takes a program outside a bundle for one that has a folder of its name below Resources.
TEST(DarwinMainBundle, OnGNUstepIsNotTheProgramsOwnFolder) {
    std::string program(4096, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", program.data(), program.size());
    ASSERT_GT(length, 0);
    program.resize(static_cast<std::size_t>(length));
    const Base::URL executable = Base::URL::fileURL(program);
    const auto bundle = DarwinBundles().mainBundle();
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->url(), executable.deletingLastPathComponent()
                                 .appendingPathComponent("Resources")
                                 .appendingPathComponent(executable.lastPathComponent()));
    EXPECT_EQ(bundle->infoString("CFBundleVersion"), std::nullopt);
}

}  // namespace
}  // namespace PlatformTests
