#pragma once

#include <filesystem>
#include <string>

namespace Simulator {

/// A new folder that appears in its place once everything in it is done, or not at all.
class Workshop {
  public:
    /// `folder` must be missing or empty; throws a Refusal otherwise, or if nothing can be made there.
    explicit Workshop(const std::string& folder);
    Workshop(const Workshop&) = delete;
    Workshop& operator=(const Workshop&) = delete;
    /// Removes everything that was made, unless it was finished.
    ~Workshop();

    /// The folder to work in: mode 0755, beside its final place.
    [[nodiscard]] const std::string& root() const { return temporary_; }

    /// Gives the folder its name. Throws a Refusal if that fails.
    void finish();

  private:
    std::filesystem::path destination_;
    std::string temporary_;
};

}  // namespace Simulator
