#pragma once

#include <string_view>

#include "Platform/FileManager.h"

namespace Platform::Posix {

/// Where every Mac has a folder of the local domain: absolute, below that domain's root.
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
