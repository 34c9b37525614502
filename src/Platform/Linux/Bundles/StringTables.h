#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Base/URL.h"
#include "Platform/Linux/Bundles/PropertyListFile.h"

namespace Platform::Linux {

/// The localized string tables of one bundle. The localization is chosen at the first query, a table is read
/// at its first query; both are kept from then on, so that the texts outlive the bundle's files. Calls may
/// come from any thread.
class StringTables {
  public:
    /// `developmentRegion` is the bundle's own, empty if it names none; `preferencesFile` holds the user's
    /// languages.
    StringTables(const Base::URL& bundle, std::string developmentRegion, std::string preferencesFile);

    /// As Bundle::localizedString.
    [[nodiscard]] std::optional<std::string> text(const std::string& key, const std::string& table);

  private:
    [[nodiscard]] std::string localization() const;

    const std::string resources_;
    const std::string developmentRegion_;
    const std::string preferencesFile_;
    std::mutex mutex_;
    std::optional<std::string> localization_;
    std::map<std::string, PropertyListStrings> tables_;
};

}  // namespace Platform::Linux
