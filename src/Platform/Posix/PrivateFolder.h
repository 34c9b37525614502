#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "Base/URL.h"
#include "Platform/Error.h"
#include "Platform/Posix/Descriptor.h"

namespace Platform::Posix {

/// The folder of a private copy while one call has exclusive use of it. Removed with everything in it on
/// destruction.
class PrivateFolder {
  public:
    /// The start of the way to private folders, and their owner: tests use a scratch folder.
    struct Ground {
        std::string top = "/";
        uid_t owner = 0;
    };

    PrivateFolder() = default;
    PrivateFolder(PrivateFolder&& other) noexcept = default;
    PrivateFolder& operator=(PrivateFolder&&) = delete;
    ~PrivateFolder();

    /// Makes the folder at `location`, or takes the existing one and empties it; waits for anybody else who
    /// has it. The folders above it are walked from the ground's top, none through a link; each has to belong
    /// to the owner, and to be either sticky or writable by nobody else, and so does the folder itself.
    [[nodiscard]] std::optional<Error> take(const Base::URL& location, const Ground& ground);

    /// Takes the folder only if it exists and nobody has it; otherwise `get` is -1.
    [[nodiscard]] std::optional<Error> takeLeftover(const Base::URL& location, const Ground& ground);

    /// The open folder, or -1.
    [[nodiscard]] int get() const { return folder_.get(); }

    /// Removes the folder and returns the first failure.
    [[nodiscard]] std::optional<Error> remove();

  private:
    enum class Wanted { anyhow, whenLeftOver };

    [[nodiscard]] std::optional<Error> openParent(const Ground& ground);
    /// Both return 0 or an errno value.
    [[nodiscard]] int open(Wanted wanted);
    [[nodiscard]] int claim(const Ground& ground) const;
    [[nodiscard]] std::optional<Error> empty() const;
    [[nodiscard]] bool isStillThere() const;

    std::string path_;
    std::string name_;
    Descriptor parent_;
    Descriptor folder_;
};

}  // namespace Platform::Posix
