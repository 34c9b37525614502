#pragma once

#include <string>
#include <string_view>

namespace Uninstall_Sentrel {

/// The text for `key` in the main bundle's string table `table`, in the user's language; `defaultValue` if
/// the table has none. Nothing is logged.
[[nodiscard]] std::string localizedText(const std::string& key, const std::string& table,
                                        std::string_view defaultValue);

/// `format` with every "%@" replaced by `argument` ("%1$@" too) and every "%%" by "%". Any other conversion
/// stays as it is: tables come with the application, and only a name is ever inserted.
[[nodiscard]] std::string formatted(std::string_view format, std::string_view argument);

}  // namespace Uninstall_Sentrel
