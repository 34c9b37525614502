#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "Platform/Linux/LinuxBundles.h"
#include "PropertyLists.h"
#include "Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Linux::LinuxBundles;
using namespace std::string_literals;

const std::string kXML =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\"><dict>\n"
    "<key>CFBundleShortVersionString</key><string>6.4.0</string>\n"
    "<key>CFBundleVersion</key><string>640 &amp; \xc3\xa9</string>\n"
    "<key>Empty</key><string></string>\n"
    "<key>Number</key><integer>5</integer><key>Flag</key><true/>\n"
    "<key>List</key><array><string>x</string></array>\n"
    "</dict></plist>\n";

class BundleTest : public testing::Test {
  protected:
    void makeBundle(std::string_view name) {
        makeFolder(scratch.path(name));
        makeFolder(scratch.path(std::string(name) + "/Contents"));
    }
    std::unique_ptr<Platform::Bundle> openWithInfo(const std::string& info) {
        if (!exists(scratch.path("X.app"))) {
            makeBundle("X.app");
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
    LinuxBundles bundles;
};

TEST_F(BundleTest, ReadsStringsOfAnXMLDictionary) {
    const auto bundle = openWithInfo(kXML);
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->url(), scratch.url("X.app"));
    EXPECT_EQ(bundle->infoString("CFBundleShortVersionString"), "6.4.0");
    EXPECT_EQ(bundle->infoString("CFBundleVersion"), "640 & \xc3\xa9");
    EXPECT_EQ(bundle->infoString("Empty"), "");
}

TEST_F(BundleTest, ReadsStringsOfABinaryDictionary) {
    const auto bundle = openWithInfo(binaryPropertyList({"\xD2\1\2\3\4"s,
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

TEST_F(BundleTest, GivesNothingForOtherTypesAndAbsentKeys) {
    const auto bundle = openWithInfo(kXML);
    ASSERT_TRUE(bundle);
    for (const char* key : {"Number", "Flag", "List", "Absent", ""}) {
        EXPECT_EQ(bundle->infoString(key), std::nullopt) << key;
    }
}

TEST_F(BundleTest, OpensAFolderWithoutADictionary) {
    makeFolder(scratch.path("Plain"));
    const auto bundle = bundles.open(scratch.url("Plain"));
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->infoString("CFBundleVersion"), std::nullopt);
}

TEST_F(BundleTest, IsNullWhereThereIsNoFolder) {
    makeFile(scratch.path("file"));
    EXPECT_EQ(bundles.open(scratch.url("file")), nullptr);
    EXPECT_EQ(bundles.open(scratch.url("missing")), nullptr);
    makeFolder(scratch.path("closed"), 0);
    const auto result = withoutPrivileges([this] { return bundles.open(scratch.url("closed")) ? 1 : 0; });
    EXPECT_EQ(result, std::optional(0));
}

TEST_F(BundleTest, IsReadAfreshOnEveryOpening) {
    const auto first = openWithInfo(kXML);
    std::string changed = kXML;
    changed.replace(changed.find("6.4.0"), 5, "7.0.0");
    const auto second = openWithInfo(changed);
    EXPECT_EQ(first->infoString("CFBundleShortVersionString"), "6.4.0");
    EXPECT_EQ(second->infoString("CFBundleShortVersionString"), "7.0.0");
}

TEST_F(BundleTest, StandsBrokenDictionaries) {
    expectWithoutInfo("");
    expectWithoutInfo("no property list at all");
    expectWithoutInfo("<plist version=\"1.0\"><array><string>CFBundleVersion</string></array></plist>");
    expectWithoutInfo("bplist00");
    expectWithoutInfo("bplist00" + std::string(40, '\xFF'));
    expectWithoutInfo(std::string(2 << 20, '<'));
    expectWithoutInfo(binaryPropertyList({"\xA1\0"s}));
    for (std::size_t length = 0; length < kXML.size(); length += 7) {
        EXPECT_TRUE(openWithInfo(kXML.substr(0, length)));
    }
}

TEST_F(BundleTest, StandsAHundredThousandNestedArrays) {
    expectWithoutInfo(nestedArraysXML(100'000));
    expectWithoutInfo(nestedArraysBinary(100'000));
    expectWithoutInfo(nestedArraysXML(1'000'000).substr(0, 7'000'000));
}

// What passes the bound has to be safe on a thread's stack too.
TEST_F(BundleTest, StandsTheDeepestNestingThatIsLetThrough) {
    std::thread reader([this] { expectWithoutInfo(nestedArraysXML(4000)); });
    reader.join();
}

TEST_F(BundleTest, DoesNotWaitForAFIFO) {
    makeBundle("X.app");
    ASSERT_EQ(::mkfifo(scratch.path("X.app/Contents/Info.plist").c_str(), 0600), 0);
    const auto bundle = bundles.open(scratch.url("X.app"));
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->infoString("CFBundleVersion"), std::nullopt);
}

TEST_F(BundleTest, FindsResourcesThatAreThere) {
    const auto bundle = openWithInfo(kXML);
    makeFolder(scratch.path("X.app/Contents/Resources"));
    makeFile(scratch.path("X.app/Contents/Resources/support.pkg"));
    makeFile(scratch.path("X.app/Contents/Resources/plain"));
    EXPECT_EQ(bundle->resource("support", "pkg"), scratch.url("X.app/Contents/Resources/support.pkg"));
    EXPECT_EQ(bundle->resource("plain", ""), scratch.url("X.app/Contents/Resources/plain"));
    EXPECT_EQ(bundle->resource("support", "zip"), std::nullopt);
}

TEST_F(BundleTest, IsTheApplicationThatTheProgramLiesIn) {
    openWithInfo(kXML);
    LinuxBundles inside(scratch.path("X.app/Contents/MacOS/X"));
    EXPECT_EQ(inside.mainBundle()->url(), scratch.url("X.app"));
    EXPECT_EQ(inside.mainBundle()->infoString("CFBundleShortVersionString"), "6.4.0");
}

TEST_F(BundleTest, IsTheProgramsFolderOutsideAnApplication) {
    LinuxBundles tool(scratch.path("Contents/MacOS/tool"));
    EXPECT_EQ(tool.mainBundle()->url(), scratch.url("Contents/MacOS"));
    LinuxBundles other(scratch.path("X.app/Contents/Other/tool"));
    EXPECT_EQ(other.mainBundle()->url(), scratch.url("X.app/Contents/Other"));
    std::string own(4096, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", own.data(), own.size());
    ASSERT_GT(length, 0);
    own.resize(static_cast<std::size_t>(length));
    EXPECT_EQ(bundles.mainBundle()->url(), Base::URL::fileURL(own).deletingLastPathComponent());
}

TEST_F(BundleTest, OutlivesItsFiles) {
    LinuxBundles removed(scratch.path("Gone.app/Contents/MacOS/Gone"));
    const auto bundle = removed.mainBundle();
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->url(), scratch.url("Gone.app"));
    EXPECT_EQ(bundle->infoString("CFBundleVersion"), std::nullopt);
}

}  // namespace
}  // namespace PlatformTests
