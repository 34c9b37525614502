#pragma once

#include <string>

namespace Simulator {

/// A salted hash of a password (crypt(3)), which does not reveal it.
[[nodiscard]] std::string hashPassword(const std::string& password);

/// Whether `hash` is a hash of this password.
[[nodiscard]] bool isPassword(const std::string& password, const std::string& hash);

}  // namespace Simulator
