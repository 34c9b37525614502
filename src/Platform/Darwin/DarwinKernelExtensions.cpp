#include "Platform/Darwin/DarwinKernelExtensions.h"

#include <IOKit/kext/KextManager.h>
#include <libkern/OSKextLib.h>

#include "Platform/Darwin/CoreFoundationString.h"

namespace Platform::Darwin {

std::int32_t DarwinKernelExtensions::unload(const std::string& bundleIdentifier) {
    const CoreFoundationString identifier(bundleIdentifier);
    if (identifier.get() == nullptr) {
        return kOSKextReturnInvalidArgument;
    }
    return ::KextManagerUnloadKextWithIdentifier(identifier.get());
}

}  // namespace Platform::Darwin
