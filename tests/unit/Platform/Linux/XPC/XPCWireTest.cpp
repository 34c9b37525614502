#include "Platform/Linux/XPC/XPCWire.h"

#include <gtest/gtest.h>

namespace {

using namespace Platform::Linux;
using Bytes = std::vector<std::uint8_t>;

Bytes sampleFrame() {
    FrameWriter writer(FrameKind::message);
    writer.u32(0x01020304);
    writer.u16(0x0506);
    writer.shortText("ab");
    writer.sized(std::string_view("cde"));
    return writer.finish();
}

TEST(FrameWriterTest, WritesBigEndianNumbersAndItsOwnLength) {
    EXPECT_EQ(sampleFrame(),
              (Bytes{0, 0, 0, 18, 2, 1, 2, 3, 4, 5, 6, 0, 2, 'a', 'b', 0, 0, 0, 3, 'c', 'd', 'e'}));
}

TEST(FrameReaderTest, ReadsWhatWasWritten) {
    const Bytes frame = sampleFrame();
    FrameReader reader({frame.data() + 4, frame.size() - 4});
    EXPECT_EQ(reader.u8(), 2);
    EXPECT_EQ(reader.u32(), 0x01020304U);
    EXPECT_EQ(reader.u16(), 0x0506);
    EXPECT_EQ(reader.shortText(), "ab");
    const auto rest = reader.sized();
    ASSERT_TRUE(rest);
    EXPECT_EQ(asText(*rest), "cde");
    EXPECT_TRUE(reader.atEnd());
}

TEST(FrameReaderTest, GivesNothingPastTheEnd) {
    const Bytes bytes{0, 0, 0, 9, 1};
    FrameReader reader(bytes);
    EXPECT_FALSE(reader.sized());
    FrameReader empty({});
    EXPECT_FALSE(empty.u8());
    EXPECT_FALSE(empty.u16());
    EXPECT_FALSE(empty.u32());
    EXPECT_FALSE(empty.shortText());
}

TEST(FrameBufferTest, PutsFramesTogetherByteByByte) {
    const Bytes frame = sampleFrame();
    FrameBuffer buffer;
    for (std::size_t i = 0; i + 1 < frame.size(); ++i) {
        buffer.append({&frame[i], 1});
        EXPECT_FALSE(buffer.next());
    }
    buffer.append({&frame.back(), 1});
    const auto content = buffer.next();
    ASSERT_TRUE(content);
    EXPECT_EQ(Bytes(content->begin(), content->end()), Bytes(frame.begin() + 4, frame.end()));
    EXPECT_FALSE(buffer.next());
    EXPECT_FALSE(buffer.isBroken());
}

TEST(FrameBufferTest, HandsOutTwoFramesThatArriveAtOnce) {
    Bytes two = sampleFrame();
    const Bytes frame = two;
    two.insert(two.end(), frame.begin(), frame.end());
    FrameBuffer buffer;
    buffer.append(two);
    EXPECT_TRUE(buffer.next());
    EXPECT_TRUE(buffer.next());
    EXPECT_FALSE(buffer.next());
}

TEST(FrameBufferTest, IsBrokenByALengthThatIsNotAllowed) {
    FrameBuffer empty;
    empty.append(Bytes{0, 0, 0, 0});
    EXPECT_FALSE(empty.next());
    EXPECT_TRUE(empty.isBroken());
    FrameBuffer huge;
    huge.append(Bytes{0x7F, 0xFF, 0xFF, 0xFF});
    EXPECT_FALSE(huge.next());
    EXPECT_TRUE(huge.isBroken());
}

}  // namespace
