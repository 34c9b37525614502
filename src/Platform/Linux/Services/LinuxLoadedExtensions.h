#pragma once

#include "Platform/Linux/Services/MacServices.h"
#include "Platform/LoadedExtensions.h"

namespace Platform::Linux {

/// Loaded kernel extensions as process 1 of the simulated Mac keeps them.
class LinuxLoadedExtensions final : public AnsweredByProcessOne<LoadedExtensions> {
  public:
    using AnsweredByProcessOne::AnsweredByProcessOne;
    [[nodiscard]] std::optional<bool> isLoaded(const std::string& bundleIdentifier, Error& error) override;
};

}  // namespace Platform::Linux
