#include "Files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>

#include "support/Scratch.h"
#include "support/SystemCalls.h"

namespace {

using PlatformTests::contentsOf;
using PlatformTests::exists;
using PlatformTests::makeFile;
using PlatformTests::makeFolder;
using PlatformTests::makeLink;
using PlatformTests::openDescriptors;
using PlatformTests::statusOf;

/// Reads and writes in a scratch folder; expects that nothing stays open.
class Files : public testing::Test {
  protected:
    ~Files() override { EXPECT_EQ(openDescriptors(), descriptors_); }

    /// The bytes of a file, or the refusal.
    static std::string read(const std::string& file, std::size_t limit) {
        std::string refusal;
        const auto bytes = Inspect::readFile(file, limit, refusal);
        EXPECT_EQ(bytes.has_value(), refusal.empty());
        return bytes ? std::string(bytes->begin(), bytes->end()) : "refused: " + refusal;
    }

    /// Puts "new" at `file`; nothing, or the refusal.
    static std::string replace(const std::string& file, std::string_view text = "new") {
        std::string refusal;
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        const bool isReplaced = Inspect::replaceFile(file, {bytes, text.size()}, refusal);
        EXPECT_EQ(isReplaced, refusal.empty());
        return refusal;
    }

    [[nodiscard]] std::size_t entries() const {
        const std::filesystem::directory_iterator all(folder.path());
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    [[nodiscard]] mode_t modeOf(const std::string& file) const { return statusOf(file).st_mode & 07777; }

    [[nodiscard]] int descriptors() const { return descriptors_; }

    PlatformTests::Scratch folder;

  private:
    int descriptors_ = openDescriptors();
};

TEST_F(Files, AreReadWhole) {
    const std::string text = std::string(70000, 'a') + '\0' + std::string(70000, 'b');
    makeFile(folder.path("a"), text);
    makeFile(folder.path("empty"), "");
    EXPECT_EQ(read(folder.path("a"), 1 << 20), text);
    EXPECT_EQ(read(folder.path("empty"), 0), "");
}

TEST_F(Files, AreReadUpToALimit) {
    makeFile(folder.path("a"), "12345");
    EXPECT_EQ(read(folder.path("a"), 5), "12345");
    EXPECT_EQ(read(folder.path("a"), 4), "refused: holds more than 4 bytes");
    EXPECT_EQ(read("/dev/zero", 100000), "refused: holds more than 100000 bytes");
}

TEST_F(Files, ThatCannotBeReadAreRefused) {
    EXPECT_EQ(read(folder.path(), 5), "refused: is a folder");
    EXPECT_EQ(read(folder.path("missing"), 5), "refused: No such file or directory");
    EXPECT_EQ(read("", 5), "refused: No such file or directory");
}

// Whoever starts the program may have closed its standard input.
TEST_F(Files, MayHaveTheFirstDescriptor) {
    makeFile(folder.path("a"), "text");
    const int input = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    ASSERT_GE(input, 0);
    ::close(STDIN_FILENO);
    const int before = openDescriptors();
    const std::string text = read(folder.path("a"), 100);
    const std::string refusal = replace(folder.path("b"));
    const int after = openDescriptors();
    ::dup2(input, STDIN_FILENO);
    ::close(input);
    EXPECT_EQ(text, "text");
    EXPECT_EQ(refusal, "");
    EXPECT_EQ(after, before);
    EXPECT_EQ(contentsOf(folder.path("b")), "new");
}

TEST_F(Files, AreMadeWithTheUsualMode) {
    const mode_t mask = ::umask(0027);
    EXPECT_EQ(replace(folder.path("new")), "");
    EXPECT_EQ(::umask(mask), 0027U);
    EXPECT_EQ(contentsOf(folder.path("new")), "new");
    EXPECT_EQ(modeOf(folder.path("new")), 0640U);
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, KeepTheModeOfTheirForerunner) {
    makeFile(folder.path("a"), "a longer text", 0751);
    EXPECT_EQ(replace(folder.path("a")), "");
    EXPECT_EQ(contentsOf(folder.path("a")), "new");
    EXPECT_EQ(modeOf(folder.path("a")), 0751U);
    ASSERT_EQ(::chmod(folder.path("a").c_str(), 06700), 0);
    EXPECT_EQ(replace(folder.path("a"), ""), "");
    EXPECT_EQ(contentsOf(folder.path("a")), "");
    EXPECT_EQ(modeOf(folder.path("a")), 0700U);
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, AreANewItemEachTime) {
    makeFile(folder.path("a"), "old");
    std::filesystem::create_hard_link(folder.path("a"), folder.path("b"));
    EXPECT_EQ(replace(folder.path("a")), "");
    EXPECT_EQ(contentsOf(folder.path("b")), "old");
}

TEST_F(Files, ReplaceOnlyFiles) {
    makeFolder(folder.path("folder"));
    makeLink("target", folder.path("link"));
    EXPECT_EQ(replace(folder.path("folder")), "is a folder");
    EXPECT_EQ(replace(folder.path("link")), "exists and is not a regular file");
    EXPECT_EQ(replace("/dev/null"), "exists and is not a regular file");
    EXPECT_EQ(replace(""), "names no file");
    EXPECT_EQ(replace(folder.path("a/")), "names no file");
    EXPECT_EQ(replace("/"), "names no file");
    EXPECT_EQ(replace(folder.path("missing/a")), "No such file or directory");
    EXPECT_FALSE(exists(folder.path("target")));
    EXPECT_EQ(entries(), 2U);
}

TEST_F(Files, LieInTheCurrentFolderWithoutAnother) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    EXPECT_EQ(replace("a"), "");
    std::filesystem::current_path(before);
    EXPECT_EQ(contentsOf(folder.path("a")), "new");
}

TEST_F(Files, StayAsTheyWereWhicheverCallFails) {
    std::string refusal;
    const int calls = PlatformTests::refuseEachCall(
        EIO, [this] { makeFile(folder.path("a"), "old", 0751); },
        [this, &refusal] { refusal = replace(folder.path("a")); },
        [this, &refusal](bool isRefused) {
            EXPECT_TRUE(refusal.empty() || (isRefused && refusal == "Input/output error")) << refusal;
            EXPECT_EQ(contentsOf(folder.path("a")), refusal.empty() ? "new" : "old");
            EXPECT_EQ(entries(), 1U);
            EXPECT_EQ(openDescriptors(), descriptors());
        });
    // It looks for the older file, makes the new one, writes it and sets its mode.
    EXPECT_GE(calls, 4);
}

TEST_F(Files, AreReadAndWrittenInSpiteOfInterruptions) {
    makeFile(folder.path("a"), "text");
    for (const long call : {SYS_read, SYS_write}) {
        int left = 2;
        std::string text;
        static_cast<void>(
            PlatformTests::askAboutEachCall([&](long each) { return each == call && left-- > 0 ? EINTR : 0; },
                                            [&] {
                                                EXPECT_EQ(replace(folder.path("b"), "new text"), "");
                                                text = read(folder.path("a"), 100);
                                            }));
        EXPECT_LE(left, 0) << call;
        EXPECT_EQ(text, "text");
        EXPECT_EQ(contentsOf(folder.path("b")), "new text");
    }
}

TEST_F(Files, ThatFailToBeReadAreRefused) {
    makeFile(folder.path("a"), "text");
    std::string text;
    static_cast<void>(PlatformTests::askAboutEachCall([](long call) { return call == SYS_read ? EIO : 0; },
                                                      [&] { text = read(folder.path("a"), 100); }));
    EXPECT_EQ(text, "refused: Input/output error");
}

/// The signals that a thread of this process holds back.
std::uint64_t heldBack(pid_t thread) {
    std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigBlk:")) {
            return std::stoull(line.substr(7), nullptr, 16);
        }
    }
    return 0;
}

