#pragma once

#include "Platform/FileFacts.h"

namespace Platform::Posix {

/// lstat(2), and a count of trees (see TreeCount.h).
class PosixFileFacts final : public FileFacts {
  public:
    [[nodiscard]] std::optional<ItemFacts> look(const Base::URL& item, Error& error) override;
    [[nodiscard]] TreeSize measure(const Base::URL& item, const std::vector<ItemIdentity>& without,
                                   const std::function<void(const TreeSize&)>& counted) override;
};

}  // namespace Platform::Posix
