#pragma once

#include <utility>

#include "Platform/DistantObjects.h"
#include "Platform/Linux/Services/MacServices.h"

namespace Platform::Linux {

/// Names that processes of the simulated Mac have registered, as process 1 knows them. A proxy stands for the
/// process that had the name at the lookup: it is invalid, in all three respects, as soon as that process no
/// longer has the name, and stays so if another one takes it. Nothing is delivered through it, so it has no
/// request modes to add.
class LinuxDistantObjects final : public DistantObjects {
  public:
    explicit LinuxDistantObjects(MacServices services = MacServices()) : services_(std::move(services)) {}

    [[nodiscard]] std::shared_ptr<DistantObject> rootProxy(const std::string& name) override;

  private:
    MacServices services_;
};

}  // namespace Platform::Linux
