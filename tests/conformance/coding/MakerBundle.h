#pragma once

#include <string>

/// A framework of the maker's, as the window loads it into the process.
namespace MakerBundle {

/// Loads the framework at `path`; whether its class MakerRecords is there then.
[[nodiscard]] bool load(const std::string& path);

/// Whether objects of the class that the runtime knows by this name carry objects of the program.
[[nodiscard]] bool isCarrier(const std::string& className);

}  // namespace MakerBundle
