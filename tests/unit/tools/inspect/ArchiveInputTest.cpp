#include "ArchiveInput.h"

#include <gtest/gtest.h>

#include "Base/Archive/KeyedArchiver.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace {

/// An object of a class that a list may hold inside its commands only.
class JobRecord final : public Base::CodedObject {
  public:
    [[nodiscard]] const Base::CodedClass& codedClass() const override {
        return NorvikCommon::LaunchdInfo::codedClass();
    }
    void encode(Base::Coder& /*coder*/) const override {}
};

std::string archived(const std::vector<const Base::CodedObject*>& objects) {
    const auto bytes = Base::archivedArray(objects);
    return {bytes.begin(), bytes.end()};
}

/// Why the bytes are refused; the number of commands otherwise.
std::string decoded(const std::string& bytes) {
    std::string refusal;
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto commands = Inspect::decodeCommandList({begin, bytes.size()}, refusal);
    EXPECT_EQ(commands.has_value(), refusal.empty());
    return commands ? std::to_string(commands->size()) : refusal;
}

const std::string kNoArchive = "neither a binary property list nor the XML form of one";

TEST(ArchiveInput, DecodesABinaryPropertyList) {
    const InstallCommon::KillProcessCommand command("Closing...", "a");
    EXPECT_EQ(decoded(archived({})), "0");
    EXPECT_EQ(decoded(archived({&command, &command})), "2");
}

TEST(ArchiveInput, RefusesObjectsThatAreNoCommands) {
    const InstallCommon::KillProcessCommand command("Closing...", "a");
    const JobRecord record;
    EXPECT_EQ(decoded(archived({&command, &record})), "the list contains an object that is not a command");
}

TEST(ArchiveInput, RefusesWhatIsNoPropertyList) {
    EXPECT_EQ(decoded(""), "the file is empty");
    for (const char* text : {"text", " ", "bplis", " bplist00", "plist", "<", "<dict/>", "<!ELEMENT",
                             "\xEF\xBB\xBF", "\xBB\xBF<plist/>", "x<plist/>"}) {
        EXPECT_EQ(decoded(text), kNoArchive) << text;
    }
}

TEST(ArchiveInput, KnowsTheXMLFormByItsBeginning) {
    const std::string broken = "the XML form is not a well-formed property list";
    for (const char* text :
         {"<plist><wrong/></plist>", "<!--a--><plist><wrong/></plist>", "<!DOCTYPE a><plist><wrong/></plist>",
          "<?xml version=\"1.0\"?><plist><wrong/></plist>", " \t\r\n<plist><wrong/></plist>",
          "\xEF\xBB\xBF\n<plist><wrong/></plist>"}) {
        EXPECT_EQ(decoded(text), broken) << text;
    }
    EXPECT_EQ(decoded("<plist>"), "line 1 of the XML form ends within an element");
}

TEST(ArchiveInput, BoundsTheXMLForm) {
    constexpr std::size_t kLargest = std::size_t{4} << 20;
    const std::string start = "<plist>";
    const std::string text = start + std::string(kLargest - start.size(), ' ');
    EXPECT_EQ(decoded(text), "line 1 of the XML form ends within an element");
    EXPECT_EQ(decoded(text + " "), "the XML form holds more than 4194304 bytes");
}

}  // namespace
