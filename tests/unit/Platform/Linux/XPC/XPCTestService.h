#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Linux/XPC/LinuxXPCConnection.h"
#include "Platform/Linux/XPC/LinuxXPCListener.h"

namespace XPCTests {

/// Lines that several threads add to and a test waits for.
class Journal {
  public:
    void add(const std::string& line);
    /// The lines so far.
    [[nodiscard]] std::vector<std::string> lines() const;
    /// Waits, a minute at most, until there are `count` lines; returns them.
    [[nodiscard]] std::vector<std::string> waitFor(std::size_t count) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::string> lines_;
};

/// A protocol for tests: "say:" (string), "ask:" (url, replies), "callBack:times:" (object with "say:",
/// number).
[[nodiscard]] Platform::XPCInterface testInterface();

/// An exported object that notes its messages: "say hello", "ask /path", and calls back.
class TestObject final : public Platform::XPCObject {
  public:
    explicit TestObject(Journal& journal) : journal_(journal) {}

    [[nodiscard]] std::string_view protocolName() const override { return "Test"; }
    void message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                 Platform::XPCReply reply) override;

    /// What "ask:" is answered with.
    std::optional<Platform::Error> answer;
    /// Keeps the reply of "ask:" instead of answering.
    std::atomic<bool> keepsReplies{false};

  private:
    Journal& journal_;
};

/// A listener on a socket in a scratch folder, served by a separate thread.
class TestService {
  public:
    /// Clients of the identity "com.norvik.test" are taken; `identity` is what every peer is said to be. It
    /// serves until it has been idle for so long; without a time, to the test's end.
    explicit TestService(std::optional<std::string> identity = "com.norvik.test",
                         std::optional<std::uint32_t> idleSeconds = std::nullopt);
    TestService(const TestService&) = delete;
    TestService& operator=(const TestService&) = delete;
    /// Waits for the service to go idle.
    ~TestService();

    [[nodiscard]] const std::string& socketPath() const { return path_; }
    [[nodiscard]] std::shared_ptr<Platform::Linux::LinuxXPCConnection> client() const;
    [[nodiscard]] Platform::XPCListener& listener() { return *listener_; }

    /// Ends the connections that were accepted so far, as a helper that dies does.
    void dropConnections();

    Journal received;
    Journal refused;
    std::shared_ptr<TestObject> object = std::make_shared<TestObject>(received);
    /// Exported instead of `object`, with its interface.
    Platform::XPCInterface interface = testInterface();
    std::shared_ptr<Platform::XPCObject> exported = object;
    std::atomic<bool> accepts{true};
    /// Holds on to the connections that have ended, too.
    std::atomic<bool> keepsConnections{false};

    /// Starts to serve; everything above is set before.
    void start();

  private:
    std::string folder_;
    std::string path_;
    std::uint32_t idleSeconds_;
    std::unique_ptr<Platform::Linux::LinuxXPCListener> listener_;
    std::shared_ptr<void> stays_;
    std::thread thread_;
    std::mutex mutex_;
    std::vector<std::weak_ptr<Platform::XPCConnection>> connections_;
    std::vector<std::shared_ptr<Platform::XPCConnection>> kept_;
};

}  // namespace XPCTests
