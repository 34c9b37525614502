// What a peer that passed authentication may still send: every broken frame ends its own connection with one
// line and nothing is delivered.

#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "RawPeer.h"
#include "XPCTestService.h"

namespace {

using namespace XPCTests;
using namespace Platform::Linux;
/// Sends the bytes to a fresh service; returns why they were refused. Nothing may be delivered.
std::string refusalOf(const Bytes& bytes) {
    TestService service;
    service.start();
    const Platform::Posix::Descriptor socket = connectTo(service.socketPath());
    EXPECT_EQ(::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
    EXPECT_TRUE(isClosedByPeer(socket));
    EXPECT_EQ(service.received.lines(), std::vector<std::string>());
    const auto refused = service.refused.waitFor(1);
    EXPECT_EQ(refused.size(), 1U);
    const std::string peer =
        "process " + std::to_string(::getpid()) + " of user " + std::to_string(::geteuid()) + ": ";
    return refused.empty() ? "" : refused[0].substr(refused[0].starts_with(peer) ? peer.size() : 0);
}

TEST(XPCHostilePeer, GarbageIsRefusedByItsLength) {
    EXPECT_EQ(refusalOf(Bytes(64, 0xFF)), "a frame of a length that is not allowed");
}

TEST(XPCHostilePeer, AnEmptyFrameIsRefused) {
    EXPECT_EQ(refusalOf(Bytes(4, 0)), "a frame of a length that is not allowed");
}

TEST(XPCHostilePeer, AFrameOfAnUnknownKindIsRefused) {
    EXPECT_EQ(refusalOf(FrameWriter(static_cast<FrameKind>(99)).finish()), "a frame of an unknown kind");
}

TEST(XPCHostilePeer, AnAcceptanceFromAClientIsRefused) {
    EXPECT_EQ(refusalOf(FrameWriter(FrameKind::accepted).finish()), "a frame of an unknown kind");
}

/// The frame with this many bytes of its content, and that length.
Bytes cutOff(Bytes frame, std::size_t length) {
    frame.resize(4 + length);
    frame[2] = static_cast<std::uint8_t>(length >> 8);
    frame[3] = static_cast<std::uint8_t>(length);
    return frame;
}

TEST(XPCHostilePeer, AMessageThatIsCutOffAnywhereIsRefused) {
    const Bytes whole = message(0, 0, "say:", stringArgument("text"));
    const std::size_t selectorsEnd = std::string("kOOOORRRRLLsay:").size();
    for (std::size_t length = 1; length < whole.size() - 4; ++length) {
        EXPECT_EQ(refusalOf(cutOff(whole, length)), length < selectorsEnd ? "a message that is cut off"
                                                    : length < selectorsEnd + 1
                                                        ? "say:, another number of arguments"
                                                        : "say:, argument 0: cut off or of another kind")
            << length;
    }
}

TEST(XPCHostilePeer, AReplyThatIsCutOffAnywhereIsRefused) {
    FrameWriter reply(FrameKind::reply);
    reply.u32(12);
    reply.u8(1);
    reply.u32(5);
    reply.sized(std::string_view("text"));
    const Bytes whole = reply.finish();
    for (std::size_t length = 1; length < whole.size() - 4; ++length) {
        EXPECT_EQ(refusalOf(cutOff(whole, length)), "a reply that is cut off") << length;
    }
}

TEST(XPCHostilePeer, AnUnknownSelectorIsRefused) {
    EXPECT_EQ(refusalOf(message(0, 0, "shout:", stringArgument("x"))),
              "a message that nothing here understands");
}

TEST(XPCHostilePeer, AnObjectThatWasNeverExportedIsRefused) {
    EXPECT_EQ(refusalOf(message(7, 0, "say:", stringArgument("x"))),
              "a message that nothing here understands");
}

TEST(XPCHostilePeer, AReplyWantedWhereNoneIsGivenIsRefused) {
    EXPECT_EQ(refusalOf(message(0, 1, "say:", stringArgument("x"))),
              "a message that nothing here understands");
}

TEST(XPCHostilePeer, AnotherNumberOfArgumentsIsRefused) {
    EXPECT_EQ(refusalOf(message(0, 0, "say:", {0})), "say:, another number of arguments");
}

TEST(XPCHostilePeer, AnArgumentOfAnotherKindIsRefused) {
    Bytes arguments = stringArgument("x");
    arguments[1] = static_cast<std::uint8_t>(Platform::XPCArgumentKind::url);
    EXPECT_EQ(refusalOf(message(0, 0, "say:", arguments)), "say:, argument 0: cut off or of another kind");
}

TEST(XPCHostilePeer, AnArgumentLongerThanItsFrameIsRefused) {
    Bytes arguments = stringArgument("x");
    arguments[2] = 0xFF;
    EXPECT_EQ(refusalOf(message(0, 0, "say:", arguments)), "say:, argument 0: cut off or of another kind");
}

TEST(XPCHostilePeer, AStringThatIsNotUTF8IsRefused) {
    EXPECT_EQ(refusalOf(message(0, 0, "say:", stringArgument("\xFF"))),
              "say:, argument 0: a string that is not UTF-8");
}

TEST(XPCHostilePeer, BytesAfterTheLastArgumentAreRefused) {
    Bytes arguments = stringArgument("x");
    arguments.push_back(0);
    EXPECT_EQ(refusalOf(message(0, 0, "say:", arguments)), "say:, bytes after the last argument");
}

TEST(XPCHostilePeer, AURLThatNamesNoFileIsRefused) {
    Bytes arguments = stringArgument("http://example.org/");
    arguments[1] = static_cast<std::uint8_t>(Platform::XPCArgumentKind::url);
    EXPECT_EQ(refusalOf(message(0, 1, "ask:", arguments)), "ask:, argument 0: a URL that names no file");
}

TEST(XPCHostilePeer, AnObjectWithoutANumberIsRefused) {
    const auto object = static_cast<std::uint8_t>(Platform::XPCArgumentKind::object);
    const auto number = static_cast<std::uint8_t>(Platform::XPCArgumentKind::int32);
    const Bytes arguments{2, object, 0, 0, 0, 4, 0, 0, 0, 0, number, 0, 0, 0, 4, 0, 0, 0, 1};
    EXPECT_EQ(refusalOf(message(0, 0, "callBack:times:", arguments)),
              "callBack:times:, argument 0: an object without a number");
}

TEST(XPCHostilePeer, ANumberOfAnotherSizeIsRefused) {
    const auto object = static_cast<std::uint8_t>(Platform::XPCArgumentKind::object);
    const auto number = static_cast<std::uint8_t>(Platform::XPCArgumentKind::int32);
    EXPECT_EQ(refusalOf(message(
                  0, 0, "callBack:times:", {2, object, 0, 0, 0, 4, 0, 0, 0, 9, number, 0, 0, 0, 3, 0, 0, 1})),
              "callBack:times:, argument 1: a number of another size");
    EXPECT_EQ(refusalOf(message(0, 0, "callBack:times:", {2,      object, 0, 0, 0, 4, 0, 0, 0, 9,
                                                          number, 0,      0, 0, 5, 0, 0, 0, 1, 0})),
              "callBack:times:, argument 1: a number of another size");
    EXPECT_EQ(refusalOf(message(0, 0, "callBack:times:", {2, object, 0, 0, 0, 5, 0, 0, 0, 9,
                                                          0, number, 0, 0, 0, 4, 0, 0, 0, 1})),
              "callBack:times:, argument 0: an object without a number");
}

TEST(XPCHostilePeer, ACallBackToAnObjectThatThePeerNeverHadHarmsNobody) {
    TestService service;
    service.start();
    const Platform::Posix::Descriptor socket = connectTo(service.socketPath());
    const auto object = static_cast<std::uint8_t>(Platform::XPCArgumentKind::object);
    const auto number = static_cast<std::uint8_t>(Platform::XPCArgumentKind::int32);
    const Bytes arguments{2, object, 0, 0, 0, 4, 0, 0, 0, 9, number, 0, 0, 0, 4, 0, 0, 0, 2};
    const Bytes frame = message(0, 0, "callBack:times:", arguments);
    ASSERT_EQ(::send(socket.get(), frame.data(), frame.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(frame.size()));
    const Bytes after = message(0, 0, "say:", stringArgument("x"));
    ASSERT_EQ(::send(socket.get(), after.data(), after.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(after.size()));
    EXPECT_EQ(service.received.waitFor(1), std::vector<std::string>{"say x"});
    EXPECT_EQ(service.refused.lines(), std::vector<std::string>());
}

TEST(XPCHostilePeer, AReplyToNothingIsIgnored) {
    TestService service;
    service.start();
    const Platform::Posix::Descriptor socket = connectTo(service.socketPath());
    FrameWriter reply(FrameKind::reply);
    reply.u32(12);
    reply.u8(0);
    reply.u32(0);
    reply.sized(std::string_view());
    const Bytes frame = reply.finish();
    ASSERT_EQ(::send(socket.get(), frame.data(), frame.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(frame.size()));
    const Bytes after = message(0, 0, "say:", stringArgument("x"));
    ASSERT_EQ(::send(socket.get(), after.data(), after.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(after.size()));
    EXPECT_EQ(service.received.waitFor(1), std::vector<std::string>{"say x"});
}

/// Whether the other end has read everything (unix(7)).
bool isAllRead(const Platform::Posix::Descriptor& socket) {
    int unread = -1;
    return ::ioctl(socket.get(), SIOCOUTQ, &unread) == 0 && unread == 0;
}

TEST(XPCHostilePeer, AMessageThatComesByteByByteIsTaken) {
    TestService service;
    service.start();
    const Platform::Posix::Descriptor socket = connectTo(service.socketPath());
    for (const std::uint8_t byte : message(0, 0, "say:", stringArgument("x"))) {
        ASSERT_EQ(::send(socket.get(), &byte, 1, MSG_NOSIGNAL), 1);
        while (!isAllRead(socket)) {
            std::this_thread::yield();
        }
    }
    EXPECT_EQ(service.received.waitFor(1), std::vector<std::string>{"say x"});
}

TEST(XPCHostilePeer, APeerThatNeverSaysAnythingDoesNotKeepOthersFromBeingServed) {
    TestService service;
    service.start();
    const Platform::Posix::Descriptor silent = connectTo(service.socketPath());
    const Platform::Posix::Descriptor talking = connectTo(service.socketPath());
    const Bytes frame = message(0, 0, "say:", stringArgument("x"));
    ASSERT_EQ(::send(talking.get(), frame.data(), frame.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(frame.size()));
    EXPECT_EQ(service.received.waitFor(1), std::vector<std::string>{"say x"});
}

}  // namespace
