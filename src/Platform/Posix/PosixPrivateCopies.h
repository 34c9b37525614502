#pragma once

#include <functional>

#include "Platform/Posix/PrivateFolder.h"
#include "Platform/PrivateCopies.h"

namespace Platform::Posix {

class PosixPrivateCopies final : public PrivateCopies {
  public:
    PosixPrivateCopies() = default;
    /// For tests: private folders lie below the ground's top and belong to its owner; `step` is called with
    /// the number of bytes copied, before the first is read and after each part.
    PosixPrivateCopies(PrivateFolder::Ground ground, std::function<void(std::uint64_t copied)> step)
        : ground_(std::move(ground)), step_(std::move(step)) {}

    [[nodiscard]] std::unique_ptr<PrivateCopy> copy(const Base::URL& file, const Base::URL& destination,
                                                    std::uint64_t atMost, Error& error) override;
    [[nodiscard]] std::optional<Error> removeFolder(const Base::URL& folder) override;

  private:
    PrivateFolder::Ground ground_;
    std::function<void(std::uint64_t)> step_;
};

}  // namespace Platform::Posix
