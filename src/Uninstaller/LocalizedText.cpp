#include "Uninstaller/LocalizedText.h"

#include <memory>

#include "Platform/SystemPorts.h"

namespace Uninstall_Sentrel {

std::string localizedText(const std::string& key, const std::string& table, std::string_view defaultValue) {
    const std::unique_ptr<Platform::Bundle> bundle = Platform::SystemPorts::current().bundles->mainBundle();
    return bundle->localizedString(key, table).value_or(std::string(defaultValue));
}

std::string formatted(std::string_view format, std::string_view argument) {
    constexpr std::string_view kConversions[] = {"%@", "%1$@"};
    std::string text;
    while (!format.empty()) {
        std::size_t taken = 0;
        for (const std::string_view conversion : kConversions) {
            if (format.starts_with(conversion)) {
                text += argument;
                taken = conversion.size();
            }
        }
        if (taken == 0) {
            text += format.front();
            taken = format.starts_with("%%") ? 2 : 1;
        }
        format.remove_prefix(taken);
    }
    return text;
}

}  // namespace Uninstall_Sentrel
