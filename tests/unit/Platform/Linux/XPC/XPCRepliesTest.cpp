// What a client makes of the replies of a helper that does not keep to the rules.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "RawPeer.h"
#include "XPCTestService.h"

namespace {

using namespace XPCTests;
using namespace Platform::Linux;
using Lines = std::vector<std::string>;

/// A service of one client that answers in bytes.
class RawService {
  public:
    RawService() : path_(testing::TempDir() + "raw-service." + std::to_string(::getpid())) {
        listener_ = Platform::Posix::Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path_.c_str(), sizeof address.sun_path - 1);
        ::unlink(path_.c_str());
        EXPECT_EQ(::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(listener_.get(), 1), 0);
    }
    ~RawService() { ::unlink(path_.c_str()); }

    void accept() {
        client_ = Platform::Posix::Descriptor(::accept(listener_.get(), nullptr, nullptr));
        EXPECT_TRUE(sendAll(client_, FrameWriter(FrameKind::accepted).finish()));
    }
    /// The reply number of the next message.
    [[nodiscard]] std::uint32_t nextQuestion() {
        for (;;) {
            if (const auto content = buffer_.next()) {
                FrameReader reader(*content);
                EXPECT_EQ(reader.u8(), static_cast<std::uint8_t>(FrameKind::message));
                EXPECT_EQ(reader.u32(), 0U);
                return reader.u32().value_or(0);
            }
            std::array<std::uint8_t, 4096> bytes{};
            const ssize_t count = ::recv(client_.get(), bytes.data(), bytes.size(), 0);
            if (count <= 0) {
                ADD_FAILURE() << "the client has gone";
                return 0;
            }
            buffer_.append({bytes.data(), static_cast<std::size_t>(count)});
        }
    }
    void reply(std::uint32_t number) {
        FrameWriter frame(FrameKind::reply);
        frame.u32(number);
        frame.u8(0);
        frame.u32(0);
        frame.sized(std::string_view());
        EXPECT_TRUE(sendAll(client_, frame.finish()));
    }
    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    const std::string path_;
    Platform::Posix::Descriptor listener_;
    Platform::Posix::Descriptor client_;
    FrameBuffer buffer_;
};

TEST(XPCReplies, AReplyThatComesTwiceIsDeliveredOnceAndToItsOwnQuestion) {
    RawService service;
    const auto journal = std::make_shared<Journal>();
    const auto connection = std::make_shared<LinuxXPCConnection>("raw.service", service.path());
    connection->setRemoteObjectInterface(testInterface());
    connection->resume();
    const auto ask = [&](const std::string& name) {
        std::vector<Platform::XPCValue> arguments;
        arguments.emplace_back(Base::URL::fileURL("/p"));
        connection->remoteObjectProxy()->message(
            "ask:", std::move(arguments),
            [journal, name](const std::optional<Platform::Error>&) { journal->add(name); });
    };
    ask("first");
    service.accept();
    const std::uint32_t first = service.nextQuestion();
    ask("second");
    const std::uint32_t second = service.nextQuestion();
    EXPECT_NE(first, second);
    service.reply(second);
    service.reply(second);
    service.reply(first);
    service.reply(second);
    ask("third");
    service.reply(service.nextQuestion());
    EXPECT_EQ(journal->waitFor(3), (Lines{"second", "first", "third"}));
    connection->invalidate();
}

}  // namespace
