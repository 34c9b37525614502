#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace Platform::Posix {

/// A running SHA-256. Each system has its own source file for it, over its own library.
class SHA256 {
  public:
    SHA256();
    SHA256(const SHA256&) = delete;
    SHA256& operator=(const SHA256&) = delete;
    ~SHA256();

    void add(const void* bytes, std::size_t count);
    /// 64 lower-case hexadecimal digits; empty, which equals no digest, if the library failed. Called once,
    /// at the end.
    [[nodiscard]] std::string finish();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace Platform::Posix
