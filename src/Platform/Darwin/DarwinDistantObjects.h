#pragma once

#include "Platform/DistantObjects.h"

namespace Platform::Darwin {

/// NSConnection, which Apple keeps for old programs only but which the product's daemon is registered with.
/// An exception on the way, as it comes when the other process is gone, counts as no answer.
class DarwinDistantObjects final : public DistantObjects {
  public:
    [[nodiscard]] std::shared_ptr<DistantObject> rootProxy(const std::string& name) override;
};

}  // namespace Platform::Darwin
