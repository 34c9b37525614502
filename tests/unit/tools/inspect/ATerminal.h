#pragma once

#include <unistd.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace InspectUnitTests {

using Environment = std::vector<std::pair<const char*, std::optional<std::string>>>;

/// A terminal, and processes that have it as one of their streams.
class ATerminal {
  public:
    ATerminal();
    ATerminal(const ATerminal&) = delete;
    ATerminal& operator=(const ATerminal&) = delete;
    ~ATerminal();

    /// 0 for a terminal that does not know.
    void setColumns(unsigned short columns) const;

    /// The answer of a new process with these variables whose `stream` is the terminal, or no terminal.
    [[nodiscard]] std::size_t ask(const std::function<std::size_t()>& question,
                                  const Environment& environment, int stream = STDOUT_FILENO,
                                  bool isTerminal = true) const;

    /// What has been written to the terminal since the last call.
    [[nodiscard]] std::string written() const;

  private:
    int main_;
    int terminal_ = -1;
};

}  // namespace InspectUnitTests
