#include "Platform/PropertyListForms.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "Base/Archive/BinaryPlistReader.h"

namespace PlatformTests {
namespace {

using Base::BinaryPlistReader;

/// An object of a binary property list in a few words, the keys of dictionaries in their order.
std::string text(const BinaryPlistReader& reader, BinaryPlistReader::ObjectId id) {
    using Type = BinaryPlistReader::Type;
    const BinaryPlistReader::Object& object = reader.object(id);
    std::string result;
    std::map<std::string, std::string> pairs;
    switch (object.type) {
        case Type::ascii:
            return "'" + std::string(BinaryPlistReader::asciiText(object)) + "'";
        case Type::boolean:
            return BinaryPlistReader::boolean(object).value_or(false) ? "true" : "false";
        case Type::integer:
            return std::to_string(BinaryPlistReader::integer(object).value_or(0));
        case Type::uid:
            return "uid " + std::to_string(BinaryPlistReader::uid(object).value_or(0));
        case Type::array:
            for (std::size_t index = 0; index < object.count; ++index) {
                result += text(reader, reader.reference(object, index)) + ",";
            }
            return "[" + result + "]";
        case Type::dictionary:
            for (std::size_t index = 0; index < object.count; ++index) {
                pairs[text(reader, reader.reference(object, index))] =
                    text(reader, reader.reference(object, object.count + index));
            }
            for (const auto& [key, value] : pairs) {
                result.append(key).append(":").append(value).append(",");
            }
            return "{" + result + "}";
        default:
            return "?";
    }
}

std::string binaryFormOf(const std::string& xml) {
    const auto bytes = Platform::binaryPropertyList(xml);
    if (!bytes) {
        return "nothing";
    }
    std::string fault;
    const auto reader = BinaryPlistReader::open(*bytes, fault);
    return reader ? text(*reader, reader->top()) : fault;
}

std::string list(const std::string& value) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + value + "</plist>\n";
}

TEST(BinaryPropertyList, HasTheValuesOfTheXML) {
    EXPECT_EQ(binaryFormOf(list("<string>text</string>")), "'text'");
    EXPECT_EQ(binaryFormOf(list("<array><integer>5</integer><true/><array/><dict/><false/></array>")),
              "[5,true,[],{},false,]");
    EXPECT_EQ(binaryFormOf(list("<dict><key>a</key><array><string>b</string><string>c</string></array>"
                                "<key>d</key><dict><key>e</key><integer>6</integer></dict></dict>")),
              "{'a':['b','c',],'d':{'e':6,},}");
}

TEST(BinaryPropertyList, HasReferencesForDictionariesWithNothingButANumber) {
    EXPECT_EQ(binaryFormOf(list("<dict><key>CF$UID</key><integer>7</integer></dict>")), "uid 7");
    EXPECT_EQ(
        binaryFormOf(list("<dict><key>root</key><array><dict><key>CF$UID</key><integer>300</integer></dict>"
                          "</array></dict>")),
        "{'root':[uid 300,],}");
}

TEST(BinaryPropertyList, KeepsDictionariesThatOnlyResembleReferences) {
    EXPECT_EQ(binaryFormOf(list("<dict><key>CF$UID</key><string>7</string></dict>")), "{'CF$UID':'7',}");
    EXPECT_EQ(binaryFormOf(list("<dict><key>CF$UID</key><integer>7</integer><key>more</key><true/></dict>")),
              "{'CF$UID':7,'more':true,}");
    EXPECT_EQ(binaryFormOf(list("<dict><key>UID</key><integer>7</integer></dict>")), "{'UID':7,}");
}

TEST(BinaryPropertyList, IsNothingForWhatIsNoXMLPropertyList) {
    EXPECT_EQ(binaryFormOf(""), "nothing");
    EXPECT_EQ(binaryFormOf("bplist00"), "nothing");
    EXPECT_EQ(binaryFormOf("{ a = b; }"), "nothing");
}

}  // namespace
}  // namespace PlatformTests
