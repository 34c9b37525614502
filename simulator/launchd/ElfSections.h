#pragma once

#include <optional>
#include <string_view>

namespace Simulator {

/// Sections in which a Linux program carries the contents of a Mac program's __TEXT segment.
inline constexpr std::string_view kInfoPlistSection = "__TEXT,__info_plist";
inline constexpr std::string_view kLaunchdPlistSection = "__TEXT,__launchd_plist";

/// The contents of the section `name` in the bytes of a 64-bit little-endian ELF file, without trailing NUL
/// bytes. Returns nothing if there is no such section or any count or offset points outside the file.
[[nodiscard]] std::optional<std::string_view> elfSection(std::string_view file, std::string_view name);

}  // namespace Simulator
