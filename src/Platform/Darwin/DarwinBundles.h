#pragma once

#include "Platform/Bundles.h"

namespace Platform::Darwin {

/// NSBundle. The information dictionary is read from Contents/Info.plist when a bundle is opened, past
/// NSBundle, which keeps the first one that it read for as long as the process lives. A file of more than
/// 1 MiB, or one that nests too deeply to be read safely, counts as broken.
///
/// Beyond the port's promise, a resource may also lie in a localization's folder, and a string table of the
/// older text form is read too. mainBundle() never returns null.
class DarwinBundles final : public Bundles {
  public:
    [[nodiscard]] std::unique_ptr<Bundle> open(const Base::URL& location) override;
    [[nodiscard]] std::unique_ptr<Bundle> mainBundle() override;
};

}  // namespace Platform::Darwin
