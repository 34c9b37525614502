#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "Platform/Dispatch.h"

namespace Helpers {

/// A helper's log lines for the peers and messages that it refused: few enough that nobody can flood the log,
/// enough that nothing is lost.
///
/// The first `kWhole` refusals of each kind are written in full: "[SNTM Installer] Refused " + why. Then, at
/// the 10th, 100th, 1000th and so on, "[SNTM Installer] Refused so far: COUNT times, KIND", and at the end
/// the same with "in all" for every kind that has been counted since its last line. The kind is the text
/// after the peer's name and ": "; after `kMostKinds` of them all others are one kind, "for other reasons".
///
/// Both operations may be called on any thread. `summarize` is the helper's last word on the matter.
class RefusalLog {
  public:
    static constexpr std::uint64_t kWhole = 5;
    static constexpr std::size_t kMostKinds = 16;

    RefusalLog();

    /// `why` in a listener's form: "process 1 of user 2: reason".
    void note(const std::string& why);
    void summarize();

  private:
    struct Count {
        std::uint64_t refused = 0;
        std::uint64_t written = 0;
        /// The next count that gets a line.
        std::uint64_t next = 10;
    };

    [[nodiscard]] Count& countOf(const std::string& kind);
    void noteAlone(const std::string& why);

    /// Handles one refusal after another.
    std::unique_ptr<Platform::Queue> queue_;
    std::map<std::string, Count> counts_;
};

}  // namespace Helpers
