#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace Simulator {

/// A property list in memory: dictionaries, arrays, strings, integers, reals, booleans; data as JSON binary.
using PropertyList = nlohmann::json;

enum class PropertyListForm { xml, binary };

/// The bytes of a property list.
[[nodiscard]] std::string writePropertyList(const PropertyList& value, PropertyListForm form);

/// Reads bytes made by the simulator itself or the product's build. The list must be a dictionary.
[[nodiscard]] std::optional<PropertyList> parsePropertyList(std::string_view bytes);

/// The same for bytes of any origin: parsed in a child process with little memory and time, so that a hostile
/// list costs that child only. Returns nothing if the list is broken, not a dictionary or over 24 levels
/// deep.
[[nodiscard]] std::optional<PropertyList> parseHostilePropertyList(std::string_view bytes);

/// A string of a dictionary; empty if it is absent or of another type.
[[nodiscard]] std::string stringOf(const PropertyList& dictionary, const char* key);

}  // namespace Simulator
