#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <thread>

#include "Platform/Posix/PosixPrivateCopies.h"
#include "Platform/Posix/SHA256.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Error;
using Platform::PrivateCopy;
using Platform::Posix::PosixPrivateCopies;

constexpr std::uint64_t kPlenty = 1 << 20;
// As sha256sum says.
constexpr const char* kOfContents = "d1b2a59fbea7e20077af9f91b27e95e865061b270be03ff539ab3b73587882e8";
constexpr const char* kOfNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

class PrivateCopies : public testing::Test {
  protected:
    PrivateCopies() {
        makeFolder(scratch_.path("Tools"));
        makeFolder(scratch_.path("user"));
        makeFile(file_);
    }

    [[nodiscard]] std::unique_ptr<PrivateCopy> copy(std::uint64_t atMost = kPlenty) {
        return copies_.copy(Base::URL::fileURL(file_), destination_, atMost, error_);
    }
    void expectRefused(const std::string& path, int code) {
        EXPECT_EQ(copy(), nullptr);
        EXPECT_EQ(error_.code, code) << error_.description;
        EXPECT_TRUE(error_.description.starts_with("\"" + path + "\" could not be ")) << error_.description;
    }
    void expectNothingLeft() const { EXPECT_FALSE(exists(folder_)); }

    Scratch scratch_;
    const std::string file_ = scratch_.path("user/a.pkg");
    const std::string folder_ = scratch_.path("Tools/helper.package");
    const std::string copy_ = folder_ + "/copy.pkg";
    const Base::URL destination_ = Base::URL::fileURL(copy_);
    const Platform::Posix::PrivateFolder::Ground ground_{scratch_.path(), ::geteuid()};
    std::function<void(std::uint64_t)> step_;
    PosixPrivateCopies copies_{ground_, [this](std::uint64_t copied) {
                                   if (step_) {
                                       step_(copied);
                                   }
                               }};
    Error error_;
};

TEST(SHA256, HashesWhatComesInParts) {
    Platform::Posix::SHA256 digest;
    digest.add("cont", 4);
    digest.add("", 0);
    digest.add("ents", 4);
    EXPECT_EQ(digest.finish(), kOfContents);
    EXPECT_EQ(Platform::Posix::SHA256().finish(), kOfNothing);
}

TEST_F(PrivateCopies, LivesInAFolderOfItsOwnerAlone) {
    const auto made = copy();
    ASSERT_NE(made, nullptr) << error_.description;
    EXPECT_EQ(contentsOf(copy_), "contents");
    EXPECT_EQ(made->size(), 8U);
    EXPECT_EQ(made->sha256(), kOfContents);
    EXPECT_EQ(statusOf(folder_).st_mode, S_IFDIR | 0700U);
    EXPECT_EQ(statusOf(copy_).st_mode, S_IFREG | 0400U);
    EXPECT_EQ(contentsOf(file_), "contents");
}

TEST_F(PrivateCopies, TheFolderIsItsOwnersAloneWhateverTheUmask) {
    const mode_t before = ::umask(0277);
    const auto made = copy();
    ::umask(before);
    ASSERT_NE(made, nullptr) << error_.description;
    EXPECT_EQ(statusOf(folder_).st_mode, S_IFDIR | 0700U);
}

