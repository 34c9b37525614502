#include "Platform/XPCMethod.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using Platform::XPCArgumentKind;
using Platform::XPCValue;

constexpr Platform::XPCTypedMethod<std::string, std::int32_t> kReport{"report:weight:"};

class Receiver final : public Platform::XPCObject {
  public:
    [[nodiscard]] std::string_view protocolName() const override { return "Reports"; }
    void message(std::string_view selector, std::vector<XPCValue> arguments,
                 Platform::XPCReply reply) override {
        selectors.emplace_back(selector);
        values = std::move(arguments);
        if (reply) {
            reply(std::nullopt);
        }
    }

    std::vector<std::string> selectors;
    std::vector<XPCValue> values;
};

template <typename... Values>
std::vector<XPCValue> valuesOf(Values... values) {
    std::vector<XPCValue> list;
    (list.emplace_back(std::move(values)), ...);
    return list;
}

TEST(XPCTypedMethod, DeclaresTheKindOfEachArgument) {
    const Platform::XPCMethod method =
        Platform::XPCTypedMethod<std::string, std::int32_t, Base::URL, Base::CodedObjectList,
                                 std::shared_ptr<Platform::XPCObject>>("a:b:c:d:e:", true)
            .declaration();
    EXPECT_EQ(method.selector, "a:b:c:d:e:");
    EXPECT_TRUE(method.replies);
    std::vector<XPCArgumentKind> kinds;
    for (const Platform::XPCArgument& argument : method.arguments) {
        kinds.push_back(argument.kind);
    }
    EXPECT_EQ(kinds, (std::vector{XPCArgumentKind::string, XPCArgumentKind::int32, XPCArgumentKind::url,
                                  XPCArgumentKind::codedObjects, XPCArgumentKind::object}));
    EXPECT_FALSE(kReport.declaration().replies);
}

TEST(XPCTypedMethod, SendsItsSelectorAndArgumentsAndHandsTheReplyOn) {
    Receiver receiver;
    int replies = 0;
    kReport.send(receiver, "text", 7, [&replies](const auto& /*error*/) { ++replies; });
    EXPECT_EQ(receiver.selectors, std::vector<std::string>{"report:weight:"});
    ASSERT_EQ(receiver.values.size(), 2U);
    EXPECT_EQ(std::get<std::string>(receiver.values[0]), "text");
    EXPECT_EQ(std::get<std::int32_t>(receiver.values[1]), 7);
    EXPECT_EQ(replies, 1);
}

TEST(XPCTypedMethod, TakesTheArgumentsOfItsOwnMessage) {
    std::vector<XPCValue> values = valuesOf(std::string("text"), std::int32_t{7});
    EXPECT_EQ(kReport.received("report:weight:", values), (std::tuple<std::string, std::int32_t>("text", 7)));
}

TEST(XPCTypedMethod, LeavesAnotherMethodsMessageAndArgumentsThatDoNotFit) {
    std::vector<XPCValue> fitting = valuesOf(std::string("text"), std::int32_t{7});
    EXPECT_EQ(kReport.received("report:", fitting), std::nullopt);
    EXPECT_EQ(std::get<std::string>(fitting[0]), "text");
    std::vector<XPCValue> swapped = valuesOf(std::int32_t{7}, std::string("text"));
    EXPECT_EQ(kReport.received("report:weight:", swapped), std::nullopt);
    EXPECT_EQ(std::get<std::string>(swapped[1]), "text");
    std::vector<XPCValue> wrongEnd = valuesOf(std::string("text"), std::string("7"));
    EXPECT_EQ(kReport.received("report:weight:", wrongEnd), std::nullopt);
    EXPECT_EQ(std::get<std::string>(wrongEnd[0]), "text");
    std::vector<XPCValue> few = valuesOf(std::string("text"));
    EXPECT_EQ(kReport.received("report:weight:", few), std::nullopt);
    std::vector<XPCValue> many = valuesOf(std::string("text"), std::int32_t{7}, std::int32_t{8});
    EXPECT_EQ(kReport.received("report:weight:", many), std::nullopt);
}

}  // namespace
