#pragma once

#include <stdexcept>
#include <string>

namespace Simulator {

/// The reason why macsim refuses an order; its text is the one line that the user gets. Thrown and caught
/// within macsim.
class Refusal : public std::runtime_error {
  public:
    static constexpr int kRefused = 1;
    static constexpr int kMisuse = 2;

    explicit Refusal(const std::string& text, int status = kRefused)
        : std::runtime_error(text), status_(status) {}

    /// macsim's exit status.
    [[nodiscard]] int status() const { return status_; }

  private:
    int status_;
};

}  // namespace Simulator
