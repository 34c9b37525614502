#include "Platform/Posix/FolderCrew.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <future>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Posix/FirstFailure.h"
#include "Platform/Posix/FolderWalk.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Posix::Errand;
using Platform::Posix::FolderCrew;
using Platform::Posix::FolderWalk;
using Platform::Posix::Meeting;

constexpr std::size_t kMany = 1'000'000;

void waitUntil(const std::function<bool()>& reached) {
    while (!reached()) {
        std::this_thread::yield();
    }
}

/// An errand that does as the test says.
class Told : public Errand {
  public:
    using Action = std::function<Meeting*(FolderCrew& crew, Told& self)>;

    explicit Told(Action action, std::shared_ptr<Meeting> meeting = nullptr)
        : Errand(std::move(meeting)), action_(std::move(action)) {}
    Meeting* carryOn(FolderCrew& crew) override { return action_(crew, *this); }

    /// Gives a part away as soon as somebody wants one.
    void give(FolderCrew& crew, const std::shared_ptr<Meeting>& meeting, Action action) const {
        waitUntil([&] { return crew.promise(); });
        crew.give(*this, std::make_unique<Told>(std::move(action), meeting));
    }

  private:
    const Action action_;
};

/// Whether a task of /proc lives: one that has been joined can be listed for another moment (PF_EXITING in
/// proc(5)).
bool lives(const std::filesystem::path& task) {
    const std::string words = contentsOf(task / "stat");
    std::istringstream rest(words.substr(std::min(words.rfind(')') + 1, words.size())));
    std::string skipped;
    unsigned flags = 0;
    constexpr unsigned kExiting = 4;
    return rest >> skipped >> skipped >> skipped >> skipped >> skipped >> skipped >> flags &&
           (flags & kExiting) == 0;
}

int threadsNow() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<int>(
        std::count_if(begin(tasks), end(tasks), [](const auto& task) { return lives(task.path()); }));
}

/// A thread that does nothing. A sanitizer starts one of its own with the first: counting begins when both
/// are there.
class IdleThread {
  public:
    ~IdleThread() {
        over_.set_value();
        thread_.join();
    }

  private:
    std::promise<void> over_;
    std::thread thread_{[future = over_.get_future()] { future.wait(); }};
};

TEST(FolderCrew, StartsNoThreadForASmallTree) {
    const auto shape = Platform::Posix::crewShape();
    FolderCrew crew(8);
    const IdleThread idle;
    const int before = threadsNow();
    crew.run(std::make_unique<Told>([&](FolderCrew& own, Told&) {
        if (shape.smallTree > 0) {
            own.met(shape.smallTree - 1);
            EXPECT_EQ(threadsNow(), before);
        }
        own.met(shape.smallTree);
        EXPECT_EQ(threadsNow(), before + static_cast<int>(shape.threads) - 1);
        own.met(kMany);
        EXPECT_EQ(threadsNow(), before + static_cast<int>(shape.threads) - 1);
        return nullptr;
    }));
    EXPECT_EQ(threadsNow(), before);
}

TEST(FolderCrew, GivesWorkToAnotherThreadAndEndsWithThePart) {
    std::atomic<bool> done = false;
    std::thread::id other;
    FolderCrew crew(8);
    crew.run(std::make_unique<Told>([&](FolderCrew& own, Told& self) {
        own.met(kMany);
        self.give(own, std::make_shared<Meeting>(), [&](FolderCrew&, Told&) {
            other = std::this_thread::get_id();
            done = true;
            return nullptr;
        });
        waitUntil([&] { return done.load(); });
        return nullptr;
    }));
    EXPECT_TRUE(done);
    EXPECT_NE(other, std::this_thread::get_id());
}

TEST(FolderCrew, WantsNoMoreThanItsIdleThreadsCanDo) {
    const unsigned others = Platform::Posix::crewShape().threads - 1;
    FolderCrew crew(64);
    crew.run(std::make_unique<Told>([&](FolderCrew& own, Told&) {
        own.met(kMany);
        for (unsigned round = 0; round < 2; ++round) {
            for (unsigned promised = 0; promised < others; ++promised) {
                waitUntil([&] { return own.promise(); });
            }
            EXPECT_FALSE(own.wantsWork());
            EXPECT_FALSE(own.promise()) << "each of them has been promised a part";
            for (unsigned promised = 0; promised < others; ++promised) {
                own.takeBack();
                EXPECT_TRUE(own.wantsWork());
            }
        }
        return nullptr;
    }));
}

