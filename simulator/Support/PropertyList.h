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

/// Reads bytes that the simulator itself or the product's build has made. The list must be a dictionary.
[[nodiscard]] std::optional<PropertyList> parsePropertyList(std::string_view bytes);

/// The same for bytes of any origin: parsed in a child process with little memory and time, so that a hostile
/// list costs that child only. Nothing for a list that is broken, no dictionary or nested deeper than 24.
[[nodiscard]] std::optional<PropertyList> parseHostilePropertyList(std::string_view bytes);

/// A string of a dictionary; empty when it is absent or something else.
[[nodiscard]] std::string stringOf(const PropertyList& dictionary, const char* key);

}  // namespace Simulator
