#pragma once

#include <memory>

#include "Platform/SystemPorts.h"

namespace Inventory {

/// Ports for a program that looks at a Mac and must not touch it: processes, users, bundles and the clock are
/// the real ones, the only child processes are launchctl's "print" and "print-disabled", and the folders are
/// named without being made. Using anything else is a programming error that ends the process.
class LookingPorts {
  public:
    /// `real` outlives this.
    explicit LookingPorts(const Platform::SystemPorts& real);
    LookingPorts(const LookingPorts&) = delete;
    LookingPorts& operator=(const LookingPorts&) = delete;
    ~LookingPorts();

    [[nodiscard]] const Platform::SystemPorts& ports() const;

  private:
    struct Guards;
    std::unique_ptr<Guards> guards_;
};

}  // namespace Inventory