// The thread of an errand that waits is free for another one; the errand is carried on when the meeting is
// over.
TEST(FolderCrew, PutsAnErrandAsideThatWaits) {
    const auto meeting = std::make_shared<Meeting>();
    std::atomic<int> carriedOn = 0;
    std::atomic<bool> mayEnd = false;
    std::atomic<bool> workedMeanwhile = false;
    FolderCrew crew(8);
    crew.run(std::make_unique<Told>([&](FolderCrew& own, Told& self) -> Meeting* {
        if (++carriedOn == 2) {
            EXPECT_TRUE(meeting->isOver());
            EXPECT_TRUE(workedMeanwhile);
            return nullptr;
        }
        own.met(kMany);
        self.give(own, meeting, [&](FolderCrew& theirs, Told& part) {
            // With two threads, the one that waits is the only one there is for this.
            part.give(theirs, meeting, [&](FolderCrew&, Told&) {
                workedMeanwhile = true;
                mayEnd = true;
                return nullptr;
            });
            waitUntil([&] { return mayEnd.load(); });
            return nullptr;
        });
        return meeting.get();
    }));
    EXPECT_EQ(carriedOn, 2);
}

TEST(FolderCrew, PromisesNoMoreThanThereIsRoomFor) {
    FolderCrew crew(2);
    std::atomic<bool> refused = false;
    crew.run(std::make_unique<Told>([&](FolderCrew& own, Told& self) {
        EXPECT_FALSE(own.promise()) << "nobody is idle";
        own.met(kMany);
        self.give(own, std::make_shared<Meeting>(), [&](FolderCrew&, Told&) {
            waitUntil([&] { return refused.load(); });
            return nullptr;
        });
        EXPECT_FALSE(own.promise());
        refused = true;
        // When the part has ended there is room again.
        waitUntil([&] { return own.promise(); });
        own.takeBack();
        return nullptr;
    }));
}

TEST(FolderCrew, AbandonsWhatComesBehindInTheTree) {
    FolderCrew crew(8);
    std::atomic<bool> givenAway = false;
    std::atomic<bool> abandoned = false;
    crew.run(std::make_unique<Told>([&](FolderCrew& own, Told& self) {
        own.met(kMany);
        self.give(own, std::make_shared<Meeting>(), [&](FolderCrew& theirs, Told& part) {
            theirs.abandonBehind(part);
            EXPECT_FALSE(part.isAbandoned());
            givenAway = true;
            waitUntil([&] { return part.isAbandoned(); });
            abandoned = true;
            return nullptr;
        });
        waitUntil([&] { return givenAway.load(); });
        EXPECT_FALSE(self.isAbandoned()) << "it comes before";
        own.abandonBehind(self);
        return nullptr;
    }));
    EXPECT_TRUE(abandoned);
}

/// The entries of the folder at hand that are left.
std::multiset<std::string> entriesLeft(FolderWalk& walk) {
    std::multiset<std::string> names;
    Platform::Posix::FolderEntry entry;
    while (walk.next(entry) > 0) {
        names.insert(entry.name);
    }
    return names;
}

class GivingWalk : public testing::Test {
  protected:
    GivingWalk() : walk_(scratch_.path("top")) { makeFolder(scratch_.path("top")); }

    void makeFiles(const std::string& folder, int count) {
        for (int number = 0; number < count; ++number) {
            makeFile(scratch_.path(folder + "/" + std::to_string(number)), "");
        }
    }
    void begin() {
        Platform::Posix::Descriptor folder;
        ASSERT_EQ(Platform::Posix::openFolder(AT_FDCWD, scratch_.path("top").c_str(), folder), 0);
        walk_.enterTop(std::move(folder));
    }
    void enter(const char* name) {
        Platform::Posix::Descriptor folder;
        ASSERT_EQ(Platform::Posix::openFolder(walk_.folder(), name, folder), 0);
        walk_.enter(std::move(folder), name);
    }
    Scratch scratch_;
    FolderWalk walk_;
    FolderWalk other_{""};
};

TEST_F(GivingWalk, KeepsEveryEntryOfAWideFolderOnce) {
    constexpr int kFiles = 2000;
    makeFiles("top", kFiles);
    begin();
    EXPECT_EQ(walk_.levelWorthGiving(), 0U);
    ASSERT_TRUE(walk_.give(0, other_));
    EXPECT_EQ(walk_.levelWorthGiving(), 1U) << "it has been given";
    std::multiset<std::string> all = entriesLeft(walk_);
    const std::multiset<std::string> others = entriesLeft(other_);
    EXPECT_GT(all.size(), 100U);
    EXPECT_GT(others.size(), all.size());
    all.insert(others.begin(), others.end());
    EXPECT_EQ(all.size(), std::size_t{kFiles});
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), std::size_t{kFiles});
    EXPECT_EQ(other_.path(), scratch_.path("top"));
}

