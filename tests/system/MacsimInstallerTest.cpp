#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "support/SimulatedMac.h"

namespace {

using TestSupport::ProgramResult;
using TestSupport::runProgram;
using TestSupport::SimulatedMac;

constexpr const char* kInfo =
    "<pkg-info format-version=\"2\" identifier=\"com.example.test\" version=\"1.0\" "
    "install-location=\"/\"/>\n";

class MacsimInstaller : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(mac_.create().status, 0); }

    /// Makes /tmp/test.pkg from a PackageInfo and the files that `makeRoot` (a shell line) leaves in ./root.
    void makePackage(const std::string& info, const std::string& makeRoot,
                     const std::string& cpioOptions = "") {
        const std::string script = "set -e; cd \"$1\"; mkdir root package; " + makeRoot +
                                   "; bsdtar -cz --format=cpio " + cpioOptions +
                                   " -f package/Payload -C root .; printf '%s' \"$2\" >package/PackageInfo; "
                                   "bsdtar -c --format=xar -f test.pkg -C package PackageInfo Payload";
        const ProgramResult made = runProgram({"sh", "-c", script, "sh", mac_.scratch(), info});
        ASSERT_EQ(made.status, 0) << made.err;
        mac_.putCopy("/tmp/test.pkg", mac_.scratch() + "/test.pkg", 0644);
    }

    ProgramResult install(const std::string& user = "root") {
        return mac_.run({}, {"installer", "-pkg", "/tmp/test.pkg", "-target", "/"}, user);
    }

    void expectRefused(const std::string& absent) {
        const ProgramResult result = install();
        EXPECT_EQ(result.status, 1) << result.out;
        EXPECT_TRUE(result.err.starts_with("installer: Error - ")) << result.err;
        EXPECT_FALSE(mac_.exists(absent)) << absent;
        EXPECT_FALSE(mac_.exists("/var/db/receipts"));
    }

    SimulatedMac mac_;
};

TEST_F(MacsimInstaller, InstallsTheRuntimePackage) {
    mac_.putCopy("/tmp/test.pkg", SENTREL_RUNTIME_PACKAGE, 0644);
    const ProgramResult result = install();
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(result.out.ends_with("installer: The install was successful.\n")) << result.out;
    EXPECT_TRUE(mac_.exists("/usr/local/lib/swift/libswiftCore.dylib"));
    EXPECT_TRUE(mac_.exists("/var/db/receipts/com.norvik.SwiftRuntimeForCommandLineTools.plist"));
}

TEST_F(MacsimInstaller, NeedsRoot) {
    mac_.putCopy("/tmp/test.pkg", SENTREL_RUNTIME_PACKAGE, 0644);
    const ProgramResult result = install("alice");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "installer: Must be run as root to install this package.\n");
}

TEST_F(MacsimInstaller, RefusesAFileThatIsNotAPackage) {
    expectRefused("/nothing");
    mac_.put("/tmp/test.pkg", "no package at all");
    expectRefused("/nothing");
    mac_.put("/tmp/test.pkg", "");
    expectRefused("/nothing");
}

TEST_F(MacsimInstaller, RefusesATruncatedPackage) {
    makePackage(kInfo, "mkdir -p root/usr/local; echo x >root/usr/local/file");
    std::filesystem::resize_file(mac_.path("/tmp/test.pkg"),
                                 std::filesystem::file_size(mac_.path("/tmp/test.pkg")) - 40);
    expectRefused("/usr/local/file");
}

TEST_F(MacsimInstaller, RefusesAPackageInfoWithoutAnUsableIdentifier) {
    makePackage("<pkg-info version=\"1.0\"/>", "mkdir -p root/usr/local; echo x >root/usr/local/file");
    expectRefused("/usr/local/file");
}

TEST_F(MacsimInstaller, RefusesAnIdentifierThatLeavesTheReceiptsFolder) {
    makePackage("<pkg-info identifier=\"../../tmp/evil\" version=\"1.0\"/>",
                "mkdir -p root/usr/local; echo x >root/usr/local/file");
    expectRefused("/tmp/evil.plist");
}

TEST_F(MacsimInstaller, RefusesAPayloadThatLeavesItsTarget) {
    makePackage(kInfo, "mkdir -p root/usr/local; echo x >root/usr/local/file",
                "-P -s '#^\\./usr/local/file$#usr/../../evil#'");
    expectRefused("/evil");
}

TEST_F(MacsimInstaller, InstallsAPackageOfItsOwnMaking) {
    makePackage(kInfo, "mkdir -p root/usr/local; echo x >root/usr/local/file");
    EXPECT_EQ(install().status, 0);
    EXPECT_EQ(mac_.contents("/usr/local/file"), "x\n");
    EXPECT_TRUE(mac_.exists("/var/db/receipts/com.example.test.plist"));
}

TEST_F(MacsimInstaller, LsregisterNotesWhatIsRegistered) {
    ASSERT_EQ(mac_.shell("/System/Library/Frameworks/CoreServices.framework/Frameworks/"
                         "LaunchServices.framework/Support/"
                         "lsregister -r -f '/Library/Application Support/NORVIK/SNT'")
                  .status,
              0);
    EXPECT_EQ(mac_.contents("/var/db/lsregister.log"), "-r\t-f\t/Library/Application Support/NORVIK/SNT\n");
}

}  // namespace
