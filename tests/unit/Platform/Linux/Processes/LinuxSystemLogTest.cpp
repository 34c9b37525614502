#include "Platform/Linux/Processes/LinuxSystemLog.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <functional>
#include <regex>
#include <thread>
#include <vector>

#include "Platform/Linux/Processes/StandardErrorLog.h"
#include "support/Scratch.h"
#include "support/SystemCalls.h"

namespace PlatformTests {
namespace {

using Platform::Linux::LinuxSystemLog;

/// The receiving side of a log.
class Receiver {
  public:
    explicit Receiver(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        EXPECT_EQ(::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        const timeval timeout{1200, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    }
    ~Receiver() { ::close(socket_); }

    [[nodiscard]] std::string next() const {
        std::string datagram(4 << 20, '\0');
        const ssize_t length = ::recv(socket_, datagram.data(), datagram.size(), 0);
        EXPECT_GE(length, 0);
        datagram.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
        return datagram;
    }
    [[nodiscard]] std::string nextText() const {
        const std::string datagram = next();
        return datagram.substr(std::min(datagram.size(), datagram.find("]: ") + 3));
    }

  private:
    int socket_;
};

/// Standard error is another descriptor while it lives.
class StandardErrorOf {
  public:
    explicit StandardErrorOf(int descriptor) : saved_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
        ::dup2(descriptor, STDERR_FILENO);
        ::close(descriptor);
    }
    StandardErrorOf(const StandardErrorOf&) = delete;
    StandardErrorOf& operator=(const StandardErrorOf&) = delete;
    ~StandardErrorOf() {
        ::dup2(saved_, STDERR_FILENO);
        ::close(saved_);
    }

  private:
    int saved_;
};

int nowhere() {
    return ::open("/dev/null", O_WRONLY | O_CLOEXEC);
}

/// What `work` writes to standard error, which is a file.
std::string standardErrorOf(const std::string& file, const std::function<void()>& work) {
    const StandardErrorOf redirected(::open(file.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    work();
    return contentsOf(file);
}

/// A line of standard error with this text.
std::regex lineWith(const std::string& text) {
    const std::string ids = std::to_string(::getpid()) + ":" + std::to_string(::gettid());
    return std::regex(
        "20[0-9]{2}-[01][0-9]-[0-3][0-9] [0-2][0-9]:[0-5][0-9]:[0-6][0-9]\\.[0-9]{3} PlatformTests\\[" + ids +
        "\\] " + text + "\n");
}

TEST(SystemLog, SendsOneDatagramWithPriorityTimeAndName) {
    const Scratch scratch;
    const Receiver receiver(scratch.path("log"));
    LinuxSystemLog log(scratch.path("log"));
    log.log("some text");
    const std::string datagram = receiver.next();
    const std::regex form(
        "<13>(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) [ 123][0-9] "
        "[0-2][0-9]:[0-5][0-9]:[0-6][0-9] PlatformTests\\[" +
        std::to_string(::getpid()) + "\\]: some text");
    EXPECT_TRUE(std::regex_match(datagram, form)) << datagram;
}

TEST(SystemLog, SendsTextUnchanged) {
    const Scratch scratch;
    const Receiver receiver(scratch.path("log"));
    LinuxSystemLog log(scratch.path("log"));
    for (const std::string& text :
         {std::string("[SNTM Installer]\nError description: x\n;\ntermination status: 3"),
          std::string("100%s %n"), std::string(), std::string("\xc3\xa9")}) {
        log.log(text);
        EXPECT_EQ(receiver.nextText(), text);
    }
}

TEST(SystemLog, SendsLongTextsWhole) {
    const Scratch scratch;
    const Receiver receiver(scratch.path("log"));
    LinuxSystemLog log(scratch.path("log"));
    const StandardErrorOf redirected(nowhere());
    for (const std::size_t size : {9'000U, 60'000U, 150'000U}) {
        const std::string text(size, 'x');
        log.log(text);
        EXPECT_TRUE(receiver.nextText() == text) << size;
    }
}

TEST(SystemLog, LosesNothingOfATextThatIsTooLongForOneDatagram) {
    const Scratch scratch;
    const Receiver receiver(scratch.path("log"));
    std::string text;
    for (int number = 0; text.size() < 20 << 20; ++number) {
        text += "\xe2\x82\xac" + std::to_string(number);
    }
    const StandardErrorOf redirected(nowhere());
    std::thread sender([&] { LinuxSystemLog(scratch.path("log")).log(text); });
    std::string received;
    bool wholeCharacters = true;
    while (received.size() < text.size()) {
        const std::string piece = receiver.nextText();
        if (piece.empty()) {
            break;
        }
        wholeCharacters = wholeCharacters && (static_cast<unsigned char>(piece.front()) & 0xC0U) != 0x80U;
        received += piece;
    }
    sender.join();
    EXPECT_TRUE(received == text);
    EXPECT_TRUE(wholeCharacters);
}

TEST(SystemLog, ReconnectsWhenTheLogWasRestarted) {
    const Scratch scratch;
    LinuxSystemLog log(scratch.path("log"));
    {
        const Receiver receiver(scratch.path("log"));
        log.log("first");
        EXPECT_EQ(receiver.nextText(), "first");
    }
    ASSERT_EQ(::unlink(scratch.path("log").c_str()), 0);
    const std::string written = standardErrorOf(scratch.path("stderr"), [&] { log.log("nobody there"); });
    EXPECT_TRUE(std::regex_match(written, lineWith("nobody there"))) << written;
    const Receiver receiver(scratch.path("log"));
    log.log("second");
    EXPECT_EQ(receiver.nextText(), "second");
}

TEST(SystemLog, WritesToStandardErrorEvenIfTheLogRefusesTheText) {
    const Scratch scratch;
    const std::string written = standardErrorOf(scratch.path("stderr"), [&] {
        LinuxSystemLog(scratch.path("missing")).log("two\nlines");
        LinuxSystemLog(std::string(200, 'x')).log("path too long");
    });
    const std::size_t second = written.find("lines\n") + 6;
    EXPECT_TRUE(std::regex_match(written.substr(0, second), lineWith("two\nlines"))) << written;
    EXPECT_TRUE(std::regex_match(written.substr(second), lineWith("path too long"))) << written;
}

TEST(SystemLog, WritesToTheLogAndToARedirectedStandardError) {
    const Scratch scratch;
    const Receiver receiver(scratch.path("log"));
    LinuxSystemLog log(scratch.path("log"));
    const std::string written = standardErrorOf(scratch.path("stderr"), [&] { log.log("100%s both"); });
    EXPECT_TRUE(std::regex_match(written, lineWith("100%s both"))) << written;
    EXPECT_EQ(receiver.nextText(), "100%s both");
}

TEST(SystemLog, KnowsWhetherStandardErrorIsRead) {
    using Platform::Linux::isStandardErrorRead;
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    std::array<int, 2> sockets{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()), 0);
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(terminal, 0);
    for (const int read : {ends[1], sockets[1], terminal}) {
        const StandardErrorOf redirected(read);
        EXPECT_TRUE(isStandardErrorRead()) << read;
    }
    {
        const StandardErrorOf redirected(nowhere());
        EXPECT_FALSE(isStandardErrorRead());
    }
    bool isReadWhenClosed = true;
    {
        const StandardErrorOf redirected(nowhere());
        ::close(STDERR_FILENO);
        isReadWhenClosed = isStandardErrorRead();
    }
    EXPECT_FALSE(isReadWhenClosed);
    ::close(ends[0]);
    ::close(sockets[0]);
}

TEST(SystemLog, SurvivesAStandardErrorWhoseReaderHasGone) {
    const Scratch scratch;
    const Receiver receiver(scratch.path("log"));
    LinuxSystemLog log(scratch.path("log"));
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    ::close(ends[0]);
    {
        const StandardErrorOf redirected(ends[1]);
        log.log("unread");
    }
    EXPECT_EQ(receiver.nextText(), "unread");
    sigset_t pending;
    ::sigpending(&pending);
    EXPECT_EQ(::sigismember(&pending, SIGPIPE), 0);
    sigset_t blocked;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_EQ(::sigismember(&blocked, SIGPIPE), 0);
}

class SystemLogWhileCallsFail : public testing::Test {
  protected:
    /// How often an entry of this size is tried to be sent, where each attempt fails so, by its number from
    /// 1; the next entry is sent at once.
    [[nodiscard]] int attempts(std::size_t size, const std::function<int(int number)>& failure) {
        const StandardErrorOf redirected(nowhere());
        int count = 0;
        int countOfNext = 0;
        isOver_ = false;
        const auto failureOf = [&](long call) {
            if (call == SYS_sendmsg && isOver_) {
                ++countOfNext;
            }
            return call == SYS_sendmsg && !isOver_ ? failure(++count) : 0;
        };
        askAboutEachCall(failureOf, [&] {
            log_.log(std::string(size, 'x'));
            isOver_ = true;
            log_.log("next");
        });
        EXPECT_EQ(countOfNext, 1);
        return count;
    }

    Scratch scratch_;
    Receiver receiver_{scratch_.path("log")};
    LinuxSystemLog log_{scratch_.path("log")};

  private:
    std::atomic<bool> isOver_{false};
};

TEST_F(SystemLogWhileCallsFail, AnInterruptedEntryIsSentAgain) {
    EXPECT_EQ(attempts(10, [](int number) { return number <= 5 ? EINTR : 0; }), 6);
    EXPECT_EQ(receiver_.nextText(), std::string(10, 'x'));
    EXPECT_EQ(receiver_.nextText(), "next");
}

TEST_F(SystemLogWhileCallsFail, AnEntryThatCannotBeSentIsTriedTwice) {
    EXPECT_EQ(attempts(1000, [](int) { return EIO; }), 2);
    EXPECT_EQ(receiver_.nextText(), "next");
    EXPECT_EQ(attempts(1000, [](int number) { return number == 1 ? EIO : 0; }), 2);
    EXPECT_EQ(receiver_.nextText(), std::string(1000, 'x'));
    EXPECT_EQ(receiver_.nextText(), "next");
}

TEST_F(SystemLogWhileCallsFail, AnEntryWithoutRoomIsSentInHalves) {
    for (const int code : {ENOBUFS, EMSGSIZE}) {
        EXPECT_EQ(attempts(1000, [code](int number) { return number == 1 ? code : 0; }), 3);
        EXPECT_EQ(receiver_.nextText(), std::string(500, 'x'));
        EXPECT_EQ(receiver_.nextText(), std::string(500, 'x'));
        EXPECT_EQ(receiver_.nextText(), "next");
    }
}

TEST_F(SystemLogWhileCallsFail, PiecesAreHalvedDownToTheShortest) {
    // The whole, 1500, 750, 375 and at last 256 bytes.
    for (const int code : {ENOBUFS, EMSGSIZE}) {
        EXPECT_EQ(attempts(3000, [code](int) { return code; }), 5);
        EXPECT_EQ(receiver_.nextText(), "next");
    }
    EXPECT_EQ(attempts(1000, [](int number) { return number == 1 ? ENOBUFS : EIO; }), 2);
    EXPECT_EQ(receiver_.nextText(), "next");
}

TEST(SystemLog, ConnectsOnceForAnEntryIfNobodyListens) {
    const Scratch scratch;
    const StandardErrorOf redirected(nowhere());
    LinuxSystemLog log(scratch.path("log"));
    int connections = 0;
    const auto count = [&](long call) {
        connections += call == SYS_connect ? 1 : 0;
        return 0;
    };
    askAboutEachCall(count, [&] { log.log("unheard"); });
    EXPECT_EQ(connections, 1);
}

TEST(StandardErrorLog, WritesOnAfterAnInterruptionAndNotAfterAFailure) {
    const Scratch scratch;
    int attempts = 0;
    const auto linesWhile = [&](const std::function<int(int number)>& failure) {
        attempts = 0;
        return standardErrorOf(scratch.path("stderr"), [&] {
            askAboutEachCall([&](long call) { return call == SYS_write ? failure(++attempts) : 0; },
                             [] { Platform::Linux::writeToStandardError("program", "text"); });
        });
    };
    const std::string whole = linesWhile([](int number) { return number <= 3 ? EINTR : 0; });
    EXPECT_TRUE(whole.ends_with("] text\n")) << whole;
    EXPECT_EQ(attempts, 4);
    EXPECT_EQ(linesWhile([](int) { return EIO; }), "");
    EXPECT_EQ(attempts, 1);
}

TEST(SystemLog, TakesEntriesFromSeveralThreads) {
    const Scratch scratch;
    const Receiver receiver(scratch.path("log"));
    LinuxSystemLog log(scratch.path("log"));
    constexpr int kThreads = 4;
    constexpr int kEntries = 50;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            for (int number = 0; number < kEntries; ++number) {
                log.log("entry");
            }
        });
    }
    int received = 0;
    while (received < kThreads * kEntries && receiver.nextText() == "entry") {
        ++received;
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(received, kThreads * kEntries);
}

}  // namespace
}  // namespace PlatformTests
