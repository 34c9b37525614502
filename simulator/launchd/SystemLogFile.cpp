#include "launchd/SystemLogFile.h"

#include <array>
#include <cctype>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "Support/Machine.h"

namespace Simulator {

namespace {

constexpr const char* kLogSocket = "/dev/log";
constexpr std::size_t kMaximumEntry = 1U << 18U;

/// The contents of a syslog datagram, without its priority and time.
struct Entry {
    std::string_view program;
    std::string_view text;
};

bool isDigit(char character) {
    return std::isdigit(static_cast<unsigned char>(character)) != 0;
}

/// "Nov 21 08:00:00 "
bool hasTime(std::string_view text) {
    return text.size() >= 16 && text[3] == ' ' && text[6] == ' ' && text[9] == ':' && text[12] == ':' &&
           text[15] == ' ' && isDigit(text[14]);
}

Entry parseEntry(std::string_view datagram) {
    if (const std::size_t end = datagram.find('>'); datagram.starts_with('<') && end <= 4) {
        datagram.remove_prefix(end + 1);
    }
    if (hasTime(datagram)) {
        datagram.remove_prefix(16);
    }
    while (!datagram.empty() && (datagram.back() == '\n' || datagram.back() == '\0')) {
        datagram.remove_suffix(1);
    }
    const std::size_t colon = datagram.find(": ");
    if (colon == std::string_view::npos || datagram.substr(0, colon).find('\n') != std::string_view::npos) {
        return {"", datagram};
    }
    std::string_view program = datagram.substr(0, colon);
    if (const std::size_t bracket = program.rfind('[');
        program.ends_with(']') && bracket != std::string_view::npos) {
        program = program.substr(0, bracket);
    }
    return {program, datagram.substr(colon + 2)};
}

std::string nameOfProcess(int pid) {
    std::array<char, 4096> path{};
    const ssize_t length =
        ::readlink(("/proc/" + std::to_string(pid) + "/exe").c_str(), path.data(), path.size());
    const std::string_view whole(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::size_t slash = whole.rfind('/');
    return slash == std::string_view::npos ? "unknown" : std::string(whole.substr(slash + 1));
}

std::string timeOfDay() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%b %e %H:%M:%S", &parts);
    return text.data();
}

/// Control characters as ^X, except line feeds and tabs: programs may log several lines.
std::string harmless(std::string_view text) {
    std::string result;
    for (const char each : text) {
        const auto byte = static_cast<unsigned char>(each);
        if ((byte < 0x20 && each != '\n' && each != '\t') || byte == 0x7F) {
            result += {'^', static_cast<char>(byte ^ 0x40U)};
        } else {
            result += each;
        }
    }
    return result;
}

}  // namespace

SystemLogFile::SystemLogFile(EventLoop& loop) : loop_(loop) {}

bool SystemLogFile::open() {
    file_ = Descriptor(::open(std::string(kSystemLog).c_str(),
                              O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644));
    socket_ = Descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!file_.valid() || !socket_.valid()) {
        return false;
    }
    const int on = 1;
    const int bufferSize = 1 << 22;
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &bufferSize, sizeof bufferSize);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, kLogSocket);
    ::unlink(kLogSocket);
    if (::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::chmod(kLogSocket, 0666) != 0) {
        return false;
    }
    loop_.watch(socket_.get(), [this] { drain(); });
    return true;
}

void SystemLogFile::drain() {
    while (receiveOne()) {
    }
}

bool SystemLogFile::receiveOne() {
    static std::array<char, kMaximumEntry> buffer;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(ucred))> control{};
    iovec part{buffer.data(), buffer.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t length = ::recvmsg(socket_.get(), &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (length < 0) {
        return false;
    }
    ucred sender{};
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header != nullptr && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_CREDENTIALS) {
        std::memcpy(&sender, CMSG_DATA(header), sizeof sender);
    }
    const Entry entry = parseEntry({buffer.data(), static_cast<std::size_t>(length)});
    append(entry.program.empty() ? nameOfProcess(sender.pid) : std::string(entry.program), sender.pid,
           entry.text);
    return true;
}

void SystemLogFile::append(std::string_view program, int pid, std::string_view text) {
    const std::string line =
        timeOfDay() + " Mac " + harmless(program) + "[" + std::to_string(pid) + "]: " + harmless(text) + "\n";
    static_cast<void>(writeAll(file_.get(), line));
}

}  // namespace Simulator
