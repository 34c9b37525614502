#include "FakeProcessOne.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

namespace XPCTests {

ScratchFolder::ScratchFolder() {
    std::string pattern = testing::TempDir() + "one.XXXXXX";
    path_ = ::mkdtemp(pattern.data());
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string packetOf(const FakeProcessOne::Fields& fields) {
    std::string packet;
    for (const std::string& field : fields) {
        packet += field + '\0';
    }
    packet.pop_back();
    return packet;
}

Platform::Posix::Descriptor listeningSocket(const std::string& path, int type) {
    Platform::Posix::Descriptor socket(::socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    EXPECT_LT(path.size(), sizeof address.sun_path);
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(socket.get(), 16), 0);
    return socket;
}

FakeProcessOne::FakeProcessOne(Answer answer, const std::string& name)
    : path_(folder_.path() + "/" + name),
      answer_(std::move(answer)),
      socket_(listeningSocket(path_, SOCK_SEQPACKET)),
      thread_([this] { serve(); }) {}

FakeProcessOne::FakeProcessOne(const Fields& reply)
    : FakeProcessOne([packet = packetOf(reply)](const std::string&) { return packet; }) {}

FakeProcessOne::~FakeProcessOne() {
    ::shutdown(socket_.get(), SHUT_RDWR);
    thread_.join();
}

void FakeProcessOne::answerWith(const Fields& reply) {
    const std::lock_guard lock(mutex_);
    answer_ = [packet = packetOf(reply)](const std::string&) { return packet; };
}

std::vector<std::string> FakeProcessOne::packets() const {
    const std::lock_guard lock(mutex_);
    return packets_;
}

std::vector<FakeProcessOne::Fields> FakeProcessOne::requests() const {
    std::vector<Fields> requests;
    for (const std::string& packet : packets()) {
        Fields fields(1);
        for (const char byte : packet) {
            if (byte == '\0') {
                fields.emplace_back();
            } else {
                fields.back() += byte;
            }
        }
        requests.push_back(std::move(fields));
    }
    return requests;
}

void FakeProcessOne::serve() {
    for (;;) {
        const Platform::Posix::Descriptor connection(
            ::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!connection) {
            return;
        }
        serveOne(connection.get());
    }
}

void FakeProcessOne::serveOne(int connection) {
    std::string packet(2 * Platform::Linux::kMaximumPacket, '\0');
    const ssize_t size = ::recv(connection, packet.data(), packet.size(), 0);
    if (size <= 0) {
        return;
    }
    packet.resize(static_cast<std::size_t>(size));
    Answer answer;
    {
        const std::lock_guard lock(mutex_);
        packets_.push_back(packet);
        answer = answer_;
    }
    if (const auto reply = answer(packet)) {
        static_cast<void>(::send(connection, reply->data(), reply->size(), MSG_NOSIGNAL));
    }
}

}  // namespace XPCTests
