#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "XPCTestService.h"

/// A client of the test service.
namespace XPCTests {

using Connection = std::shared_ptr<Platform::Linux::LinuxXPCConnection>;

inline std::vector<Platform::XPCValue> words(const std::string& text) {
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(text);
    return arguments;
}

inline std::vector<Platform::XPCValue> path(const std::string& text) {
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(Base::URL::fileURL(text));
    return arguments;
}

/// A client whose handlers note in `events`. The handlers share it: a connection may outlive the test's end.
struct Client {
    explicit Client(const TestService& service) : connection(service.client()) { watch(); }
    explicit Client(const std::string& socketPath)
        : connection(std::make_shared<Platform::Linux::LinuxXPCConnection>("test.service", socketPath)) {
        watch();
    }

    void watch() {
        connection->setRemoteObjectInterface(testInterface());
        connection->setInvalidationHandler([events = events] { events->add("invalidated"); });
        connection->setInterruptionHandler([events = events] { events->add("interrupted"); });
    }
    void say(const std::string& text) const {
        connection->remoteObjectProxy()->message("say:", words(text), {});
    }

    std::shared_ptr<Journal> events = std::make_shared<Journal>();
    Connection connection;
};

/// What a synchronous call came to.
inline std::string ask(const Connection& connection, const std::string& what) {
    std::string outcome = "nothing";
    const auto proxy = connection->synchronousRemoteObjectProxy(
        [&outcome](const Platform::Error& error) { outcome = "failed: " + error.description; });
    proxy->message("ask:", path(what), [&outcome](const std::optional<Platform::Error>& error) {
        outcome = error ? "error " + std::to_string(error->code) + ": " + error->description : "success";
    });
    return outcome;
}

}  // namespace XPCTests
