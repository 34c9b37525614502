// The one packet that goes to process 1, and the one that comes back.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "FakeProcessOne.h"

namespace {

using namespace XPCTests;
using Fields = FakeProcessOne::Fields;
using Platform::Linux::kMaximumPacket;
using Platform::Linux::MacServices;

TEST(MacServices, SendsItsFieldsInOnePacketJoinedByNulBytes) {
    const FakeProcessOne one(Fields{"0"});
    ASSERT_TRUE(one.services().request({"bless", "", "com.norvik.Helper"}));
    EXPECT_EQ(one.packets(), std::vector<std::string>{std::string("bless\0\0com.norvik.Helper", 24)});
}

TEST(MacServices, GivesTheFieldsOfTheReplyEmptyOnesToo) {
    const FakeProcessOne one(Fields{"", "0", "", "two words", ""});
    EXPECT_EQ(one.services().request({"lookup"}), (Fields{"", "0", "", "two words", ""}));
}

TEST(MacServices, AReplyOfOneFieldIsOneField) {
    const FakeProcessOne one(Fields{"12"});
    EXPECT_EQ(one.services().request({"unload-kext", "x"}), Fields{"12"});
}

TEST(MacServices, EveryRequestOpensItsOwnConnection) {
    const FakeProcessOne one(Fields{"0"});
    EXPECT_TRUE(one.services().request({"a"}));
    EXPECT_TRUE(one.services().request({"b"}));
    EXPECT_EQ(one.requests(), (std::vector<Fields>{{"a"}, {"b"}}));
}

TEST(MacServices, NothingWhenNobodyListens) {
    const ScratchFolder folder;
    EXPECT_EQ(MacServices(folder.path() + "/nobody").request({"lookup", "x"}), std::nullopt);
}

TEST(MacServices, NothingWhenTheServerClosesWithoutAnAnswer) {
    const FakeProcessOne one([](const std::string&) { return std::nullopt; });
    // Of an earlier call: this is no interruption.
    errno = EINTR;
    EXPECT_EQ(one.services().request({"lookup", "x"}), std::nullopt);
    EXPECT_EQ(one.requests().size(), 1U);
}

/// Whether a process of its own finds this so.
bool holdsInAChild(const std::function<bool()>& check) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(check() ? 7 : 1);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 7;
}

TEST(MacServices, AConnectionMayHaveTheNumberOfStandardInput) {
    const FakeProcessOne one(Fields{"0"});
    EXPECT_TRUE(holdsInAChild([&] {
        ::close(STDIN_FILENO);
        return one.services().request({"lookup"}) == Fields{"0"};
    }));
}

/// Whether standard input, a socket meanwhile, is neither read, written nor closed by this.
bool leavesStandardInputAlone(const std::function<bool()>& request) {
    return holdsInAChild([&] {
        int pair[2];
        char byte = 0;
        return ::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair) == 0 && ::dup2(pair[0], STDIN_FILENO) == 0 &&
               request() && ::fcntl(STDIN_FILENO, F_GETFD) != -1 &&
               ::recv(pair[1], &byte, 1, MSG_DONTWAIT) == -1;
    });
}

TEST(MacServices, NothingWithoutAFreeDescriptorAndStandardInputStays) {
    const FakeProcessOne one(Fields{"0"});
    EXPECT_TRUE(leavesStandardInputAlone([&] {
        const rlimit none{1, 1};
        return ::setrlimit(RLIMIT_NOFILE, &none) == 0 && !one.services().request({"lookup"});
    }));
    EXPECT_EQ(one.packets(), std::vector<std::string>());
}

TEST(MacServices, NothingWhereNobodyCanListenAndStandardInputStays) {
    const ScratchFolder folder;
    for (const std::string& path : {folder.path() + "/nobody", std::string(200, 'x')}) {
        EXPECT_TRUE(leavesStandardInputAlone([&] { return !MacServices(path).request({"lookup"}); }));
    }
}

TEST(MacServices, SendsNoFieldThatHasANulByte) {
    const FakeProcessOne one(Fields{"0"});
    EXPECT_EQ(one.services().request({"release", std::string("a\0b", 3)}), std::nullopt);
    EXPECT_EQ(one.packets(), std::vector<std::string>());
}

TEST(MacServices, SendsNoEmptyRequest) {
    const FakeProcessOne one(Fields{"0"});
    EXPECT_EQ(one.services().request({}), std::nullopt);
    EXPECT_EQ(one.services().request({""}), std::nullopt);
    EXPECT_EQ(one.packets(), std::vector<std::string>());
}

TEST(MacServices, APacketMayHaveTheGreatestSizeAndNoByteMore) {
    const FakeProcessOne one(Fields{"0"});
    const std::string greatest(kMaximumPacket, 'x');
    EXPECT_EQ(one.services().request({greatest}), Fields{"0"});
    EXPECT_EQ(one.services().request({greatest + "x"}), std::nullopt);
    EXPECT_EQ(one.packets(), std::vector<std::string>{greatest});
}

TEST(MacServices, AReplyOfTheGreatestSizeArrivesWhole) {
    const std::string greatest(kMaximumPacket, 'x');
    const FakeProcessOne one(Fields{greatest});
    EXPECT_EQ(one.services().request({"launchctl"}), Fields{greatest});
}

TEST(MacServices, ThePathMayFillTheAddressAndNoMore) {
    constexpr std::size_t kLongest = sizeof(sockaddr_un::sun_path) - 1;
    const ScratchFolder measure;
    const FakeProcessOne one([](const std::string&) { return "0"; },
                             std::string(kLongest - measure.path().size() - 1, 'n'));
    ASSERT_EQ(one.socketPath().size(), kLongest);
    EXPECT_EQ(one.services().request({"lookup"}), Fields{"0"});
    EXPECT_EQ(MacServices(one.socketPath() + "n").request({"lookup"}), std::nullopt);
}

/// How many descriptors this process has.
std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST(MacServices, EveryConnectionIsClosed) {
    const FakeProcessOne one(Fields{"0"});
    EXPECT_TRUE(holdsInAChild([&] {
        // The server's end of a connection is not this process's.
        const std::ptrdiff_t own = openDescriptors();
        return one.services().request({"lookup"}) &&
               !MacServices(one.socketPath() + "-nobody").request({"lookup"}) &&
               one.services().request({"lookup"}) && openDescriptors() == own;
    }));
}

std::atomic<int> signalsHandled;

/// Whether a thread of this process waits in recvfrom(2).
bool waitsForAPacket(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/syscall");
    long number = -1;
    return file >> number && number == SYS_recvfrom;
}

TEST(MacServices, ASignalDoesNotEndTheWaitForTheReply) {
    struct sigaction action {};
    struct sigaction former {};
    action.sa_handler = [](int) { ++signalsHandled; };
    ASSERT_EQ(::sigaction(SIGUSR1, &action, &former), 0);
    signalsHandled = 0;
    const pthread_t caller = ::pthread_self();
    const pid_t thread = ::gettid();
    const FakeProcessOne one([&](const std::string&) {
        while (!waitsForAPacket(thread)) {
            std::this_thread::yield();
        }
        ::pthread_kill(caller, SIGUSR1);
        while (signalsHandled == 0) {
            std::this_thread::yield();
        }
        return std::optional<std::string>("0");
    });
    EXPECT_EQ(one.services().request({"authorize"}), Fields{"0"});
    EXPECT_EQ(signalsHandled, 1);
    ::sigaction(SIGUSR1, &former, nullptr);
}

}  // namespace
