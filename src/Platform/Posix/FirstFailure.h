#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Error.h"

namespace Platform::Posix {

/// Whether an item of a tree comes before another one, both given by path: a folder's contents before the
/// folder, its entries by the bytes of their names.
[[nodiscard]] bool comesBefore(std::string_view path, std::string_view other);

/// Keeps the first of several failures in that order, of an item's own the one with the lowest code, so that
/// the one reported does not depend on the order in which they occur.
class FirstFailure {
  public:
    void note(std::string path, Error error);
    /// Takes over the other one's failure; may be called by several threads.
    void join(FirstFailure& other);
    [[nodiscard]] std::optional<Error> take() { return std::move(error_); }

  private:
    std::mutex mutex_;
    std::string path_;
    std::optional<Error> error_;
};

}  // namespace Platform::Posix
