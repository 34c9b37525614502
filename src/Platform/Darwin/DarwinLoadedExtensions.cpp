#include "Platform/Darwin/DarwinLoadedExtensions.h"

#include <IOKit/kext/KextManager.h>

#include "Platform/Darwin/CoreFoundationString.h"

namespace Platform::Darwin {

std::optional<bool> DarwinLoadedExtensions::isLoaded(const std::string& bundleIdentifier, Error& error) {
    const CoreFoundationString identifier(bundleIdentifier);
    const void* const wanted = identifier.get();
    const CFArrayRef identifiers =
        wanted == nullptr ? nullptr
                          : ::CFArrayCreate(kCFAllocatorDefault, const_cast<const void**>(&wanted), 1,
                                            &kCFTypeArrayCallBacks);
    const CFDictionaryRef loaded =
        identifiers == nullptr ? nullptr : ::KextManagerCopyLoadedKextInfo(identifiers, nullptr);
    if (identifiers != nullptr) {
        ::CFRelease(identifiers);
    }
    if (loaded == nullptr) {
        error = {"the kernel extension " + bundleIdentifier +
                     " could not be looked up: the kernel does not answer",
                 0};
        return std::nullopt;
    }
    const bool isThere = ::CFDictionaryGetValue(loaded, wanted) != nullptr;
    ::CFRelease(loaded);
    return isThere;
}

}  // namespace Platform::Darwin
