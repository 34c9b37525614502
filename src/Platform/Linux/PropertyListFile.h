#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Platform::Linux {

/// Reading property lists, XML or binary, whose top is a dictionary. Only a regular file of at most 1 MiB is
/// read, and one that nests too deeply to be read safely counts as broken. Links are followed; nothing is
/// logged.

using PropertyListStrings = std::map<std::string, std::string>;

/// All strings of the dictionary, values of other types left out. `path` is relative to the open folder
/// `folder`, or absolute. Nothing when the file is absent or broken.
[[nodiscard]] std::optional<PropertyListStrings> readPropertyListStrings(int folder, const std::string& path);

/// The strings of the array that the dictionary has under `key`, values of other types left out. Empty when
/// there is no such array, or the file is absent or broken.
[[nodiscard]] std::vector<std::string> readPropertyListArray(const std::string& path, const char* key);

}  // namespace Platform::Linux
