#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>

#include "Platform/Bundles.h"
#include "PropertyLists.h"
#include "support/Scratch.h"

/// What every Bundles promises, for any implementation that reads real folders. Looking things up by other
/// than their whole name is in BundleLookupContract.h.
namespace PlatformTests {

inline std::string propertyListXML(const std::string& entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\"><dict>\n" +
           entries + "</dict></plist>\n";
}

inline const std::string kInfoXML = propertyListXML(
    "<key>CFBundleShortVersionString</key><string>6.4.0</string>\n"
    "<key>CFBundleVersion</key><string>640 &amp; \xc3\xa9</string>\n"
    "<key>CFBundleDevelopmentRegion</key><string>en</string>\n"
    "<key>Empty</key><string></string>\n"
    "<key>Number</key><integer>5</integer><key>Flag</key><true/>\n"
    "<key>List</key><array><string>x</string></array>\n");

template <class Implementation>
class BundlesContract : public testing::Test {
  protected:
    void makeBundle(const std::string& name = "X.app") {
        makeFolder(scratch.path(name));
        makeFolder(scratch.path(name + "/Contents"));
        makeFolder(scratch.path(name + "/Contents/Resources"));
    }
    std::unique_ptr<Platform::Bundle> openWithInfo(const std::string& info) {
        if (!exists(scratch.path("X.app"))) {
            makeBundle();
        }
        makeFile(scratch.path("X.app/Contents/Info.plist"), info);
        return bundles.open(scratch.url("X.app"));
    }
    void expectWithoutInfo(const std::string& info) {
        const auto bundle = openWithInfo(info);
        ASSERT_TRUE(bundle);
        EXPECT_EQ(bundle->infoString("CFBundleVersion"), std::nullopt);
    }

    Scratch scratch;
    Implementation bundles;
};

TYPED_TEST_SUITE_P(BundlesContract);

TYPED_TEST_P(BundlesContract, ReadsStringsOfAnXMLDictionary) {
    const auto bundle = this->openWithInfo(kInfoXML);
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->url(), this->scratch.url("X.app"));
    EXPECT_EQ(bundle->infoString("CFBundleShortVersionString"), "6.4.0");
    EXPECT_EQ(bundle->infoString("CFBundleVersion"), "640 & \xc3\xa9");
    EXPECT_EQ(bundle->infoString("Empty"), "");
}

TYPED_TEST_P(BundlesContract, ReadsStringsOfABinaryDictionary) {
    using namespace std::string_literals;
    const auto bundle = this->openWithInfo(binaryPropertyList({"\xD2\1\2\3\4"s,
                                                               "\x5F\x10\x0F"
                                                               "CFBundleVersion"s,
                                                               "\x56Number"s,
                                                               "\x53"
                                                               "640"s,
                                                               "\x10\5"s}));
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->infoString("CFBundleVersion"), "640");
    EXPECT_EQ(bundle->infoString("Number"), std::nullopt);
}

TYPED_TEST_P(BundlesContract, GivesNothingForOtherTypesAndAbsentKeys) {
    const auto bundle = this->openWithInfo(kInfoXML);
    ASSERT_TRUE(bundle);
    for (const char* key : {"Number", "Flag", "List", "Absent", "", "\xff"}) {
        EXPECT_EQ(bundle->infoString(key), std::nullopt) << key;
    }
}

TYPED_TEST_P(BundlesContract, OpensAFolderWithoutADictionary) {
    makeFolder(this->scratch.path("Plain"));
    const auto bundle = this->bundles.open(this->scratch.url("Plain"));
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->url(), this->scratch.url("Plain"));
    EXPECT_EQ(bundle->infoString("CFBundleVersion"), std::nullopt);
}

