// Somebody swaps a folder for a link, or moves it elsewhere, while the privileged work goes on.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "Platform/Linux/LinuxFileManager.h"
#include "Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Linux::LinuxFileManager;

constexpr int kVictimFiles = 40;
constexpr auto kTimePerTest = std::chrono::milliseconds(700);

void makeVictim(const std::string& path, uid_t owner) {
    makeFolder(path);
    for (int number = 0; number < kVictimFiles; ++number) {
        const std::string file = path + "/file " + std::to_string(number);
        makeFile(file, "", 0600);
        ASSERT_EQ(::lchown(file.c_str(), owner, static_cast<gid_t>(-1)), 0);
    }
}

void expectVictimUnharmed(const std::string& path, uid_t owner) {
    for (int number = 0; number < kVictimFiles; ++number) {
        EXPECT_EQ(statusOf(path + "/file " + std::to_string(number)).st_uid, owner);
    }
}

/// Goes on exchanging `folder` and `link` until it is destroyed.
class Swapper {
  public:
    Swapper(std::string folder, std::string link)
        : thread_([this, folder = std::move(folder), link = std::move(link)] {
              while (!ended_) {
                  swaps_ +=
                      ::renameat2(AT_FDCWD, folder.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE) == 0 ? 1
                                                                                                          : 0;
              }
          }) {}
    ~Swapper() {
        ended_ = true;
        thread_.join();
    }
    [[nodiscard]] int swaps() const { return swaps_; }

  private:
    std::atomic<bool> ended_ = false;
    std::atomic<int> swaps_ = 0;
    std::thread thread_;
};

void makeTree(const std::string& top) {
    makeFolder(top);
    for (int number = 0; number < 8; ++number) {
        const std::string folder = top + "/folder " + std::to_string(number);
        makeFolder(folder);
        makeFile(folder + "/file", "");
    }
}

TEST(SwappedLink, RemovalNeverReachesTheVictim) {
    const Scratch scratch;
    LinuxFileManager files;
    makeVictim(scratch.path("victim"), ::geteuid());
    const auto end = std::chrono::steady_clock::now() + kTimePerTest;
    int swaps = 0;
    while (std::chrono::steady_clock::now() < end) {
        makeTree(scratch.path("top"));
        makeLink(scratch.path("victim"), scratch.path("link"));
        {
            const Swapper swapper(scratch.path("top/folder 3"), scratch.path("link"));
            // The link may come in the way of the last step; the next removal takes the rest.
            (void)files.removeItem(scratch.url("top"));
            swaps += swapper.swaps();
        }
        for (const char* each : {"top", "link"}) {
            if (exists(scratch.path(each))) {
                EXPECT_FALSE(files.removeItem(scratch.url(each)));
            }
        }
        expectVictimUnharmed(scratch.path("victim"), ::geteuid());
    }
    EXPECT_GT(swaps, 0);
}

TEST(SwappedLink, OwnershipNeverReachesTheVictim) {
    const Scratch scratch;
    LinuxFileManager files;
    const bool root = ::geteuid() == 0;
    const uid_t victimOwner = root ? 1111 : ::geteuid();
    const uid_t newOwner = root ? 2222 : ::geteuid();
    makeVictim(scratch.path("victim"), victimOwner);
    makeTree(scratch.path("top"));
    makeLink(scratch.path("victim"), scratch.path("link"));
    const Swapper swapper(scratch.path("top/folder 3"), scratch.path("link"));
    const auto end = std::chrono::steady_clock::now() + kTimePerTest;
    while (std::chrono::steady_clock::now() < end) {
        files.setOwnerOfContents(scratch.url("top"), newOwner, ::getegid(), [](const Base::URL&, int) {});
    }
    expectVictimUnharmed(scratch.path("victim"), victimOwner);
    EXPECT_GT(swapper.swaps(), 0);
}

TEST(SwappedLink, CopyNeverReadsTheVictim) {
    const Scratch scratch;
    LinuxFileManager files;
    makeVictim(scratch.path("victim"), ::geteuid());
    makeTree(scratch.path("top"));
    makeLink(scratch.path("victim"), scratch.path("link"));
    const Swapper swapper(scratch.path("top/folder 3"), scratch.path("link"));
    const auto end = std::chrono::steady_clock::now() + kTimePerTest;
    while (std::chrono::steady_clock::now() < end) {
        (void)files.copyItem(scratch.url("top"), scratch.url("copy"));
        EXPECT_FALSE(S_ISDIR(statusOf(scratch.path("copy")).st_mode) &&
                     exists(scratch.path("copy/folder 3/file 0")) &&
                     !S_ISLNK(statusOf(scratch.path("copy/folder 3")).st_mode));
        EXPECT_FALSE(files.removeItem(scratch.url("copy")));
    }
    EXPECT_GT(swapper.swaps(), 0);
}

// The walk stands so deep that the folders above are closed; then its way down is moved next to the victim's
// files.
TEST(SwappedLink, RemovalDoesNotClimbOutOfTheTree) {
    const Scratch scratch;
    LinuxFileManager files;
    makeVictim(scratch.path("victim"), ::geteuid());
    const auto end = std::chrono::steady_clock::now() + kTimePerTest;
    int moves = 0;
    while (std::chrono::steady_clock::now() < end) {
        makeFolder(scratch.path("top"));
        makeDeepFolders(scratch.path("top"), 60);
        std::thread mover([&] {
            const int where = moves % 40;
            std::string folder = scratch.path("top");
            for (int level = 0; level < where; ++level) {
                folder += "/d";
            }
            const std::string moved = scratch.path("victim/moved");
            for (int attempt = 0; attempt < 20 && ::rename((folder + "/d").c_str(), moved.c_str()) != 0;
                 ++attempt) {
            }
        });
        (void)files.removeItem(scratch.url("top"));
        mover.join();
        ++moves;
        expectVictimUnharmed(scratch.path("victim"), ::geteuid());
        for (const char* each : {"top", "victim/moved"}) {
            if (exists(scratch.path(each))) {
                EXPECT_FALSE(files.removeItem(scratch.url(each)));
            }
        }
    }
}

}  // namespace
}  // namespace PlatformTests