TEST_F(GivingWalk, GivesTheHighestFolderWhole) {
    for (const std::string name : {"a", "b", "c", "d"}) {
        makeFolder(scratch_.path("top/" + name));
        makeFiles("top/" + name, 100);
    }
    begin();
    Platform::Posix::FolderEntry entry;
    ASSERT_EQ(walk_.next(entry), 1);
    const std::string first = entry.name;
    enter(first.c_str());
    ASSERT_EQ(walk_.levelWorthGiving(), 0U);
    ASSERT_TRUE(walk_.give(0, other_));
    EXPECT_EQ(other_.path(), scratch_.path("top"));
    EXPECT_EQ(other_.depth(), 1U);
    std::multiset<std::string> others = entriesLeft(other_);
    others.insert(first);
    EXPECT_EQ(others, (std::multiset<std::string>{"a", "b", "c", "d"}));
    EXPECT_EQ(walk_.levelWorthGiving(), 1U) << "the folder at hand comes next";
    EXPECT_EQ(entriesLeft(walk_).size(), 100U);
    ASSERT_EQ(walk_.leave(), 0);
    EXPECT_EQ(walk_.leftName(), first);
    EXPECT_TRUE(entriesLeft(walk_).empty());
}

TEST_F(GivingWalk, FindsAFewFilesNotWorthGiving) {
    makeFiles("top", 20);
    begin();
    EXPECT_EQ(walk_.levelWorthGiving(), 1U);
}

TEST_F(GivingWalk, GivesNoMoreLevelsThanItsBound) {
    std::string folder = "top";
    for (std::size_t level = 0; level < FolderWalk::kMostGiven + 3; ++level) {
        makeFiles(folder, 100);
        folder += "/d";
        makeFolder(scratch_.path(folder));
    }
    begin();
    std::size_t given = 0;
    for (std::size_t level = 0; level < FolderWalk::kMostGiven + 3; ++level) {
        while (walk_.levelWorthGiving() < walk_.depth()) {
            FolderWalk other{""};
            ASSERT_TRUE(walk_.give(walk_.levelWorthGiving(), other));
            ++given;
        }
        enter("d");
    }
    EXPECT_EQ(given, FolderWalk::kMostGiven);
}

// The folder is opened again on the way back, and its kept entries are still those that were not given.
TEST_F(GivingWalk, KeepsItsPartAlsoWhenItComesBackFromADeepWay) {
    constexpr int kFiles = 2000;
    makeFiles("top", kFiles);
    makeFolder(scratch_.path("top/d"));
    makeDeepFolders(scratch_.path("top/d"), 40);
    begin();
    Platform::Posix::FolderEntry entry;
    std::multiset<std::string> all;
    ASSERT_EQ(walk_.next(entry), 1);
    ASSERT_TRUE(walk_.give(0, other_));
    all.insert(entry.name);
    for (int level = 0; level < 40; ++level) {
        enter("d");
    }
    for (int level = 0; level < 40; ++level) {
        ASSERT_EQ(walk_.leave(), 0);
    }
    EXPECT_STREQ(walk_.leftName(), "d");
    for (FolderWalk* each : {&walk_, &other_}) {
        const std::multiset<std::string> left = entriesLeft(*each);
        all.insert(left.begin(), left.end());
    }
    EXPECT_EQ(all.size(), std::size_t{kFiles} + 1);
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), std::size_t{kFiles} + 1);
}

TEST(FirstFailure, IsThatOfTheFirstItemInTheTree) {
    using Platform::Posix::comesBefore;
    EXPECT_TRUE(comesBefore("/a/b", "/a"));
    EXPECT_FALSE(comesBefore("/a", "/a/b"));
    EXPECT_TRUE(comesBefore("/a/z", "/a/z!"));
    EXPECT_TRUE(comesBefore("/a/z/y", "/a/z!"));
    EXPECT_TRUE(comesBefore("/a", "/b/a"));
    EXPECT_TRUE(comesBefore("/a/b", "/a/\xff"));
    EXPECT_FALSE(comesBefore("/a", "/a"));
    const std::vector<std::string> paths = {"/a/b", "/a/b", "/a/c", "/a", "/b"};
    std::vector<std::size_t> order = {0, 1, 2, 3, 4};
    do {
        Platform::Posix::FirstFailure some;
        Platform::Posix::FirstFailure all;
        for (const std::size_t each : order) {
            (each % 2 == 0 ? some : all).note(paths[each], {paths[each], static_cast<int>(each)});
        }
        all.join(some);
        const auto first = all.take();
        EXPECT_EQ(first->description, "/a/b");
        EXPECT_EQ(first->code, 0);
    } while (std::next_permutation(order.begin(), order.end()));
}

}  // namespace
}  // namespace PlatformTests
