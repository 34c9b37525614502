#pragma once

#include <utility>

#include "Platform/Linux/Services/MacServices.h"
#include "Platform/LoadedExtensions.h"

namespace Platform::Linux {

/// Loaded kernel extensions as process 1 of the simulated Mac keeps them.
class LinuxLoadedExtensions final : public LoadedExtensions {
  public:
    explicit LinuxLoadedExtensions(MacServices services = MacServices()) : services_(std::move(services)) {}

    [[nodiscard]] std::optional<bool> isLoaded(const std::string& bundleIdentifier, Error& error) override;

  private:
    MacServices services_;
};

}  // namespace Platform::Linux
