#pragma once

#include <cstdint>
#include <string>

namespace Platform {

/// The kernel-extension manager (IOKit).
class KernelExtensions {
  public:
    virtual ~KernelExtensions() = default;

    /// KextManagerUnloadKextWithIdentifier: asks the kernel to unload the extension with this bundle
    /// identifier. Returns the kernel return code, 0 on success. Blocks until it is answered; logs nothing.
    virtual std::int32_t unload(const std::string& bundleIdentifier) = 0;
};

}  // namespace Platform
