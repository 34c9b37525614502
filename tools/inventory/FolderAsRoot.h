#pragma once

#include <string>

#include "Platform/FileFacts.h"

namespace Inventory {

/// The files of a Mac in a folder: a mounted disk, or a simulated Mac's. Every path is taken below that
/// folder. A link on the way to an item is not followed, because its target may be meant from the root of
/// that Mac: anything behind one cannot be looked at (ELOOP). Errors name the item in the caller's spelling.
class FolderAsRoot final : public Platform::FileFacts {
  public:
    /// `folder` has no trailing slash. `files` answers for real paths and outlives this.
    FolderAsRoot(Platform::FileFacts& files, std::string folder);

    [[nodiscard]] std::optional<Platform::ItemFacts> look(const Base::URL& item,
                                                          Platform::Error& error) override;
    [[nodiscard]] Platform::TreeSize measure(
        const Base::URL& item, const std::vector<Platform::ItemIdentity>& without,
        const std::function<void(const Platform::TreeSize&)>& counted) override;

  private:
    [[nodiscard]] Base::URL real(const Base::URL& item) const;

    Platform::FileFacts& files_;
    std::string folder_;
};

}  // namespace Inventory
