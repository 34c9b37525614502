#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "FolderAsRoot.h"
#include "Look.h"
#include "Verdict.h"

namespace Inspect {

/// This Mac, or the one in a folder, as the commands see it.
class MacView {
  public:
    /// The view of this Mac, or of the one in the folder `root`. Returns nothing and sets `why` to one line
    /// if that is not the root folder of a Mac.
    [[nodiscard]] static std::unique_ptr<MacView> make(const std::optional<std::string>& root,
                                                       std::string& why);

    /// Looks until two looks agree.
    [[nodiscard]] Inventory::Inventory look() const;
    /// What `contentsOf` says of the places of `inventory`, with a progress line.
    [[nodiscard]] std::vector<Platform::TreeSize> sizesOf(const Inventory::Inventory& inventory) const;

    [[nodiscard]] Platform::FileFacts& files() const;
    [[nodiscard]] const std::string& root() const { return root_; }

  private:
    explicit MacView(std::string root);

    std::string root_;
    std::unique_ptr<Inventory::FolderAsRoot> folder_;
};

/// The contents of each of these places. `counted` is told now and then how many files they have so far.
[[nodiscard]] std::vector<Platform::TreeSize> contentsOf(const std::vector<Inventory::Place>& places,
                                                         Platform::FileFacts& files,
                                                         const std::function<void(std::uint64_t)>& counted);

/// The version of the uninstaller that this program was built with.
[[nodiscard]] Inventory::Version ownVersion();

}  // namespace Inspect
