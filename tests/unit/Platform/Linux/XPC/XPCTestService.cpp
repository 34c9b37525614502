#include "XPCTestService.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>

namespace XPCTests {

void Journal::add(const std::string& line) {
    {
        const std::lock_guard lock(mutex_);
        lines_.push_back(line);
    }
    changed_.notify_all();
}

std::vector<std::string> Journal::lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

std::vector<std::string> Journal::waitFor(std::size_t count) const {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, std::chrono::minutes(20), [&] { return lines_.size() >= count; });
    return lines_;
}

Platform::XPCInterface testInterface() {
    using Kind = Platform::XPCArgumentKind;
    const Platform::XPCMethod say{"say:", {{Kind::string, {}, nullptr}}, false};
    const auto listener =
        std::make_shared<const Platform::XPCInterface>(Platform::XPCInterface{"Ear", {say}});
    return {"Test",
            {say,
             {"ask:", {{Kind::url, {}, nullptr}}, true},
             {"callBack:times:", {{Kind::object, {}, listener}, {Kind::int32, {}, nullptr}}, false}}};
}

void TestObject::message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                         Platform::XPCReply reply) {
    if (selector == "say:") {
        journal_.add("say " + std::get<std::string>(arguments.at(0)));
    } else if (selector == "ask:") {
        journal_.add("ask " + std::get<Base::URL>(arguments.at(0)).path());
        if (!keepsReplies) {
            reply(answer);
        }
    } else {
        const auto ear = std::get<std::shared_ptr<Platform::XPCObject>>(arguments.at(0));
        const std::int32_t times = std::get<std::int32_t>(arguments.at(1));
        for (std::int32_t i = 0; i < times; ++i) {
            std::vector<Platform::XPCValue> words;
            words.emplace_back(std::to_string(i));
            ear->message("say:", std::move(words), {});
        }
    }
}

TestService::TestService(std::optional<std::string> identity, std::optional<std::uint32_t> idleSeconds)
    : idleSeconds_(idleSeconds.value_or(0)) {
    std::string pattern = testing::TempDir() + "xpc.XXXXXX";
    folder_ = ::mkdtemp(pattern.data());
    path_ = folder_ + "/service";
    Platform::Posix::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path_.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(socket.get(), 16), 0);
    listener_ = std::make_unique<Platform::Linux::LinuxXPCListener>(
        std::move(socket),
        std::vector<std::string>{R"(identifier "com.norvik.test" and anchor apple generic)"},
        [identity = std::move(identity)](std::int32_t) { return identity; });
    if (!idleSeconds) {
        stays_ = listener_->transaction();
    }
}

void TestService::start() {
    thread_ = std::thread([this] {
        listener_->run(
            [this](const std::shared_ptr<Platform::XPCConnection>& connection,
                   const Platform::XPCPeer& peer) {
                EXPECT_EQ(peer.pid, ::getpid());
                EXPECT_EQ(peer.uid, ::geteuid());
                connection->setExportedObject(interface, exported);
                const std::lock_guard lock(mutex_);
                connections_.push_back(connection);
                if (keepsConnections) {
                    kept_.push_back(connection);
                }
                return accepts.load();
            },
            [this](const std::string& why) { refused.add(why); }, idleSeconds_);
    });
}

TestService::~TestService() {
    stays_.reset();
    if (thread_.joinable()) {
        thread_.join();
    }
    ::unlink(path_.c_str());
    ::rmdir(folder_.c_str());
}

std::shared_ptr<Platform::Linux::LinuxXPCConnection> TestService::client() const {
    return std::make_shared<Platform::Linux::LinuxXPCConnection>("test.service", path_);
}

void TestService::dropConnections() {
    const std::lock_guard lock(mutex_);
    for (const auto& weak : connections_) {
        if (const auto connection = weak.lock()) {
            connection->invalidate();
        }
    }
    connections_.clear();
}

}  // namespace XPCTests
