#pragma once

#include "Platform/Termination.h"

namespace Platform::Posix {

/// SIGTERM, which its handler passes through a pipe to a thread that waits for it.
class PosixTermination final : public Termination {
  public:
    void onRequest(std::function<void()> requested) override;
};

}  // namespace Platform::Posix
