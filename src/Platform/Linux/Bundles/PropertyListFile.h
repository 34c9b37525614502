#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Platform::Linux {

/// Reads property lists, XML or binary, whose top is a dictionary. Only a regular file of at most 1 MiB is
/// read, and one that nests too deeply to be read safely counts as broken. Links are followed; nothing is
/// logged.

using PropertyListStrings = std::map<std::string, std::string>;

/// All strings of the dictionary; values of other types are left out. `path` is relative to the open folder
/// `folder`, or absolute. Returns nothing if the file is absent or broken.
[[nodiscard]] std::optional<PropertyListStrings> readPropertyListStrings(int folder, const std::string& path);

/// The strings of the array under `key` in the dictionary; values of other types are left out. Empty if there
/// is no such array, or the file is absent or broken.
[[nodiscard]] std::vector<std::string> readPropertyListArray(const std::string& path, const char* key);

}  // namespace Platform::Linux
