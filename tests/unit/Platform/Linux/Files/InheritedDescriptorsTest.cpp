// No program that is started inherits a file, a socket or a pipe of ours.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <string>

#include "Platform/Linux/Bundles/LinuxBundles.h"
#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Platform/Linux/Processes/LinuxSystemLog.h"
#include "Platform/Posix/PosixFileManager.h"
#include "Platform/Posix/PosixPrivateCopies.h"
#include "Platform/Posix/PosixTaskRunner.h"
#include "support/Scratch.h"
#include "support/SystemCalls.h"

namespace PlatformTests {
namespace {

class InheritedDescriptors : public testing::Test {
  protected:
    InheritedDescriptors() {
        makeFolder(path("top"));
        makeFolder(path("top/folder"));
        makeFile(path("top/folder/file"), "contents");
        makeLink("folder", path("top/link"));
        EXPECT_EQ(::mkfifo(path("top/fifo").c_str(), 0600), 0);
    }
    [[nodiscard]] std::string path(const char* name) const { return scratch_.path(name); }

    Scratch scratch_;
    Platform::Posix::PosixFileManager files_;
};

TEST_F(InheritedDescriptors, AreNoneOfAnOpenFileWithoutTheFlag) {
    EXPECT_EQ(descriptorsLeftToChildren([&] { ::close(::open(path("top").c_str(), O_RDONLY)); }), 1);
    EXPECT_EQ(descriptorsLeftToChildren([&] { ::close(::open(path("top").c_str(), O_RDONLY | O_CLOEXEC)); }),
              0);
}

TEST_F(InheritedDescriptors, AreNoneOfACopy) {
    EXPECT_EQ(descriptorsLeftToChildren(
                  [&] { EXPECT_FALSE(files_.copyItem(scratch_.url("top"), scratch_.url("copy"))); }),
              0);
}

TEST_F(InheritedDescriptors, AreNoneOfARemoval) {
    EXPECT_EQ(descriptorsLeftToChildren([&] { EXPECT_FALSE(files_.removeItem(scratch_.url("top"))); }), 0);
}

TEST_F(InheritedDescriptors, AreNoneOfAChangeOfOwnersAndModes) {
    EXPECT_EQ(descriptorsLeftToChildren([&] {
                  files_.setOwnerOfContents(scratch_.url("top"), ::geteuid(), ::getegid(),
                                            [](const Base::URL& item, int) { ADD_FAILURE() << item.path(); });
                  EXPECT_EQ(files_.setOwner(scratch_.url("top"), ::geteuid(), ::getegid()), 0);
                  EXPECT_EQ(files_.setMode(scratch_.url("top/folder/file"), 0600), 0);
              }),
              0);
}

TEST_F(InheritedDescriptors, AreNoneOfFoldersThatAreMadeAndLookedInto) {
    EXPECT_EQ(descriptorsLeftToChildren([&] {
                  Platform::Error error;
                  EXPECT_FALSE(files_.createDirectory(scratch_.url("a/b/c"), true));
                  EXPECT_EQ(files_.hasVisibleEntries(scratch_.url("top"), error), std::optional(true));
              }),
              0);
}

TEST_F(InheritedDescriptors, AreNoneOfAPrivateCopy) {
    makeFolder(path("Tools"));
    const auto copy = [&] {
        Platform::Posix::PosixPrivateCopies copies(
            Platform::Posix::PrivateFolder::Ground{scratch_.path(), ::geteuid()}, {});
        Platform::Error error;
        EXPECT_NE(
            copies.copy(scratch_.url("top/folder/file"), scratch_.url("Tools/folder/copy"), 1000, error),
            nullptr)
            << error.description;
    };
    // The library that hashes reads its own settings the first time.
    copy();
    EXPECT_EQ(descriptorsLeftToChildren(copy), 0);
}

TEST_F(InheritedDescriptors, AreNoneOfATask) {
    EXPECT_EQ(descriptorsLeftToChildren([&] {
                  const auto task = Platform::Posix::PosixTaskRunner().launch("/bin/true", std::nullopt);
                  task->waitUntilExit();
                  EXPECT_EQ(task->readOutputToEnd(), "");
              }),
              0);
}

TEST_F(InheritedDescriptors, AreNoneOfABundleAndAProcess) {
    makeFolder(path("X.app"));
    makeFolder(path("X.app/Contents"));
    makeFile(path("X.app/Contents/Info.plist"), "<plist version=\"1.0\"><dict/></plist>\n");
    EXPECT_EQ(descriptorsLeftToChildren([&] {
                  EXPECT_NE(Platform::Linux::LinuxBundles().open(scratch_.url("X.app")), nullptr);
                  std::array<char, 1024> text{};
                  Platform::Linux::LinuxProcessTable table;
                  EXPECT_GT(table.name(::getpid(), text), 0);
                  EXPECT_GT(table.path(::getpid(), text), 0);
                  EXPECT_GT(table.listPids(Platform::PidListType::all, 0, {}), 0);
              }),
              0);
}

TEST_F(InheritedDescriptors, AreNoneOfTheLog) {
    EXPECT_EQ(
        descriptorsLeftToChildren([&] { Platform::Linux::LinuxSystemLog(path("nobody")).log("unheard"); }),
        0);
}

}  // namespace
}  // namespace PlatformTests
