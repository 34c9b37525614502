#pragma once

#include "Platform/CodeModules.h"

namespace Platform::Posix {

/// dlopen(3) and dlsym(3). A library's symbols stay its own; one that lacks a function it needs is refused as
/// a whole. The error has the loader's words and no number.
class PosixCodeModules final : public CodeModules {
  public:
    [[nodiscard]] std::optional<Error> load(const Base::URL& module, const std::string& symbol,
                                            void*& address) override;
};

}  // namespace Platform::Posix