TEST_F(Files, HoldSignalsBackWhileThereIsANewOne) {
    std::uint64_t ending = 0;
    for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT, SIGTSTP, SIGPIPE}) {
        ending |= std::uint64_t{1} << (signal - 1);
    }
    std::atomic<pid_t> thread = 0;
    int asked = 0;
    static_cast<void>(PlatformTests::askAboutEachCall(
        [&](long call) {
            if (call == SYS_openat || call == SYS_write || call == SYS_fchmod) {
                EXPECT_EQ(heldBack(thread) & ending, ending) << call;
                EXPECT_EQ(heldBack(thread) & (std::uint64_t{1} << (SIGUSR2 - 1)), 0U);
                ++asked;
            }
            return 0;
        },
        [&] {
            thread = ::gettid();
            EXPECT_EQ(replace(folder.path("a")), "");
        }));
    EXPECT_EQ(asked, 3);
}

TEST_F(Files, LetSignalsThroughAgain) {
    sigset_t some;
    sigemptyset(&some);
    sigaddset(&some, SIGUSR1);
    sigset_t usual;
    ASSERT_EQ(::sigprocmask(SIG_SETMASK, &some, &usual), 0);
    EXPECT_EQ(replace(folder.path("a")), "");
    sigset_t after;
    ASSERT_EQ(::sigprocmask(SIG_SETMASK, &usual, &after), 0);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT, SIGTSTP, SIGPIPE}) {
        EXPECT_EQ(sigismember(&after, signal), 0) << signal;
    }
    EXPECT_EQ(sigismember(&after, SIGUSR1), 1);
}

}  // namespace
