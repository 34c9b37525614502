#pragma once

#include "Platform/XPC.h"

namespace Platform::Darwin {

/// XPC by way of NSXPCConnection and NSXPCListener.
class DarwinXPC final : public XPC {
  public:
    void registerClasses(const Base::AllowedClasses& classes) override;
    [[nodiscard]] std::shared_ptr<XPCConnection> makeConnection(const std::string& machServiceName,
                                                                std::uint32_t options) override;
    /// The system makes a listener for any name and has no question that could be asked without taking the
    /// service's port. What can be told: whether launchd started this process, and as which job. So null in a
    /// process that is not launchd's child, or whose job has another label than the service has a name.
    [[nodiscard]] std::unique_ptr<XPCListener> makeListener(
        const std::string& machServiceName, const std::vector<std::string>& clientRequirements) override;
};

}  // namespace Platform::Darwin
