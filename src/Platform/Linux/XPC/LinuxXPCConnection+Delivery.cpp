// What a connection does with each frame that arrives. All of it runs on the connection's thread.

#include <utility>

#include "Platform/Linux/XPC/LinuxXPCConnection.h"
#include "Platform/Linux/XPC/RemoteObject.h"
#include "Platform/Linux/XPC/XPCMarshalling.h"

namespace Platform::Linux {

bool LinuxXPCConnection::deliver(std::span<const std::uint8_t> content, Ending& ending) {
    FrameReader reader(content);
    const auto kind = static_cast<FrameKind>(reader.u8().value_or(0));
    if (kind == FrameKind::message) {
        return deliverMessage(reader);
    }
    if (kind == FrameKind::reply) {
        return deliverReply(reader);
    }
    if (isListeners_) {
        return refuse("a frame of an unknown kind");
    }
    ending = Ending::invalidated;
    accepted_ = accepted_ || kind == FrameKind::accepted;
    return kind == FrameKind::accepted;
}

bool LinuxXPCConnection::deliverMessage(FrameReader& reader) {
    const auto number = reader.u32();
    const auto reply = reader.u32();
    const auto selector = reader.shortText();
    if (!number || !reply || !selector) {
        return refuse("a message that is cut off");
    }
    Exported target = exported_;
    if (*number != 0) {
        const std::lock_guard lock(mutex_);
        const auto found = exportedArguments_.find(*number);
        target = found == exportedArguments_.end() ? Exported{} : found->second;
    }
    const XPCMethod* method = target.object == nullptr ? nullptr : findMethod(*target.interface, *selector);
    if (method == nullptr || method->replies != (*reply != 0)) {
        return refuse("a message that nothing here understands");
    }
    const std::shared_ptr<LinuxXPCConnection> self = forOneMessage();
    const MakeProxy makeProxy = [&self](std::uint32_t object, std::shared_ptr<const XPCInterface> interface) {
        return std::make_shared<RemoteObject>(self, object, std::move(interface));
    };
    std::string refusal;
    std::optional<std::vector<XPCValue>> arguments = readArguments(reader, *method, makeProxy, refusal);
    if (!arguments) {
        return refuse(std::string(method->selector) + ", " + refusal);
    }
    XPCReply completion;
    if (method->replies) {
        completion = [self, number = *reply](const std::optional<Error>& error) {
            self->answer(number, error);
        };
    }
    target.object->message(method->selector, std::move(*arguments), std::move(completion));
    return true;
}

std::shared_ptr<LinuxXPCConnection> LinuxXPCConnection::forOneMessage() {
    ++underWay_;
    return {this, [self = shared_from_this()](LinuxXPCConnection* /*connection*/) {
                if (self->underWay_-- == kMostUnderWay) {
                    self->channel_.wake();
                }
            }};
}

bool LinuxXPCConnection::deliverReply(FrameReader& reader) {
    const auto number = reader.u32();
    const auto failed = reader.u8();
    const auto code = reader.u32();
    const auto text = reader.sized();
    if (!number || !failed || !code || !text) {
        return refuse("a reply that is cut off");
    }
    Pending pending;
    {
        const std::lock_guard lock(mutex_);
        const auto found = pending_.find(*number);
        if (found == pending_.end()) {
            return true;
        }
        pending = std::move(found->second);
        pending_.erase(found);
    }
    if (*failed != 0) {
        pending.reply(Error{std::string(asText(*text)), static_cast<std::int32_t>(*code)});
    } else {
        pending.reply(std::nullopt);
    }
    return true;
}

bool LinuxXPCConnection::refuse(const std::string& why) {
    if (refused_) {
        refused_(why);
    }
    channel_.send(FrameWriter(FrameKind::invalidated).finish());
    return false;
}

void LinuxXPCConnection::answer(std::uint32_t number, const std::optional<Error>& error) {
    FrameWriter frame(FrameKind::reply);
    frame.u32(number);
    frame.u8(error ? 1 : 0);
    frame.u32(error ? static_cast<std::uint32_t>(error->code) : 0);
    frame.sized(error ? std::string_view(error->description) : std::string_view());
    channel_.send(frame.finish());
}

}  // namespace Platform::Linux
