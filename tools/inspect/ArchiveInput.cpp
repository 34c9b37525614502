#include "ArchiveInput.h"

#include <array>
#include <string_view>

#include "Base/Archive/KeyedUnarchiver.h"
#include "BinaryForm.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"

namespace Inspect {

namespace {

constexpr std::string_view kBinaryMagic = "bplist";
constexpr std::size_t kLargestXML = std::size_t{4} << 20;

bool isXML(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    constexpr std::array<std::string_view, 4> kBeginnings{"<?xml", "<!DOCTYPE", "<!--", "<plist"};
    for (const std::string_view beginning : kBeginnings) {
        if (text.starts_with(beginning)) {
            return true;
        }
    }
    return false;
}

std::optional<InstallCommon::CommandList> decodeBinary(std::span<const std::uint8_t> bytes,
                                                       std::string& refusal) {
    auto objects = Base::unarchivedArray(bytes, InstallCommon::allowedCommandListClasses(), refusal);
    if (!objects) {
        return std::nullopt;
    }
    auto commands = InstallCommon::commandList(std::move(*objects));
    if (!commands) {
        refusal = "the list contains an object that is not a command";
    }
    return commands;
}

}  // namespace

std::optional<InstallCommon::CommandList> decodeCommandList(std::span<const std::uint8_t> bytes,
                                                            std::string& refusal) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.empty()) {
        refusal = "the file is empty";
        return std::nullopt;
    }
    if (text.starts_with(kBinaryMagic)) {
        return decodeBinary(bytes, refusal);
    }
    if (!isXML(text)) {
        refusal = "neither a binary property list nor the XML form of one";
        return std::nullopt;
    }
    if (text.size() > kLargestXML) {
        refusal = "the XML form holds more than " + std::to_string(kLargestXML) + " bytes";
        return std::nullopt;
    }
    const auto binary = binaryForm(text, refusal);
    return binary ? decodeBinary(*binary, refusal) : std::nullopt;
}

}  // namespace Inspect
