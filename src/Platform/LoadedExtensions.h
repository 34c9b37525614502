#pragma once

#include <optional>
#include <string>

#include "Platform/Error.h"

namespace Platform {

/// Which kernel extensions the kernel has loaded.
class LoadedExtensions {
  public:
    virtual ~LoadedExtensions() = default;

    /// Whether the extension with this bundle identifier is loaded, wherever its bundle is or was. Returns
    /// nothing and sets `error` if that cannot be told. Needs no rights; logs nothing.
    [[nodiscard]] virtual std::optional<bool> isLoaded(const std::string& bundleIdentifier, Error& error) = 0;
};

}  // namespace Platform
