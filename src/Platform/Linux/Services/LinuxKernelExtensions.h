#pragma once

#include <utility>

#include "Platform/KernelExtensions.h"
#include "Platform/Linux/Services/MacServices.h"

namespace Platform::Linux {

/// Kernel extensions as process 1 of the simulated Mac keeps them.
class LinuxKernelExtensions final : public KernelExtensions {
  public:
    explicit LinuxKernelExtensions(MacServices services = MacServices()) : services_(std::move(services)) {}

    std::int32_t unload(const std::string& bundleIdentifier) override;

  private:
    MacServices services_;
};

}  // namespace Platform::Linux
