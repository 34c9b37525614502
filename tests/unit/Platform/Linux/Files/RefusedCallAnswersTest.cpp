// Questions while the kernel refuses any one of the calls behind them: the answer is right, or there is none.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Platform/Linux/Bundles/LinuxBundles.h"
#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Platform/Posix/PosixFileFacts.h"
#include "Platform/Posix/TamePropertyList.h"
#include "support/Scratch.h"
#include "support/SystemCalls.h"

namespace PlatformTests {
namespace {

/// Asks with each call refused; the last answer, with none refused, has to be `right`.
template <class Answer>
void expectRightOrNone(const Answer& right, const Answer& none, const std::function<Answer()>& ask) {
    for (const int code : {EIO, EINTR}) {
        Answer answer = none;
        const int calls = refuseEachCall(
            code, [] {}, [&] { answer = ask(); },
            [&](bool isRefused) { EXPECT_TRUE(answer == right || (isRefused && answer == none)); });
        EXPECT_GT(calls, 0);
    }
}

TEST(AnswerWhileACallIsRefused, ABundlesVersionIsRightOrNone) {
    const Scratch scratch;
    makeFolder(scratch.path("X.app"));
    makeFolder(scratch.path("X.app/Contents"));
    makeFile(scratch.path("X.app/Contents/Info.plist"),
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
             "<key>CFBundleShortVersionString</key><string>2.10.3</string></dict></plist>\n");
    expectRightOrNone<std::optional<std::string>>("2.10.3", std::nullopt, [&] {
        const auto bundle = Platform::Linux::LinuxBundles().open(scratch.url("X.app"));
        return bundle ? bundle->infoString("CFBundleShortVersionString") : std::nullopt;
    });
}

TEST(AnswerWhileACallIsRefused, ATreesSizeIsWholeOrSaysWhatIsMissing) {
    const Scratch scratch;
    makeFolder(scratch.path("top"));
    makeFolder(scratch.path("top/folder"));
    makeFile(scratch.path("top/folder/file"), "contents");
    makeLink("folder", scratch.path("top/link"));
    Platform::Posix::PosixFileFacts facts;
    const auto measure = [&] {
        return facts.measure(scratch.url("top"), {}, [](const Platform::TreeSize&) {});
    };
    const Platform::TreeSize whole = measure();
    ASSERT_EQ(whole.unread, 0U);
    Platform::TreeSize size;
    const int calls = refuseEachCall(
        EIO, [] {}, [&] { size = measure(); },
        [&](bool isRefused) {
            EXPECT_TRUE(size == whole || (isRefused && size.unread == 1)) << size.unread;
            EXPECT_LE(size.folders, whole.folders);
            EXPECT_LE(size.bytes, whole.bytes);
        });
    EXPECT_GT(calls, 8);
}

TEST(PropertyListThatIsRead, MayShrinkMeanwhile) {
    const Scratch scratch;
    const std::string text = "<plist version=\"1.0\"><dict/></plist>\n";
    makeFile(scratch.path("list"), text + std::string(100, ' '));
    std::optional<std::string> read;
    askAboutEachCall(
        [&](long call) {
            if (call == SYS_read) {
                EXPECT_EQ(::truncate(scratch.path("list").c_str(), static_cast<off_t>(text.size())), 0);
            }
            return 0;
        },
        [&] { read = Platform::Posix::readTamePropertyList(AT_FDCWD, scratch.path("list")); });
    EXPECT_EQ(read, text);
}

TEST(PropertyListThatIsRead, IsWholeThoughEachReadIsInterruptedOnce) {
    const Scratch scratch;
    const std::string text = "<plist version=\"1.0\"><dict/></plist>\n";
    makeFile(scratch.path("list"), text);
    std::optional<std::string> read;
    int reads = 0;
    askAboutEachCall([&](long call) { return call == SYS_read && reads++ % 2 == 0 ? EINTR : 0; },
                     [&] { read = Platform::Posix::readTamePropertyList(AT_FDCWD, scratch.path("list")); });
    EXPECT_EQ(read, text);
    askAboutEachCall([](long call) { return call == SYS_read ? EIO : 0; },
                     [&] { read = Platform::Posix::readTamePropertyList(AT_FDCWD, scratch.path("list")); });
    EXPECT_EQ(read, std::nullopt);
}

class ProcessWhileACallIsRefused : public testing::Test {
  protected:
    /// What `call` writes about this process.
    [[nodiscard]] std::string textOf(int (Platform::ProcessTable::*call)(std::int32_t, std::span<char>)) {
        std::array<char, 4096> text{};
        const int length = (table_.*call)(::getpid(), text);
        return {text.data(), static_cast<std::size_t>(std::max(length, 0))};
    }

    Platform::Linux::LinuxProcessTable table_;
};

TEST_F(ProcessWhileACallIsRefused, ItsNameIsRightOrNone) {
    expectRightOrNone<std::string>("PlatformTests", "",
                                   [&] { return textOf(&Platform::ProcessTable::name); });
}

TEST_F(ProcessWhileACallIsRefused, ItsPathIsRightOrNone) {
    const std::string own = textOf(&Platform::ProcessTable::path);
    EXPECT_TRUE(own.ends_with("/PlatformTests")) << own;
    expectRightOrNone<std::string>(own, "", [&] { return textOf(&Platform::ProcessTable::path); });
}

TEST_F(ProcessWhileACallIsRefused, ItsUserIsRightOrNone) {
    constexpr std::uint32_t kUntouched = 123'456;
    expectRightOrNone<std::uint32_t>(::geteuid(), kUntouched, [&] {
        std::uint32_t user = kUntouched;
        const bool isKnown = table_.effectiveUser(::getpid(), user) > 0;
        EXPECT_EQ(isKnown, user != kUntouched);
        return user;
    });
}

TEST_F(ProcessWhileACallIsRefused, ItIsListedOrNoneIs) {
    expectRightOrNone<bool>(true, false, [&] {
        std::vector<std::int32_t> pids(100'000, -1);
        const int listed = table_.listPids(Platform::PidListType::all, 0, pids);
        return listed > 0 && std::ranges::count(pids, ::getpid()) == 1;
    });
}

TEST_F(ProcessWhileACallIsRefused, ProcessesThatCannotBeReadAreNobodys) {
    std::vector<std::int32_t> pids(100'000, -1);
    int listed = -1;
    for (const std::uint32_t user : {0U, ::geteuid()}) {
        askAboutEachCall([](long call) { return call == SYS_read ? EIO : 0; },
                         [&] { listed = table_.listPids(Platform::PidListType::effectiveUser, user, pids); });
        EXPECT_EQ(listed, 0);
    }
}

}  // namespace
}  // namespace PlatformTests
