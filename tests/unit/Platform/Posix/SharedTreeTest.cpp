// A tree with work for several threads is not left to one.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <set>
#include <string>
#include <thread>

#include "Interference.h"
#include "Platform/Posix/PosixFileManager.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Posix::Moment;

class SharedTree : public testing::Test {
  protected:
    /// The work below is done folder by folder; another thread has this long to join.
    static constexpr int kFolders = 1000;
    static constexpr std::chrono::milliseconds kWait{200};

    SharedTree() {
        makeFolder(scratch_.path("top"));
        for (int number = 0; number < kFolders; ++number) {
            const std::string folder = scratch_.path("top/" + std::to_string(number));
            makeFolder(folder);
            makeFile(folder + "/file");
        }
    }
    /// How many threads come to this moment of a file while `work` is done; stops counting at two.
    [[nodiscard]] std::size_t threadsAt(Moment moment, const std::function<void()>& work) {
        std::set<std::thread::id> threads;
        Interference interference(moment, "file", [&](int) {
            threads.insert(std::this_thread::get_id());
            if (threads.size() < 2) {
                std::this_thread::sleep_for(kWait);
            }
        });
        interference.always();
        work();
        return threads.size();
    }

    Scratch scratch_;
    Platform::Posix::PosixFileManager files_;
};

TEST_F(SharedTree, IsRemovedBySeveralThreads) {
    EXPECT_GE(threadsAt(Moment::removing, [&] { EXPECT_FALSE(files_.removeItem(scratch_.url("top"))); }), 2U);
    EXPECT_FALSE(exists(scratch_.path("top")));
}

TEST_F(SharedTree, IsCopiedBySeveralThreads) {
    EXPECT_GE(threadsAt(Moment::copying,
                        [&] { EXPECT_FALSE(files_.copyItem(scratch_.url("top"), scratch_.url("copy"))); }),
              2U);
    EXPECT_TRUE(exists(scratch_.path("copy/0/file")));
}

TEST_F(SharedTree, IsGivenAwayBySeveralThreads) {
    EXPECT_GE(threadsAt(Moment::givingOwner,
                        [&] {
                            files_.setOwnerOfContents(
                                scratch_.url("top"), ::geteuid(), ::getegid(),
                                [](const Base::URL& item, int) { ADD_FAILURE() << item.path(); });
                        }),
              2U);
}

}  // namespace
}  // namespace PlatformTests
