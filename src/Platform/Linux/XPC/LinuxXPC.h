#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Linux/Services/MacServices.h"
#include "Platform/XPC.h"

namespace Platform::Linux {

/// XPC over Unix-domain sockets that process 1 owns; MacServices.h says where they are.
class LinuxXPC final : public XPC {
  public:
    /// `servicesFolder` has the sockets of the mach services.
    explicit LinuxXPC(MacServices services = MacServices(),
                      std::string servicesFolder = std::string(kMachServicesFolder))
        : services_(std::move(services)), servicesFolder_(std::move(servicesFolder)) {}

    void registerClasses(const Base::AllowedClasses& /*classes*/) override {}
    [[nodiscard]] std::shared_ptr<XPCConnection> makeConnection(const std::string& machServiceName,
                                                                std::uint32_t options) override;
    [[nodiscard]] std::unique_ptr<XPCListener> makeListener(
        const std::string& machServiceName, const std::vector<std::string>& clientRequirements) override;

  private:
    MacServices services_;
    std::string servicesFolder_;
};

}  // namespace Platform::Linux
