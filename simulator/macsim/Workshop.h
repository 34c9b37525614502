#pragma once

#include <filesystem>
#include <string>

namespace Simulator {

/// A new folder that appears in its place when everything in it is done, and not at all otherwise.
class Workshop {
  public:
    /// `folder` must not exist or be empty; throws a Refusal otherwise, or when nothing can be made there.
    explicit Workshop(const std::string& folder);
    Workshop(const Workshop&) = delete;
    Workshop& operator=(const Workshop&) = delete;
    /// Removes everything that was made, unless it was finished.
    ~Workshop();

    /// The folder to work in: mode 0755, beside the place that it will have.
    [[nodiscard]] const std::string& root() const { return temporary_; }

    /// Gives the folder its name. Throws a Refusal when that fails.
    void finish();

  private:
    std::filesystem::path destination_;
    std::string temporary_;
};

}  // namespace Simulator
