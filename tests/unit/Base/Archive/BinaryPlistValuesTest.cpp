#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Base/Archive/BinaryPlistReader.h"
#include "PlistFile.h"

// What the container's objects hold.

namespace {

using Base::BinaryPlistReader;
using Type = BinaryPlistReader::Type;
using namespace std::string_literals;

class BinaryPlistValues : public testing::Test {
  protected:
    // The reader of a list that consists of `object`.
    const BinaryPlistReader& readerOf(const PlistFile& file) {
        bytes_ = bytesOf(file);
        std::string fault;
        reader_ = BinaryPlistReader::open(bytes_, fault);
        EXPECT_TRUE(reader_) << fault;
        return *reader_;
    }
    BinaryPlistReader::Object object(const std::string& bytes) { return readerOf(one(bytes)).object(0); }

  private:
    std::vector<std::uint8_t> bytes_;
    std::optional<BinaryPlistReader> reader_;
};

TEST_F(BinaryPlistValues, OfBooleans) {
    EXPECT_EQ(BinaryPlistReader::boolean(object("\x08")), false);
    EXPECT_EQ(BinaryPlistReader::boolean(object("\x09")), true);
    EXPECT_EQ(BinaryPlistReader::boolean(object("\0"s)), std::nullopt);
    EXPECT_EQ(BinaryPlistReader::boolean(object("\x10\x09")), std::nullopt);
}

TEST_F(BinaryPlistValues, OfIntegersUpToEightBytes) {
    EXPECT_EQ(BinaryPlistReader::integer(object("\x10\xFE")), 0xFEU);
    EXPECT_EQ(BinaryPlistReader::integer(object("\x11\xFE\xDC")), 0xFEDCU);
    EXPECT_EQ(BinaryPlistReader::integer(object("\x12\xFE\xDC\xBA\x98")), 0xFEDCBA98U);
    EXPECT_EQ(BinaryPlistReader::integer(object("\x13\xFE\xDC\xBA\x98\x76\x54\x32\x10")),
              0xFEDCBA9876543210U);
    EXPECT_EQ(BinaryPlistReader::integer(object("\x14" + std::string(15, '\0') + '\1')), std::nullopt);
    EXPECT_EQ(BinaryPlistReader::integer(object("\x09")), std::nullopt);
    EXPECT_EQ(BinaryPlistReader::integer(object("\x80\x01")), std::nullopt);
}

TEST_F(BinaryPlistValues, OfUIDs) {
    EXPECT_EQ(BinaryPlistReader::uid(object("\x80\xFE")), 0xFEU);
    EXPECT_EQ(BinaryPlistReader::uid(object("\x82\xFE\xDC\xBA")), 0xFEDCBAU);
    EXPECT_EQ(BinaryPlistReader::uid(object("\x87\xFE\xDC\xBA\x98\x76\x54\x32\x10")), 0xFEDCBA9876543210U);
    EXPECT_EQ(BinaryPlistReader::uid(object("\x10\x01")), std::nullopt);
}

TEST_F(BinaryPlistValues, OfTexts) {
    EXPECT_TRUE(BinaryPlistReader::isText(object("\x51z")));
    EXPECT_TRUE(BinaryPlistReader::isText(object("\x61\0z"s)));
    EXPECT_FALSE(BinaryPlistReader::isText(object("\x41z")));
    EXPECT_EQ(BinaryPlistReader::asciiText(object("\x52yz")), "yz");
    EXPECT_EQ(BinaryPlistReader::asciiText(object("\x61\0z"s)), "");
    EXPECT_EQ(BinaryPlistReader::asciiText(object("\x42yz")), "");
}

TEST_F(BinaryPlistValues, OfDictionariesByTheirKeys) {
    // The keys: the data "z", the UTF-16 text "y", "z", "y", "z". The values are the objects 3 and 4.
    const std::string dictionary = "\xD5\x05\x06\x01\x02\x01\x04\x03\x03\x04\x04";
    const std::string objects =
        dictionary + "\x51z" + "\x51y" + "\x10\x03" + "\x10\x04" + "\x41z" + "\x61\0y"s;
    const BinaryPlistReader& reader = readerOf({objects, {8, 19, 21, 23, 25, 27, 29}});
    const auto object = reader.object(0);
    ASSERT_EQ(object.type, Type::dictionary);
    EXPECT_EQ(object.count, 5U);
    EXPECT_EQ(reader.value(object, "z"), 3U) << "neither the data nor the second z";
    EXPECT_EQ(reader.value(object, "y"), 4U) << "not the UTF-16 text";
    EXPECT_EQ(reader.value(object, "x"), std::nullopt);
    EXPECT_EQ(reader.value(object, ""), std::nullopt);
    EXPECT_EQ(reader.reference(object, 4), 1U);
    EXPECT_EQ(reader.reference(object, 5), 4U);
}

}  // namespace
