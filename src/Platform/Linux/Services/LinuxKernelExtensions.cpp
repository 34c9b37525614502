#include "Platform/Linux/Services/LinuxKernelExtensions.h"

#include <charconv>

namespace Platform::Linux {

namespace {

/// kOSKextReturnInternalError: stands for an answer that never came.
constexpr std::int32_t kInternalError = static_cast<std::int32_t>(0xdc008001);

}  // namespace

std::int32_t LinuxKernelExtensions::unload(const std::string& bundleIdentifier) {
    const auto reply = services_.request({"unload-kext", bundleIdentifier});
    if (!reply || reply->size() != 1) {
        return kInternalError;
    }
    const std::string& number = reply->front();
    std::int32_t code = 0;
    const auto [end, failure] = std::from_chars(number.data(), number.data() + number.size(), code);
    return failure == std::errc() && end == number.data() + number.size() ? code : kInternalError;
}

}  // namespace Platform::Linux
