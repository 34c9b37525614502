#include "Platform/Linux/Processes/LinuxSystemLog.h"

#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "Base/UTF8.h"
#include "Platform/Linux/Processes/ProcessFiles.h"
#include "Platform/Linux/Processes/StandardErrorLog.h"

namespace Platform::Linux {

namespace {

/// Requested so that no entry has to be cut; the system grants what it allows.
constexpr int kSendBuffer = 8 << 20;
constexpr std::size_t kShortestPiece = 256;

std::string nameAndPid(const std::string& program) {
    return program + "[" + std::to_string(::getpid()) + "]: ";
}

/// Facility user, severity notice, and the time; in English whatever the locale.
std::string priorityAndTime() {
    static constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "<13>%s %2d %02d:%02d:%02d ",
                  kMonths[static_cast<std::size_t>(local.tm_mon) % kMonths.size()], local.tm_mday,
                  local.tm_hour, local.tm_min, local.tm_sec);
    return text.data();
}

iovec part(std::string_view text) {
    return iovec{const_cast<char*>(text.data()), text.size()};
}

}  // namespace

LinuxSystemLog::LinuxSystemLog(std::string socketPath)
    : socketPath_(std::move(socketPath)), programName_(fileNameOf(executablePath(::getpid()))) {}

void LinuxSystemLog::log(std::string_view text) {
    const std::string heading = priorityAndTime() + nameAndPid(programName_);
    const std::lock_guard<std::mutex> guard(mutex_);
    sendOrReconnect(heading, text);
    if (isStandardErrorRead()) {
        writeToStandardError(programName_, text);
    }
}

bool LinuxSystemLog::connect() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socketPath_.size() >= sizeof address.sun_path) {
        return false;
    }
    std::memcpy(address.sun_path, socketPath_.c_str(), socketPath_.size());
    socket_ = Posix::Descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    // Root may exceed the system's limit, anybody may go up to it. Neither is needed for entries of usual
    // size.
    if (::setsockopt(socket_.get(), SOL_SOCKET, SO_SNDBUFFORCE, &kSendBuffer, sizeof kSendBuffer) != 0) {
        (void)::setsockopt(socket_.get(), SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof kSendBuffer);
    }
    if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        socket_.reset(-1);
        return false;
    }
    return true;
}

/// Returns 0 or errno.
int LinuxSystemLog::send(std::string_view heading, std::string_view text) {
    std::array<iovec, 2> parts = {part(heading), part(text)};
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = parts.size();
    for (;;) {
        if (::sendmsg(socket_.get(), &message, MSG_NOSIGNAL) >= 0) {
            return 0;
        }
        if (errno != EINTR) {
            return errno;
        }
    }
}

void LinuxSystemLog::sendOrReconnect(std::string_view heading, std::string_view text) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!socket_ && !connect()) {
            return;
        }
        const int failure = send(heading, text);
        if (failure == 0) {
            return;
        }
        if (failure == EMSGSIZE || failure == ENOBUFS) {
            sendInPieces(heading, text);
            return;
        }
        socket_.reset(-1);
    }
}

void LinuxSystemLog::sendInPieces(std::string_view heading, std::string_view text) {
    std::size_t limit = text.size() / 2;
    while (!text.empty()) {
        const std::string_view piece = Base::startOfUTF8(text, std::max(limit, kShortestPiece));
        const int failure = send(heading, piece);
        if (failure == 0) {
            text.remove_prefix(piece.size());
        } else if ((failure == EMSGSIZE || failure == ENOBUFS) && limit > kShortestPiece) {
            limit /= 2;
        } else {
            socket_.reset(-1);
            return;
        }
    }
}

}  // namespace Platform::Linux
