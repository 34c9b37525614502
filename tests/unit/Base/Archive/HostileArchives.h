#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ArchiveBuilder.h"

/// Archives that nobody means well with.
namespace HostileArchiveTests {

using Bytes = std::vector<std::uint8_t>;

inline bool isRefused(const std::string& result) {
    return result.starts_with("refused: ") && result.size() > 9;
}

inline Bytes smallArchive() {
    ArchiveBuilder archive;
    return archive.finish({archive.link(archive.url("file:///a"), archive.string("t"))});
}

}  // namespace HostileArchiveTests
