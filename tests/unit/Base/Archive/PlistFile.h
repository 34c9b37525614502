#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ArchiveBuilder.h"

/// A property list byte by byte.
struct PlistFile {
    std::string objects;                 // from byte 8 on
    std::vector<std::uint64_t> offsets;  // counted from the start of the file
    std::uint64_t top = 0;
    std::size_t offsetSize = 1;
    std::size_t referenceSize = 1;
};

inline std::vector<std::uint8_t> bytesOf(const PlistFile& file) {
    std::string bytes = "bplist00" + file.objects;
    const std::size_t table = bytes.size();
    for (const std::uint64_t offset : file.offsets) {
        bytes += PlistBuilder::bigEndian(offset, file.offsetSize);
    }
    bytes += std::string(6, '\0') + static_cast<char>(file.offsetSize) +
             static_cast<char>(file.referenceSize) + PlistBuilder::bigEndian(file.offsets.size(), 8) +
             PlistBuilder::bigEndian(file.top, 8) + PlistBuilder::bigEndian(table, 8);
    return {bytes.begin(), bytes.end()};
}

/// A list of one object, followed by `rest`.
inline PlistFile one(const std::string& object, const std::string& rest = "") {
    return {object + rest, {8}};
}
