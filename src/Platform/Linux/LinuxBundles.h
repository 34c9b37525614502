#pragma once

#include <string>

#include "Platform/Bundles.h"

namespace Platform::Linux {

/// Bundles as folders. The information dictionary is Contents/Info.plist, at most 1 MiB, read with libplist
/// when the bundle is opened; one that is larger, or nests too deeply to be read safely, counts as broken.
///
/// mainBundle() never returns null: where the program was started from is noted when this object is made, and
/// the bundle of a program whose files have been removed since has no information dictionary.
class LinuxBundles final : public Bundles {
  public:
    LinuxBundles();
    /// As if the running program's executable were at `executable`.
    explicit LinuxBundles(std::string executable) : executable_(std::move(executable)) {}

    [[nodiscard]] std::unique_ptr<Bundle> open(const Base::URL& location) override;
    [[nodiscard]] std::unique_ptr<Bundle> mainBundle() override;

  private:
    const std::string executable_;
};

}  // namespace Platform::Linux
