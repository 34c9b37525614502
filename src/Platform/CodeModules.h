#pragma once

#include <optional>
#include <string>

#include "Base/URL.h"
#include "Platform/Error.h"

namespace Platform {

/// The program's own code that is loaded only when it is needed (dlopen). Nothing is logged.
class CodeModules {
  public:
    virtual ~CodeModules() = default;

    /// Loads the library at `module`, with its dependencies, and sets `address` to its C symbol `symbol`. On
    /// failure returns the error, with the system's words, and does not touch `address`. A loaded library
    /// stays until the process ends.
    [[nodiscard]] virtual std::optional<Error> load(const Base::URL& module, const std::string& symbol,
                                                    void*& address) = 0;
};

}  // namespace Platform
