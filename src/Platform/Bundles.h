#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Base/URL.h"

namespace Platform {

/// An opened bundle (NSBundle). The information dictionary is read once, when the bundle is opened.
class Bundle {
  public:
    virtual ~Bundle() = default;

    [[nodiscard]] virtual Base::URL url() const = 0;
    /// A string of the information dictionary (Contents/Info.plist, XML or binary). Returns nothing if the
    /// key is absent, its value is not a string, or the file is absent or broken.
    [[nodiscard]] virtual std::optional<std::string> infoString(const std::string& key) const = 0;
    /// The file `name`.`type` in Contents/Resources, if it exists.
    [[nodiscard]] virtual std::optional<Base::URL> resource(const std::string& name,
                                                            const std::string& type) const = 0;
    /// The text for `key` in the string table Contents/Resources/<localization>.lproj/`table`.strings (a
    /// property list). The localization is the first of the user's languages, in their order, that the bundle
    /// has, a language without its region standing in for it; else the bundle's development region
    /// (CFBundleDevelopmentRegion), else "en". Returns nothing if that table is absent or broken or has no
    /// text for the key. A table is read once, at its first use, and kept as long as the bundle is open, the
    /// main bundle's as long as the process lives: a program may delete its own bundle and go on.
    [[nodiscard]] virtual std::optional<std::string> localizedString(const std::string& key,
                                                                     const std::string& table) const = 0;
};

/// Access to bundles. Calls may come from any thread; nothing is logged.
class Bundles {
  public:
    virtual ~Bundles() = default;

    /// The bundle at `location`, read anew on every call; null if there is no folder that can be opened. A
    /// folder without an information dictionary is still a bundle.
    [[nodiscard]] virtual std::unique_ptr<Bundle> open(const Base::URL& location) = 0;

    /// The running program's own bundle, never null; outside any bundle, the folder that the program lies in.
    [[nodiscard]] virtual std::unique_ptr<Bundle> mainBundle() = 0;
};

}  // namespace Platform
