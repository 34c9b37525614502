#pragma once

#include "BundlesContract.h"

/// What every Bundles promises of resources without a type and of the texts in string tables.
namespace PlatformTests {

template <class Implementation>
class BundleLookupContract : public BundlesContract<Implementation> {
  protected:
    void makeTable(const std::string& localization, const std::string& entries) {
        const std::string folder = "X.app/Contents/Resources/" + localization + ".lproj";
        makeFolder(this->scratch.path(folder));
        makeFile(this->scratch.path(folder + "/Words.strings"), propertyListXML(entries));
    }
};

TYPED_TEST_SUITE_P(BundleLookupContract);

TYPED_TEST_P(BundleLookupContract, FindsAResourceWithoutAType) {
    this->makeBundle();
    makeFile(this->scratch.path("X.app/Contents/Resources/plain"));
    const auto bundle = this->openWithInfo(kInfoXML);
    EXPECT_EQ(bundle->resource("plain", ""), this->scratch.url("X.app/Contents/Resources/plain"));
}

TYPED_TEST_P(BundleLookupContract, FindsTextsOfTheDevelopmentRegion) {
    this->makeBundle();
    this->makeTable("en",
                    "<key>Quit</key><string>Quit \xc3\xa9 now</string>\n<key>Empty</key><string></string>\n");
    const auto bundle = this->openWithInfo(kInfoXML);
    EXPECT_EQ(bundle->localizedString("Quit", "Words"), "Quit \xc3\xa9 now");
    EXPECT_EQ(bundle->localizedString("Empty", "Words"), "");
}

TYPED_TEST_P(BundleLookupContract, GivesNoTextForAnAbsentKeyOrTable) {
    this->makeBundle();
    this->makeTable("en", "<key>Quit</key><string>Quit</string>\n");
    const auto bundle = this->openWithInfo(kInfoXML);
    EXPECT_EQ(bundle->localizedString("Absent", "Words"), std::nullopt);
    EXPECT_EQ(bundle->localizedString("Quit", "Other"), std::nullopt);
}

TYPED_TEST_P(BundleLookupContract, GivesNoTextOfABrokenTable) {
    this->makeBundle();
    this->makeTable("en", "");
    makeFile(this->scratch.path("X.app/Contents/Resources/en.lproj/Words.strings"), "<plist><dict><key>Quit");
    EXPECT_EQ(this->openWithInfo(kInfoXML)->localizedString("Quit", "Words"), std::nullopt);
}

TYPED_TEST_P(BundleLookupContract, FallsBackToTheDevelopmentRegion) {
    this->makeBundle();
    this->makeTable("tlh", "<key>Quit</key><string>bup</string>\n");
    const auto bundle =
        this->openWithInfo(propertyListXML("<key>CFBundleDevelopmentRegion</key><string>tlh</string>\n"));
    EXPECT_EQ(bundle->localizedString("Quit", "Words"), "bup");
}

REGISTER_TYPED_TEST_SUITE_P(BundleLookupContract, FindsAResourceWithoutAType,
                            FindsTextsOfTheDevelopmentRegion, GivesNoTextForAnAbsentKeyOrTable,
                            GivesNoTextOfABrokenTable, FallsBackToTheDevelopmentRegion);

}  // namespace PlatformTests
