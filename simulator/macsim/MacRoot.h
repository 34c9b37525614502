#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Support/Files.h"

namespace Simulator {

/// A simulated Mac's root as seen from outside. Paths are the Mac's own; links inside are resolved as the Mac
/// would, so nothing outside the folder is ever reached.
class MacRoot {
  public:
    /// Throws a Refusal if `folder` is not a simulated Mac, or one that this user must not look into.
    explicit MacRoot(const std::string& folder);

    [[nodiscard]] const std::string& folder() const { return folder_; }

    /// Whether an item exists; a link counts as itself.
    [[nodiscard]] bool exists(std::string_view path) const;
    /// Opens an item with open(2)'s flags; invalid on failure.
    [[nodiscard]] Descriptor open(std::string_view path, int flags, unsigned mode = 0) const;
    [[nodiscard]] std::optional<std::string> read(std::string_view path) const;
    /// Writes a new file, with that owner. Returns whether that worked.
    [[nodiscard]] bool write(std::string_view path, std::string_view bytes, unsigned mode,
                             std::uint32_t uid = 0, std::uint32_t gid = 0) const;
    void remove(std::string_view path) const;

  private:
    std::string folder_;
    Descriptor root_;
};

}  // namespace Simulator
