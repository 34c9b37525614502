#pragma once

#include "Platform/LoadedExtensions.h"

namespace Platform::Darwin {

/// KextManagerCopyLoadedKextInfo, which anybody may call.
class DarwinLoadedExtensions final : public LoadedExtensions {
  public:
    [[nodiscard]] std::optional<bool> isLoaded(const std::string& bundleIdentifier, Error& error) override;
};

}  // namespace Platform::Darwin
