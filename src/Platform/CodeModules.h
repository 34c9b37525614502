#pragma once

#include <optional>
#include <string>

#include "Base/URL.h"
#include "Platform/Error.h"

namespace Platform {

/// Code of the program itself that is loaded only when it is needed (dlopen). Nothing is logged.
class CodeModules {
  public:
    virtual ~CodeModules() = default;

    /// Loads the library at `module`, with what it needs, and sets `address` to its C symbol `symbol`. On
    /// failure returns the error, with the system's words, and leaves `address`. A loaded library stays until
    /// the process ends.
    [[nodiscard]] virtual std::optional<Error> load(const Base::URL& module, const std::string& symbol,
                                                    void*& address) = 0;
};

}  // namespace Platform
