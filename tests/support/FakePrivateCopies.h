#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/PrivateCopies.h"
#include "support/Call.h"

namespace TestSupport {

/// Files that can be copied, by path, with what a copy of all of one looks like.
class FakePrivateCopies final : public Platform::PrivateCopies {
  public:
    struct File {
        std::uint64_t size = 0;
        std::string sha256;
    };

    explicit FakePrivateCopies(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::unique_ptr<Platform::PrivateCopy> copy(const Base::URL& file,
                                                              const Base::URL& destination,
                                                              std::uint64_t atMost,
                                                              Platform::Error& error) override;
    [[nodiscard]] std::optional<Platform::Error> removeFolder(const Base::URL& folder) override;

    std::map<std::string, File> files;
    /// The next call on this path fails with this.
    std::map<std::string, Platform::Error> failures;
    /// How many bytes the last copy was to have at most.
    std::uint64_t lastLimit = 0;

  private:
    CallList& calls_;
};

}  // namespace TestSupport
