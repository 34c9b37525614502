#pragma once

#include <string>

namespace Simulator {

/// A salted hash of a password (crypt(3)), of which it cannot be read back.
[[nodiscard]] std::string hashPassword(const std::string& password);

/// Whether `hash` is one of this password.
[[nodiscard]] bool isPassword(const std::string& password, const std::string& hash);

}  // namespace Simulator
