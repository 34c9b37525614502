#include <unistd.h>

#include "BundleLookupContract.h"
#include "Platform/Linux/Bundles/LinuxBundles.h"

namespace PlatformTests {

using Platform::Linux::LinuxBundles;

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, BundlesContract, LinuxBundles);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, BundleLookupContract, LinuxBundles);

namespace {

using MainBundle = BundlesContract<LinuxBundles>;

TEST_F(MainBundle, IsTheApplicationThatTheProgramLiesIn) {
    openWithInfo(kInfoXML);
    LinuxBundles inside(scratch.path("X.app/Contents/MacOS/X"));
    EXPECT_EQ(inside.mainBundle()->url(), scratch.url("X.app"));
    EXPECT_EQ(inside.mainBundle()->infoString("CFBundleShortVersionString"), "6.4.0");
}

TEST_F(MainBundle, IsTheProgramsFolderOutsideAnApplication) {
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

TEST_F(MainBundle, OutlivesItsFiles) {
    LinuxBundles removed(scratch.path("Gone.app/Contents/MacOS/Gone"));
    const auto bundle = removed.mainBundle();
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->url(), scratch.url("Gone.app"));
    EXPECT_EQ(bundle->infoString("CFBundleVersion"), std::nullopt);
}

}  // namespace
}  // namespace PlatformTests