TEST_F(PrivateCopies, GoesWithTheFolderWhenItIsLetGo) {
    const int before = openDescriptors();
    copy().reset();
    expectNothingLeft();
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(PrivateCopies, AFileOfManyPartsIsCopiedWhole) {
    const std::string large(3 * (1 << 16) + 17, 'x');
    makeFile(file_, large);
    Platform::Posix::SHA256 digest;
    digest.add(large.data(), large.size());
    const auto made = copy();
    ASSERT_NE(made, nullptr) << error_.description;
    EXPECT_EQ(made->size(), large.size());
    EXPECT_EQ(made->sha256(), digest.finish());
    EXPECT_EQ(contentsOf(copy_), large);
}

TEST_F(PrivateCopies, AnEmptyFileIsCopied) {
    makeFile(file_, "");
    const auto made = copy();
    ASSERT_NE(made, nullptr) << error_.description;
    EXPECT_EQ(made->size(), 0U);
    EXPECT_EQ(made->sha256(), kOfNothing);
}

TEST_F(PrivateCopies, AFileThatIsReplacedMeanwhileIsCopiedAsItWasOpened) {
    step_ = [this](std::uint64_t) {
        makeFile(file_ + ".evil", "evil");
        ASSERT_EQ(::rename((file_ + ".evil").c_str(), file_.c_str()), 0);
    };
    const auto made = copy();
    ASSERT_NE(made, nullptr) << error_.description;
    EXPECT_EQ(contentsOf(file_), "evil");
    EXPECT_EQ(contentsOf(copy_), "contents");
    EXPECT_EQ(made->sha256(), kOfContents);
}

TEST_F(PrivateCopies, AFileThatIsRewrittenAfterwardsLeavesTheCopyAlone) {
    const auto made = copy();
    ASSERT_NE(made, nullptr) << error_.description;
    makeFile(file_, "evil");
    EXPECT_EQ(contentsOf(copy_), "contents");
}

TEST_F(PrivateCopies, HashesTheWrittenBytesEvenIfTheFileChangesMeanwhile) {
    makeFile(file_, std::string(2 << 16, 'a'));
    step_ = [this](std::uint64_t copied) {
        if (copied > 0) {
            makeFile(file_, std::string(2 << 16, 'b'));
        }
    };
    const auto made = copy();
    ASSERT_NE(made, nullptr) << error_.description;
    const std::string written = contentsOf(copy_);
    EXPECT_EQ(written, std::string(1 << 16, 'a') + std::string(1 << 16, 'b'));
    Platform::Posix::SHA256 digest;
    digest.add(written.data(), written.size());
    EXPECT_EQ(made->sha256(), digest.finish());
}

TEST_F(PrivateCopies, AFileThatKeepsGrowingIsCopiedUpToTheBound) {
    int steps = 0;
    step_ = [this, &steps](std::uint64_t) {
        ++steps;
        ASSERT_EQ(::truncate(file_.c_str(), steps * (1 << 17)), 0);
    };
    const auto made = copy(5 << 16);
    ASSERT_NE(made, nullptr) << error_.description;
    EXPECT_EQ(made->size(), 5U << 16);
    EXPECT_EQ(steps, 5);
}

TEST_F(PrivateCopies, AHugeSparseFileIsReadUpToTheBoundOnly) {
    ASSERT_EQ(::truncate(file_.c_str(), off_t{1} << 29), 0);
    const auto made = copy(9);
    ASSERT_NE(made, nullptr) << error_.description;
    EXPECT_EQ(made->size(), 9U);
    EXPECT_EQ(statusOf(copy_).st_size, 9);
}

TEST_F(PrivateCopies, RefusesAnythingButARegularFileWithoutWaiting) {
    ASSERT_EQ(::unlink(file_.c_str()), 0);
    expectRefused(file_, ENOENT);
    // Nobody writes to it.
    ASSERT_EQ(::mkfifo(file_.c_str(), 0666), 0);
    expectRefused(file_, EINVAL);
    ASSERT_EQ(::unlink(file_.c_str()), 0);
    makeFolder(file_);
    expectRefused(file_, EISDIR);
    ASSERT_EQ(::rmdir(file_.c_str()), 0);
    makeFile(scratch_.path("user/elsewhere"));
    makeLink(scratch_.path("user/elsewhere"), file_);
    expectRefused(file_, ELOOP);
    expectNothingLeft();
}

TEST_F(PrivateCopies, NothingIsLeftWhenTheDiskHasNoRoom) {
    makeFile(file_, std::string(3 << 16, 'x'));
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small{(1 << 16) + 100, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const auto made = copy();
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, before);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(error_,
              (Error{"\"" + file_ + "\" could not be copied to \"" + copy_ + "\": File too large", EFBIG}));
    expectNothingLeft();
}

TEST_F(PrivateCopies, WhatAnInterruptedCopyLeftIsRemovedFirst) {
    makeFolder(folder_, 0755);
    makeFile(copy_, "left");
    makeFolder(folder_ + "/more");
    makeFile(folder_ + "/more/left");
    const auto made = copy();
    ASSERT_NE(made, nullptr) << error_.description;
    EXPECT_EQ(contentsOf(copy_), "contents");
    EXPECT_FALSE(exists(folder_ + "/more"));
    EXPECT_EQ(statusOf(folder_).st_mode, S_IFDIR | 0700U);
}

TEST_F(PrivateCopies, AFolderAboveThatOthersMayWriteToIsRefused) {
    for (const mode_t open : {0775U, 0757U}) {
        ASSERT_EQ(::chmod(scratch_.path("Tools").c_str(), open), 0);
        expectRefused(scratch_.path("Tools"), EPERM);
    }
    // In a sticky folder nobody else can replace the owner's items.
    ASSERT_EQ(::chmod(scratch_.path("Tools").c_str(), 01777), 0);
    EXPECT_NE(copy(), nullptr);
    ASSERT_EQ(::chmod(scratch_.path().c_str(), 0777), 0);
    expectRefused(scratch_.path(), EPERM);
    expectNothingLeft();
}

TEST_F(PrivateCopies, AFolderOfSomebodyElseIsRefused) {
    PosixPrivateCopies others({scratch_.path(), ::geteuid() + 1}, nullptr);
    EXPECT_EQ(others.copy(Base::URL::fileURL(file_), destination_, kPlenty, error_), nullptr);
    EXPECT_EQ(error_.code, EPERM);
    if (::geteuid() == 0) {
        makeFolder(folder_);
        giveToUnprivileged(folder_);
        expectRefused(folder_, EPERM);
        EXPECT_TRUE(exists(folder_));
    }
}

TEST_F(PrivateCopies, NoLinkOnTheWayToTheFolderIsFollowed) {
    makeFolder(scratch_.path("user/elsewhere"));
    makeLink(scratch_.path("user/elsewhere"), folder_);
    EXPECT_EQ(copy(), nullptr);
    ASSERT_EQ(::unlink(folder_.c_str()), 0);
    ASSERT_EQ(::rename(scratch_.path("Tools").c_str(), scratch_.path("Moved").c_str()), 0);
    makeLink(scratch_.path("Moved"), scratch_.path("Tools"));
    EXPECT_EQ(copy(), nullptr);
    EXPECT_FALSE(exists(scratch_.path("user/elsewhere/copy.pkg")));
    EXPECT_FALSE(exists(scratch_.path("Moved/helper.package")));
}

TEST_F(PrivateCopies, ACopyWaitsForTheOneBeforeIt) {
    auto first = copy();
    ASSERT_NE(first, nullptr) << error_.description;
    makeFile(scratch_.path("user/b.pkg"), "second");
    std::unique_ptr<PrivateCopy> second;
    std::thread thread([&] {
        Error error;
        second = PosixPrivateCopies(ground_, nullptr)
                     .copy(scratch_.url("user/b.pkg"), destination_, kPlenty, error);
    });
    EXPECT_EQ(contentsOf(copy_), "contents");
    first.reset();
    thread.join();
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(contentsOf(copy_), "second");
}

TEST_F(PrivateCopies, ALeftFolderIsRemovedOnItsOwn) {
    const Base::URL folder = Base::URL::fileURL(folder_);
    EXPECT_EQ(copies_.removeFolder(folder), std::nullopt);
    makeFolder(folder_);
    makeFile(copy_, "left");
    EXPECT_EQ(copies_.removeFolder(folder), std::nullopt);
    expectNothingLeft();
}

TEST_F(PrivateCopies, AFolderInUseIsNotRemoved) {
    const auto made = copy();
    ASSERT_NE(made, nullptr) << error_.description;
    EXPECT_EQ(copies_.removeFolder(Base::URL::fileURL(folder_)), std::nullopt);
    EXPECT_EQ(contentsOf(copy_), "contents");
}

TEST_F(PrivateCopies, AFileInPlaceOfALeftFolderStays) {
    makeFile(folder_, "a file");
    const auto failure = copies_.removeFolder(Base::URL::fileURL(folder_));
    ASSERT_NE(failure, std::nullopt);
    EXPECT_EQ(failure->code, ENOTDIR);
    EXPECT_EQ(contentsOf(folder_), "a file");
}

}  // namespace
}  // namespace PlatformTests
