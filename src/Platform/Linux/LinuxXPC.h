#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/XPC.h"

namespace Platform::Linux {

/// XPC over Unix-domain sockets that process 1 owns; see MacServices.h for where they are.
class LinuxXPC final : public XPC {
  public:
    [[nodiscard]] std::shared_ptr<XPCConnection> makeConnection(const std::string& machServiceName,
                                                                std::uint32_t options) override;
    [[nodiscard]] std::unique_ptr<XPCListener> makeListener(
        const std::string& machServiceName, const std::vector<std::string>& clientRequirements) override;
};

}  // namespace Platform::Linux