TYPED_TEST_P(BundlesContract, IsNullWhereThereIsNoFolder) {
    makeFile(this->scratch.path("file"));
    EXPECT_EQ(this->bundles.open(this->scratch.url("file")), nullptr);
    EXPECT_EQ(this->bundles.open(this->scratch.url("missing")), nullptr);
    makeFolder(this->scratch.path("closed"), 0);
    const auto result =
        withoutPrivileges([this] { return this->bundles.open(this->scratch.url("closed")) ? 1 : 0; });
    EXPECT_EQ(result, std::optional(0));
}

TYPED_TEST_P(BundlesContract, IsReadAfreshOnEveryOpening) {
    const auto first = this->openWithInfo(kInfoXML);
    std::string changed = kInfoXML;
    changed.replace(changed.find("6.4.0"), 5, "7.0.0");
    const auto second = this->openWithInfo(changed);
    EXPECT_EQ(first->infoString("CFBundleShortVersionString"), "6.4.0");
    EXPECT_EQ(second->infoString("CFBundleShortVersionString"), "7.0.0");
}

TYPED_TEST_P(BundlesContract, StandsBrokenDictionaries) {
    using namespace std::string_literals;
    this->expectWithoutInfo("");
    this->expectWithoutInfo("no property list at all");
    this->expectWithoutInfo("<plist version=\"1.0\"><array><string>CFBundleVersion</string></array></plist>");
    this->expectWithoutInfo("bplist00");
    this->expectWithoutInfo("bplist00" + std::string(40, '\xFF'));
    this->expectWithoutInfo(std::string(2 << 20, '<'));
    this->expectWithoutInfo(binaryPropertyList({"\xA1\0"s}));
    for (std::size_t length = 0; length < kInfoXML.size(); length += 7) {
        EXPECT_TRUE(this->openWithInfo(kInfoXML.substr(0, length)));
    }
}

TYPED_TEST_P(BundlesContract, StandsAHundredThousandNestedArrays) {
    this->expectWithoutInfo(nestedArraysXML(100'000));
    this->expectWithoutInfo(nestedArraysBinary(100'000));
    this->expectWithoutInfo(nestedArraysXML(1'000'000).substr(0, 7'000'000));
}

// What passes the bound has to be safe on a thread's stack too.
TYPED_TEST_P(BundlesContract, SurvivesTheDeepestNestingThatIsAccepted) {
    std::thread reader([this] { this->expectWithoutInfo(nestedArraysXML(4000)); });
    reader.join();
}

TYPED_TEST_P(BundlesContract, DoesNotWaitForAFIFO) {
    this->makeBundle();
    ASSERT_EQ(::mkfifo(this->scratch.path("X.app/Contents/Info.plist").c_str(), 0600), 0);
    const auto bundle = this->bundles.open(this->scratch.url("X.app"));
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->infoString("CFBundleVersion"), std::nullopt);
}

TYPED_TEST_P(BundlesContract, FindsResourcesThatAreThere) {
    this->makeBundle();
    makeFile(this->scratch.path("X.app/Contents/Resources/support.pkg"));
    const auto bundle = this->openWithInfo(kInfoXML);
    EXPECT_EQ(bundle->resource("support", "pkg"), this->scratch.url("X.app/Contents/Resources/support.pkg"));
    EXPECT_EQ(bundle->resource("support", "zip"), std::nullopt);
    EXPECT_EQ(bundle->resource("absent", ""), std::nullopt);
}

REGISTER_TYPED_TEST_SUITE_P(BundlesContract, ReadsStringsOfAnXMLDictionary, ReadsStringsOfABinaryDictionary,
                            GivesNothingForOtherTypesAndAbsentKeys, OpensAFolderWithoutADictionary,
                            IsNullWhereThereIsNoFolder, IsReadAfreshOnEveryOpening, StandsBrokenDictionaries,
                            StandsAHundredThousandNestedArrays, SurvivesTheDeepestNestingThatIsAccepted,
                            DoesNotWaitForAFIFO, FindsResourcesThatAreThere);

}  // namespace PlatformTests
