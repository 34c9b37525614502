#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace PlatformTests {

/// Puts together a binary property list from objects in their coded form; references are one byte wide,
/// offsets as wide as told.
inline std::string binaryPropertyList(const std::vector<std::string>& objects, std::size_t top = 0,
                                      int offsetSize = 4) {
    std::string bytes = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        for (int shift = (offsetSize - 1) * 8; shift >= 0; shift -= 8) {
            const std::size_t byte = shift < 64 ? bytes.size() >> static_cast<unsigned>(shift) : 0;
            offsets += static_cast<char>(byte & 0xFFU);
        }
        bytes += object;
    }
    const std::size_t table = bytes.size();
    bytes += offsets;
    bytes += std::string(6, '\0') + static_cast<char>(offsetSize) + '\1';
    for (const std::uint64_t number :
         {std::uint64_t{objects.size()}, std::uint64_t{top}, std::uint64_t{table}}) {
        for (int shift = 56; shift >= 0; shift -= 8) {
            bytes += static_cast<char>(number >> static_cast<unsigned>(shift) & 0xFFU);
        }
    }
    return bytes;
}

/// `count` arrays, one in the other.
inline std::string nestedArraysXML(std::size_t count) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">";
    for (std::size_t number = 0; number < count; ++number) {
        text += "<array>";
    }
    for (std::size_t number = 0; number < count; ++number) {
        text += "</array>";
    }
    return text + "</plist>\n";
}

/// The same in binary form, for any count: references are four bytes wide.
inline std::string nestedArraysBinary(std::uint32_t count) {
    std::string bytes = "bplist00";
    std::string offsets;
    const auto append = [](std::string& to, std::uint64_t number, int size) {
        for (int shift = (size - 1) * 8; shift >= 0; shift -= 8) {
            to += static_cast<char>(number >> static_cast<unsigned>(shift) & 0xFFU);
        }
    };
    for (std::uint32_t number = 0; number < count; ++number) {
        append(offsets, bytes.size(), 4);
        const bool innermost = number + 1 == count;
        bytes += innermost ? '\xA0' : '\xA1';
        if (!innermost) {
            append(bytes, number + 1, 4);
        }
    }
    const std::size_t table = bytes.size();
    bytes += offsets + std::string(6, '\0') + '\4' + '\4';
    append(bytes, count, 8);
    append(bytes, 0, 8);
    append(bytes, table, 8);
    return bytes;
}

}  // namespace PlatformTests
