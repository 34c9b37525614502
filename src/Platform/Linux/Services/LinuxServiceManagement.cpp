#include "Platform/Linux/Services/LinuxServiceManagement.h"

#include <charconv>

#include "Platform/Linux/Services/LinuxAuthorization.h"

namespace Platform::Linux {

std::optional<Error> LinuxServiceManagement::blessJob(LaunchdDomain /*domain*/, const std::string& label,
                                                      const AuthorizationReference& authorization) {
    const auto& reference = static_cast<const LinuxAuthorizationReference&>(authorization);
    const auto reply = services_.request({"bless", reference.token(), label});
    if (!reply || reply->size() != 2) {
        return Error{"launchd does not answer (blessing " + label + ").", 0};
    }
    const std::string& number = reply->front();
    int code = 0;
    const auto [end, failure] = std::from_chars(number.data(), number.data() + number.size(), code);
    if (failure != std::errc() || end != number.data() + number.size()) {
        return Error{"launchd gave an invalid answer (blessing " + label + ").", 0};
    }
    return code == 0 ? std::nullopt : std::optional(Error{reply->back(), code});
}

}  // namespace Platform::Linux
