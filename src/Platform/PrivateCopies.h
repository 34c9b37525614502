#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Base/URL.h"
#include "Platform/Error.h"

namespace Platform {

/// A copy of a file that only root can reach. The copy and its folder are removed when this is destroyed.
class PrivateCopy {
  public:
    virtual ~PrivateCopy() = default;

    /// The number of bytes that were copied.
    [[nodiscard]] virtual std::uint64_t size() const = 0;
    /// The SHA-256 of the bytes that were copied, in 64 lower-case hexadecimal digits.
    [[nodiscard]] virtual const std::string& sha256() const = 0;
};

/// Copies of strangers' files for privileged work: what is checked is what is used afterwards, because nobody
/// else can change it in between.
///
/// Error descriptions name the item. Nothing is logged. May be called on any thread.
class PrivateCopies {
  public:
    virtual ~PrivateCopies() = default;

    /// Copies the first `atMost` bytes of `file`, or all if there are fewer, to `destination`.
    ///
    /// The file is opened once, and read once: the bytes that are written are those that are hashed. It has
    /// to be a regular file; a link as its last component is not followed, a FIFO is not waited for.
    ///
    /// The destination's folder exists only for the copy: it is created with mode 0700, and anything that an
    /// interrupted call left in it is removed first. Every folder above it has to belong to root, and nobody
    /// else may be able to replace its contents; none is reached through a link. While there is a copy in
    /// that folder, another call for it, even in another process, waits.
    ///
    /// Returns nothing and sets `error` on failure, after which no copy is left, nor a folder that could be
    /// opened and kept to its owner; another stays for the next call.
    [[nodiscard]] virtual std::unique_ptr<PrivateCopy> copy(const Base::URL& file,
                                                            const Base::URL& destination,
                                                            std::uint64_t atMost, Error& error) = 0;

    /// Removes the folder of copies that an interrupted call left. A folder in use stays; its user removes
    /// it. A missing folder is not an error.
    [[nodiscard]] virtual std::optional<Error> removeFolder(const Base::URL& folder) = 0;
};

}  // namespace Platform
