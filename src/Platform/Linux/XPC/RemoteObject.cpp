#include "Platform/Linux/XPC/RemoteObject.h"

#include <semaphore>
#include <string>
#include <utility>
#include <variant>

#include "Base/FatalError.h"
#include "Platform/Linux/XPC/LinuxXPCConnection.h"
#include "Platform/Linux/XPC/XPCMarshalling.h"

namespace Platform::Linux {

namespace {

const XPCMethod& methodOrDie(const XPCInterface& interface, std::string_view selector) {
    const XPCMethod* method = findMethod(interface, selector);
    if (method == nullptr) {
        Base::fatalError("unrecognized selector sent to a remote object: " + std::string(selector));
    }
    return *method;
}

/// What a blocked caller waits for.
struct Outcome {
    struct Replied {
        std::optional<Error> error;
    };
    struct Failed {
        Error error;
    };

    std::variant<std::monostate, Replied, Failed> value;
    std::binary_semaphore done{0};
};

}  // namespace

RemoteObject::RemoteObject(std::shared_ptr<LinuxXPCConnection> connection, std::uint32_t number,
                           std::shared_ptr<const XPCInterface> interface)
    : connection_(std::move(connection)), number_(number), interface_(std::move(interface)) {}

void RemoteObject::message(std::string_view selector, std::vector<XPCValue> arguments, XPCReply reply) {
    connection_->send(number_, methodOrDie(*interface_, selector), std::move(arguments),
                      {std::move(reply), [](const Error&) {}});
}

SynchronousRemoteObject::SynchronousRemoteObject(std::shared_ptr<LinuxXPCConnection> connection,
                                                 std::shared_ptr<const XPCInterface> interface,
                                                 std::function<void(const Error&)> failed)
    : connection_(std::move(connection)), interface_(std::move(interface)), failed_(std::move(failed)) {}

void SynchronousRemoteObject::message(std::string_view selector, std::vector<XPCValue> arguments,
                                      XPCReply reply) {
    const XPCMethod& method = methodOrDie(*interface_, selector);
    if (!method.replies) {
        connection_->send(0, method, std::move(arguments), {});
        return;
    }
    auto outcome = std::make_shared<Outcome>();
    connection_->send(0, method, std::move(arguments),
                      {[outcome](const std::optional<Error>& error) {
                           outcome->value = Outcome::Replied{error};
                           outcome->done.release();
                       },
                       [outcome](const Error& error) {
                           outcome->value = Outcome::Failed{error};
                           outcome->done.release();
                       }});
    outcome->done.acquire();
    if (const auto* replied = std::get_if<Outcome::Replied>(&outcome->value)) {
        reply(replied->error);
    } else {
        failed_(std::get<Outcome::Failed>(outcome->value).error);
    }
}

}  // namespace Platform::Linux
