#pragma once

#include "Platform/KernelExtensions.h"

namespace Platform::Linux {

/// Kernel extensions as process 1 of the simulated Mac keeps them.
class LinuxKernelExtensions final : public KernelExtensions {
  public:
    std::int32_t unload(const std::string& bundleIdentifier) override;
};

}  // namespace Platform::Linux
