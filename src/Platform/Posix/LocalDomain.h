#pragma once

#include <string_view>

#include "Platform/FileManager.h"

namespace Platform::Posix {

/// The path of a local-domain folder, the same on every Mac: absolute, below that domain's root.
[[nodiscard]] constexpr std::string_view localDomainPath(SearchPathDirectory directory) {
    switch (directory) {
        case SearchPathDirectory::applications:
            return "/Applications";
        case SearchPathDirectory::applicationSupport:
            return "/Library/Application Support";
        case SearchPathDirectory::users:
            return "/Users";
    }
    return "/";
}

}  // namespace Platform::Posix
