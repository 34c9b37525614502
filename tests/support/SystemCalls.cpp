#include "support/SystemCalls.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <future>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "Platform/Posix/Descriptor.h"

namespace PlatformTests {
namespace {

constexpr long kCalls[] = {
#ifdef SYS_readlink
    // On older processors only.
    SYS_chmod,       SYS_readlink,
#endif
    kChangeModeCall, SYS_accept4,    SYS_connect,    SYS_copy_file_range, SYS_eventfd2,  SYS_faccessat,
    SYS_faccessat2,  SYS_fchmod,     SYS_fchmodat,   SYS_fchown,          SYS_fchownat,  SYS_fcntl,
    SYS_fgetxattr,   SYS_flistxattr, SYS_flock,      SYS_fsetxattr,       SYS_fstat,     SYS_fstatfs,
    SYS_ftruncate,   SYS_getdents64, SYS_getsockopt, SYS_ioctl,           SYS_lgetxattr, SYS_linkat,
    SYS_llistxattr,  SYS_lseek,      SYS_lsetxattr,  SYS_mkdirat,         SYS_mknodat,   SYS_newfstatat,
    SYS_openat,      SYS_pipe2,      SYS_pread64,    SYS_pwrite64,        SYS_read,      SYS_readlinkat,
    SYS_recvfrom,    SYS_renameat,   SYS_renameat2,  SYS_sendmsg,         SYS_sendto,    SYS_setsockopt,
    SYS_socket,      SYS_statx,      SYS_symlinkat,  SYS_unlinkat,        SYS_utimensat, SYS_write};

/// From now on, the kernel asks the reader of the result about each such call of this thread and of those
/// that it starts. -errno if it cannot.
int askAboutCalls() {
    std::vector<sock_filter> steps{{BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)}};
    for (const long call : kCalls) {
        steps.push_back({BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<std::uint32_t>(call)});
        steps.push_back({BPF_RET | BPF_K, 0, 0, SECCOMP_RET_USER_NOTIF});
    }
    steps.push_back({BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW});
    const sock_fprog program{static_cast<unsigned short>(steps.size()), steps.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        return -errno;
    }
    const long listener =
        ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program);
    return listener < 0 ? -errno : static_cast<int>(listener);
}

/// Waits for a call to be asked about; false when no thread is left that could make one.
bool awaitCall(int listener) {
    pollfd waiting{listener, POLLIN, 0};
    while (::poll(&waiting, 1, -1) < 0 && errno == EINTR) {
    }
    return (waiting.revents & POLLIN) != 0;
}

/// Receives one call, and lets it happen or fail. False if its thread ended meanwhile.
bool answerNext(int listener, const std::function<int(const Call& call)>& codeOf) {
    // A newer kernel may write more.
    struct {
        seccomp_notif call;
        std::array<char, 256> more;
    } received{};
    if (::ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, &received) != 0) {
        return false;
    }
    Call call{received.call.data.nr, {}};
    std::ranges::copy(received.call.data.args, call.arguments.begin());
    const int code = codeOf(call);
    seccomp_notif_resp answer{};
    answer.id = received.call.id;
    answer.error = -code;
    answer.flags = code == 0 ? SECCOMP_USER_NOTIF_FLAG_CONTINUE : 0;
    return ::ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &answer) == 0;
}

bool leavesToChildren(const Call& call) {
    const auto lacks = [&call](std::size_t index, std::uint64_t flag) {
        return (call.arguments[index] & flag) == 0;
    };
    switch (call.number) {
        case SYS_openat:
            return lacks(2, O_CLOEXEC);
        case SYS_accept4:
            return lacks(3, SOCK_CLOEXEC);
        case SYS_socket:
            return lacks(1, SOCK_CLOEXEC);
        case SYS_pipe2:
            return lacks(1, O_CLOEXEC);
        case SYS_eventfd2:
            return lacks(1, EFD_CLOEXEC);
        case SYS_fcntl:
            return call.arguments[1] == F_DUPFD;
        default:
            return false;
    }
}

}  // namespace

int askAboutEachCall(const std::function<int(const Call& call)>& codeOf, const std::function<void()>& work) {
    std::promise<int> asked;
    std::thread worker([&] {
        const int made = askAboutCalls();
        asked.set_value(made);
        if (made >= 0) {
            work();
        }
    });
    const int made = asked.get_future().get();
    const Platform::Posix::Descriptor listener(made);
    int calls = 0;
    while (made >= 0 && awaitCall(made)) {
        if (answerNext(made, codeOf)) {
            ++calls;
        }
    }
    worker.join();
    if (made < 0) {
        throw std::system_error(-made, std::generic_category(), "seccomp");
    }
    return calls;
}

int callsWhileOneIsRefused(int number, int code, const std::function<void()>& work) {
    int next = 0;
    return askAboutEachCall([&](const Call& /*call*/) { return next++ == number ? code : 0; }, work);
}

int descriptorsLeftToChildren(const std::function<void()>& work) {
    int left = 0;
    const int calls = askAboutEachCall(
        [&left](const Call& call) {
            left += leavesToChildren(call) ? 1 : 0;
            return 0;
        },
        work);
    EXPECT_GT(calls, 0);
    return left;
}

int refuseEachCall(int code, const std::function<void()>& prepare, const std::function<void()>& work,
                   const std::function<void(bool isRefused)>& check) {
    // What libraries and sanitizers do the first time is not part of the work.
    prepare();
    work();
    check(false);
    for (int number = 0;; ++number) {
        SCOPED_TRACE("call " + std::to_string(number));
        prepare();
        const bool isRefused = callsWhileOneIsRefused(number, code, work) > number;
        check(isRefused);
        if (!isRefused) {
            return number;
        }
    }
}

}  // namespace PlatformTests
