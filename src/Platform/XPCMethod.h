#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "Platform/XPC.h"

namespace Platform {

/// The kind of an argument that has this type.
template <typename Argument>
inline constexpr XPCArgumentKind kArgumentKind = XPCArgumentKind::object;
template <>
inline constexpr XPCArgumentKind kArgumentKind<std::string> = XPCArgumentKind::string;
template <>
inline constexpr XPCArgumentKind kArgumentKind<std::int32_t> = XPCArgumentKind::int32;
template <>
inline constexpr XPCArgumentKind kArgumentKind<Base::URL> = XPCArgumentKind::url;
template <>
inline constexpr XPCArgumentKind kArgumentKind<Base::CodedObjectList> = XPCArgumentKind::codedObjects;

/// One method of a protocol, with the types of its arguments: each an alternative of XPCValue. States the
/// selector once for the interface, the sender and the receiver; the compiler checks what is sent, and
/// `received` what arrives.
template <typename... Arguments>
class XPCTypedMethod {
  public:
    /// `replies` as in XPCMethod.
    constexpr explicit XPCTypedMethod(std::string_view selector, bool replies = false)
        : selector_(selector), replies_(replies) {}

    [[nodiscard]] constexpr std::string_view selector() const { return selector_; }

    /// The method for an interface. The caller adds the classes allowed in a list and the interface of an
    /// object, which the types do not tell.
    [[nodiscard]] XPCMethod declaration() const {
        return {selector_, {XPCArgument{kArgumentKind<Arguments>}...}, replies_};
    }

    /// Sends the message; see XPCObject::message.
    void send(XPCObject& target, Arguments... arguments, XPCReply reply = {}) const {
        std::vector<XPCValue> values;
        values.reserve(sizeof...(Arguments));
        (values.emplace_back(std::move(arguments)), ...);
        target.message(selector_, std::move(values), std::move(reply));
    }

    /// Takes the arguments of a message that has arrived. Returns nothing, and leaves them, if it is another
    /// method's or if they do not fit this one.
    [[nodiscard]] std::optional<std::tuple<Arguments...>> received(std::string_view selector,
                                                                   std::vector<XPCValue>& values) const {
        if (selector != selector_ || values.size() != sizeof...(Arguments)) {
            return std::nullopt;
        }
        return taken(values, std::index_sequence_for<Arguments...>());
    }

  private:
    template <std::size_t... Index>
    static std::optional<std::tuple<Arguments...>> taken(std::vector<XPCValue>& values,
                                                         std::index_sequence<Index...> /*indices*/) {
        if (!(std::holds_alternative<Arguments>(values[Index]) && ...)) {
            return std::nullopt;
        }
        return std::tuple<Arguments...>(std::get<Arguments>(std::move(values[Index]))...);
    }

    std::string_view selector_;
    bool replies_;
};

}  // namespace Platform
