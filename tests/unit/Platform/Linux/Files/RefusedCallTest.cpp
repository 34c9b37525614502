// File operations while the kernel refuses any one of their calls: either there is an error, or all is done.
#include "support/SystemCalls.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "NativeFiles.h"
#include "Platform/Posix/FolderWalk.h"
#include "Platform/Posix/PosixFileManager.h"
#include "Platform/Posix/PosixPrivateCopies.h"
#include "Platform/Posix/PosixTaskRunner.h"
#include "Posix/OwnRoot.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

constexpr auto kAttribute = "user.sentrel.test";

/// Everything of an item that a copy keeps, and its contents.
std::string textOf(const std::string& path) {
    const struct stat status = statusOf(path);
    std::array<char, 64> value{};
    const ssize_t length = ::lgetxattr(path.c_str(), kAttribute, value.data(), value.size());
    std::string text = std::to_string(status.st_mode) + " " + std::to_string(status.st_uid) + " " +
                       std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
    text += " " + (length > 0 ? std::string(value.data(), static_cast<std::size_t>(length)) : "none");
    if (S_ISREG(status.st_mode)) {
        text += " " + contentsOf(path);
    }
    return S_ISLNK(status.st_mode) ? text + " " + targetOf(path) : text;
}

class WhileACallIsRefused : public testing::Test {
  protected:
    explicit WhileACallIsRefused(std::string base = Scratch::usualBase()) : scratch_(std::move(base)) {}

