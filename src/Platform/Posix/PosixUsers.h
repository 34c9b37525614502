#pragma once

#include "Platform/Users.h"

namespace Platform::Posix {

/// getpwent(3), getuid(2), seteuid(2).
class PosixUsers final : public Users {
  public:
    void rewind() override;
    [[nodiscard]] std::optional<Entry> next() override;
    void close() override;
    [[nodiscard]] std::uint32_t realUserId() override;
    int setEffectiveUserId(std::uint32_t uid) override;
};

}  // namespace Platform::Posix
