#pragma once

#include "Platform/KernelExtensions.h"

namespace Platform::Darwin {

/// KextManagerUnloadKextWithIdentifier, which wants effective user id 0.
class DarwinKernelExtensions final : public KernelExtensions {
  public:
    /// An identifier that is not valid UTF-8 gives kOSKextReturnInvalidArgument.
    std::int32_t unload(const std::string& bundleIdentifier) override;
};

}  // namespace Platform::Darwin