    void makeTree(const std::string& top) {
        makeFolder(path(top));
        makeFile(path(top + "/file"), "contents", 06755);
        makeLink("file", path(top + "/link"));
        ASSERT_EQ(::mkfifo(path(top + "/fifo").c_str(), 0640), 0);
        makeFolder(path(top + "/folder"), 0700);
        makeFile(path(top + "/folder/inside"), std::string(100'000, 'x'), 0400);
        makeFolder(path(top + "/folder/empty"), 01777);
        makeFile(path(top + "/sparse"));
        ASSERT_EQ(::truncate(path(top + "/sparse").c_str(), 1 << 20), 0);
    }
    /// The items below `top` that do not belong to Alice.
    [[nodiscard]] std::vector<std::string> itemsOfOthers(const std::string& top) const {
        std::vector<std::string> items;
        for (const auto& each : std::filesystem::recursive_directory_iterator(path(top))) {
            const struct stat status = statusOf(each.path());
            if (status.st_uid != kAlice || status.st_gid != kAlice) {
                items.push_back(each.path().string().substr(path(top).size()));
            }
        }
        return items;
    }
    /// Whether an item of these and all others of its folder are among them: nobody reports a folder that
    /// cannot be listed.
    [[nodiscard]] bool isUnreadFolder(const std::vector<std::string>& items, const std::string& item) const {
        const std::string folder = path("top") + item.substr(0, item.rfind('/'));
        return std::ranges::all_of(std::filesystem::directory_iterator(folder), [&](const auto& each) {
            return std::ranges::count(items, each.path().string().substr(path("top").size())) == 1;
        });
    }
    void removeTree(const std::string& top) { std::filesystem::remove_all(path(top)); }

    [[nodiscard]] std::string path(const std::string& name) const { return scratch_.path(name); }
    /// The items of a tree by their paths in it.
    [[nodiscard]] std::map<std::string, std::string> tree(const std::string& top) const {
        std::map<std::string, std::string> items;
        if (exists(path(top))) {
            items[""] = textOf(path(top));
            for (const auto& each : std::filesystem::recursive_directory_iterator(path(top))) {
                items[each.path().string().substr(path(top).size())] = textOf(each.path());
            }
        }
        return items;
    }

    Scratch scratch_;
    Platform::Posix::PosixFileManager files_;
};

/// With the code of a failure; on a disk, where attributes can be kept.
class CopyWhileACallIsRefused : public WhileACallIsRefused, public testing::WithParamInterface<int> {
  protected:
    CopyWhileACallIsRefused() : WhileACallIsRefused(Scratch::currentFolder()) {}
};

INSTANTIATE_TEST_SUITE_P(Code, CopyWhileACallIsRefused, testing::Values(EIO, EINTR),
                         [](const auto& info) { return info.param == EIO ? "EIO" : "EINTR"; });

TEST_P(CopyWhileACallIsRefused, IsWholeOrAnError) {
    makeTree("top");
    ASSERT_EQ(setAttribute(path("top/file"), kAttribute, "value", 5), 0);
    const auto before = tree("top");
    std::optional<Platform::Error> error;
    const int calls = refuseEachCall(
        GetParam(), [&] { removeTree("copy"); },
        [&] { error = files_.copyItem(scratch_.url("top"), scratch_.url("copy")); },
        [&](bool isRefused) {
            if (error) {
                EXPECT_TRUE(isRefused) << error->description;
                EXPECT_EQ(error->code, GetParam()) << error->description;
            } else {
                EXPECT_EQ(tree("copy"), before);
            }
            EXPECT_EQ(tree("top"), before);
        });
    EXPECT_GT(calls, 50);
}

TEST_F(WhileACallIsRefused, ARemovalIsWholeOrAnError) {
    makeTree("precious");
    const auto precious = tree("precious");
    std::optional<Platform::Error> error;
    const int calls = refuseEachCall(
        EIO,
        [&] {
            removeTree("top");
            makeTree("top");
            makeLink(path("precious"), path("top/folder/precious"));
        },
        [&] { error = files_.removeItem(scratch_.url("top")); },
        [&](bool isRefused) {
            // A listing that fails after its last entry is an error though nothing is left.
            EXPECT_TRUE(error || !exists(path("top")));
            EXPECT_TRUE(!error || (isRefused && error->code == EIO)) << error->description;
            if (exists(path("top"))) {
                EXPECT_FALSE(files_.removeItem(scratch_.url("top")));
            }
            EXPECT_EQ(tree("precious"), precious);
        });
    EXPECT_GT(calls, 20);
}

TEST_F(WhileACallIsRefused, AnItemHasItsNewOwnerOrIsReported) {
    // Nobody else can give items to others: then each of them is reported.
    const bool mayGive = ::geteuid() == 0;
    std::set<std::string> failures;
    const int calls = refuseEachCall(
        EIO,
        [&] {
            failures.clear();
            removeTree("top");
            makeTree("top");
        },
        [&] {
            files_.setOwnerOfContents(
                scratch_.url("top"), kAlice, kAlice, [&](const Base::URL& item, int error) {
                    EXPECT_TRUE(error == EIO || error == EBADF || (!mayGive && error == EPERM)) << error;
                    failures.insert(item.path().substr(path("top").size()));
                });
        },
        [&](bool isRefused) {
            const auto left = itemsOfOthers("top");
            EXPECT_TRUE(isRefused || (mayGive ? left.empty() : !left.empty()));
            EXPECT_TRUE(isRefused || failures == std::set(left.begin(), left.end()));
            for (const std::string& item : left) {
                const auto isAt = [&](const std::string& failed) { return item.starts_with(failed); };
                EXPECT_TRUE(std::ranges::any_of(failures, isAt) || isUnreadFolder(left, item)) << item;
            }
        });
    EXPECT_GT(calls, 20);
}

TEST_F(WhileACallIsRefused, AFolderThatCannotBeListedIsNotRemovedAndThatIsTheReason) {
    makeTree("top");
    const auto before = tree("top");
    std::optional<Platform::Error> error;
    askAboutEachCall([](long call) { return call == SYS_getdents64 ? EIO : 0; },
                     [&] { error = files_.removeItem(scratch_.url("top")); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, EIO);
    EXPECT_EQ(error->description, "\"" + path("top") + "\" could not be removed: Input/output error");
    EXPECT_EQ(tree("top"), before);
}

// Where root alone can exchange an item, its name is enough; elsewhere each is opened first.
TEST_F(WhileACallIsRefused, EachItemIsOpenedInFoldersThatOthersCanChangeAndNoneElsewhere) {
    constexpr int kFolders = 6;
    constexpr int kFiles = 10;
    makeFolder(path("top"), 0755);
    for (int folder = 0; folder < kFolders; ++folder) {
        const std::string name = "top/" + std::to_string(folder);
        makeFolder(path(name), folder % 2 == 0 ? 0755 : 0777);
        for (int file = 0; file < kFiles; ++file) {
            makeFile(path(name + "/file " + std::to_string(file)), "");
        }
    }
    int opened = 0;
    askAboutEachCall(
        [&](const Call& call) {
            const bool opensItem =
                call == SYS_openat &&
                std::string_view(std::bit_cast<const char*>(call.arguments[1])).starts_with("file ") &&
                (call.arguments[2] & O_DIRECTORY) == 0;
            opened += opensItem ? 1 : 0;
            return 0;
        },
        [&] {
            files_.setOwnerOfContents(scratch_.url("top"), ::geteuid(), ::getegid(),
                                      [](const Base::URL& item, int) { ADD_FAILURE() << item.path(); });
        });
    // What belongs to another user than root, that user can change.
    EXPECT_EQ(opened, (::geteuid() == 0 ? kFolders / 2 : kFolders) * kFiles);
}

TEST_F(WhileACallIsRefused, AFolderIsCreatedOrAnError) {
    std::optional<Platform::Error> error;
    const int calls = refuseEachCall(
        EIO, [&] { removeTree("a"); }, [&] { error = files_.createDirectory(scratch_.url("a/b/c"), true); },
        [&](bool isRefused) {
            EXPECT_EQ(exists(path("a/b/c")), !error);
            EXPECT_TRUE(!error || (isRefused && error->code == EIO));
        });
    EXPECT_GT(calls, 5);
}

TEST_F(WhileACallIsRefused, AModeIsSetOrAnError) {
    int failure = 0;
    const int calls = refuseEachCall(
        EIO,
        [&] {
            removeTree("file");
            makeFile(path("file"), "contents", 0644);
        },
        [&] { failure = files_.setMode(scratch_.url("file"), 0700); },
        [&](bool isRefused) {
            EXPECT_EQ(statusOf(path("file")).st_mode & 07777, failure == 0 ? 0700 : 0644);
            EXPECT_TRUE(failure == 0 || (isRefused && (failure == EBADF || failure == EIO)));
        });
    EXPECT_GT(calls, 3);
}

TEST_F(WhileACallIsRefused, AFolderHasEntriesOrAnError) {
    makeTree("top");
    std::optional<bool> answer;
    Platform::Error error;
    const int calls = refuseEachCall(
        EIO,
        [&] {
            answer.reset();
            error = {};
        },
        [&] { answer = files_.hasVisibleEntries(scratch_.url("top"), error); },
        [&](bool isRefused) {
            EXPECT_TRUE(answer ? *answer : isRefused && error.code == EIO) << error.description;
        });
    EXPECT_GT(calls, 1);
}

class PrivateCopyWhileACallIsRefused : public WhileACallIsRefused {
  protected:
    PrivateCopyWhileACallIsRefused() {
        makeFile(path("package"), contents_);
        makeFolder(path("Tools"));
    }
    void makeCopy() {
        copy_ = copies_.copy(scratch_.url("package"), scratch_.url("Tools/folder/copy"), 1 << 20, error_);
    }
    void expectWhole() {
        ASSERT_NE(copy_, nullptr) << error_.description;
        EXPECT_EQ(copy_->size(), contents_.size());
        EXPECT_TRUE(contentsOf(path("Tools/folder/copy")) == contents_);
        copy_ = nullptr;
        EXPECT_FALSE(exists(path("Tools/folder")));
    }
    /// Whether these are the words for a failure of this code, of the package or of a folder.
    [[nodiscard]] bool isExplained(const char* why) const {
        const std::string package = "\"" + path("package") + "\" could not be ";
        const std::string folders = "\" could not be kept to its owner: ";
        const std::size_t reached = error_.description.find(folders);
        return error_.description == package + "read: " + why ||
               error_.description == package + "copied to \"" + path("Tools/folder/copy") + "\": " + why ||
               (error_.description.ends_with(folders + why) && error_.description.starts_with('"') &&
                path("Tools/folder").starts_with(error_.description.substr(1, reached - 1)));
    }

    const std::string contents_ = std::string(200'000, 'x');
    Platform::Posix::PosixPrivateCopies copies_{
        Platform::Posix::PrivateFolder::Ground{scratch_.path(), ::geteuid()}, {}};
    std::unique_ptr<Platform::PrivateCopy> copy_;
    Platform::Error error_;
};

TEST_F(PrivateCopyWhileACallIsRefused, HasAllBytesOrIsAnError) {
    const int calls = refuseEachCall(
        EIO,
        [&] {
            error_ = {};
            removeTree("Tools/folder");
        },
        [&] { makeCopy(); },
        [&](bool isRefused) {
            if (copy_) {
                expectWhole();
            } else {
                EXPECT_TRUE(isRefused && error_.code == EIO) << error_.description;
                EXPECT_TRUE(isExplained("Input/output error")) << error_.description;
                EXPECT_FALSE(exists(path("Tools/folder/copy"))) << error_.description;
                EXPECT_FALSE(copies_.removeFolder(scratch_.url("Tools/folder")));
                EXPECT_FALSE(exists(path("Tools/folder")));
            }
        });
    EXPECT_GT(calls, 10);
}

TEST_F(PrivateCopyWhileACallIsRefused, IsWholeThoughEachReadAndWriteIsInterruptedOnce) {
    std::map<long, int> numbers;
    const auto interruption = [&](long call) {
        const bool isAsked = call == SYS_read || call == SYS_write || call == SYS_flock;
        return isAsked && numbers[call]++ % 2 == 0 ? EINTR : 0;
    };
    askAboutEachCall(interruption, [&] { makeCopy(); });
    expectWhole();
}

TEST_F(PrivateCopyWhileACallIsRefused, IsMadeInAnotherFolderIfTheFirstGoesBeforeItIsLocked) {
    int locks = 0;
    askAboutEachCall(
        [&](long call) {
            if (call == SYS_flock && ++locks == 1) {
                EXPECT_EQ(::rmdir(path("Tools/folder").c_str()), 0);
            }
            return 0;
        },
        [&] { makeCopy(); });
    EXPECT_EQ(locks, 2);
    expectWhole();
}

TEST_F(PrivateCopyWhileACallIsRefused, IsNoneInAFolderThatCannotBeLocked) {
    askAboutEachCall([](long call) { return call == SYS_flock ? ENOLCK : 0; }, [&] { makeCopy(); });
    EXPECT_EQ(copy_, nullptr);
    EXPECT_EQ(error_.code, ENOLCK);
    EXPECT_TRUE(isExplained("No locks available")) << error_.description;
}

/// A walk down to a folder that lies deeper than folders are held open, and back.
class WalkWhileACallIsRefused : public WhileACallIsRefused {
  protected:
    static constexpr int kDepth = 20;

    WalkWhileACallIsRefused() {
        std::string folder = "top";
        makeFolder(path(folder));
        for (int level = 1; level <= kDepth; ++level) {
            folder += "/" + std::to_string(level);
            makeFolder(path(folder));
        }
    }
    /// What the walk says of the folders that it left, up to its first failure.
    void goAndComeBack() {
        names_.clear();
        Platform::Posix::FolderWalk walk(path("top"));
        Platform::Posix::Descriptor each;
        failure_ = Platform::Posix::openFolder(AT_FDCWD, path("top").c_str(), each);
        if (failure_ == 0) {
            walk.enterTop(std::move(each));
        }
        for (int level = 1; failure_ == 0 && level <= kDepth; ++level) {
            const std::string name = std::to_string(level);
            failure_ = Platform::Posix::openFolder(walk.folder(), name.c_str(), each);
            if (failure_ == 0) {
                walk.enter(std::move(each), name.c_str());
            }
        }
        while (failure_ == 0 && walk.depth() > 1) {
            failure_ = walk.leave();
            names_.emplace_back(failure_ == 0 && walk.leftName() != nullptr ? walk.leftName() : "none");
        }
    }
    void expectNamesThatAreRightOrNone() const {
        for (std::size_t number = 0; number < names_.size(); ++number) {
            EXPECT_TRUE(names_[number] == "none" || names_[number] == std::to_string(kDepth - number))
                << names_[number];
        }
    }

    std::vector<std::string> names_;
    int failure_ = 0;
};

TEST_F(WalkWhileACallIsRefused, KnowsTheNameOfTheFolderItLeftOrNone) {
    const int calls = refuseEachCall(
        EIO, [] {}, [&] { goAndComeBack(); },
        [&](bool isRefused) {
            EXPECT_TRUE(isRefused || (failure_ == 0 && std::ranges::count(names_, "none") == 0));
            expectNamesThatAreRightOrNone();
        });
    EXPECT_GT(calls, 40);
}

TEST_F(WalkWhileACallIsRefused, KnowsNoNameInAFolderThatCannotBeListedAgain) {
    askAboutEachCall([](long call) { return call == SYS_getdents64 ? EIO : 0; }, [&] { goAndComeBack(); });
    EXPECT_EQ(failure_, 0);
    EXPECT_EQ(names_.size(), std::size_t{kDepth});
    EXPECT_EQ(names_.back(), "none");
    expectNamesThatAreRightOrNone();
}

TEST(WhileACallIsInterrupted, ATaskIsReadToItsEnd) {
    std::unique_ptr<Platform::Task> task;
    std::string output;
    const int calls = refuseEachCall(
        EINTR,
        [&] {
            task = Platform::Posix::PosixTaskRunner().launch(
                "/bin/sh", std::vector<std::string>{"-c", "echo some; echo output"});
            task->waitUntilExit();
        },
        [&] { output = task->readOutputToEnd(); },
        [&](bool /*isRefused*/) { EXPECT_EQ(output, "some\noutput\n"); });
    EXPECT_GE(calls, 2);
}

}  // namespace
}  // namespace PlatformTests
