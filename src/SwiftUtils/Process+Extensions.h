#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Base/URL.h"
#include "Platform/TaskRunner.h"

namespace SwiftUtils {

/// The result of a child process. Only `execute` makes results.
class ProcessResult {
  public:
    /// Not available: a programming error that ends the process.
    [[noreturn]] ProcessResult();

    /// Everything the child wrote to standard output, as UTF-8; nothing if it wrote nothing or invalid
    /// UTF-8.
    [[nodiscard]] const std::optional<std::string>& output() const { return output_; }
    /// The same for standard error.
    [[nodiscard]] const std::optional<std::string>& errorDescription() const { return errorDescription_; }
    /// The exit status, or the number of the signal.
    [[nodiscard]] std::int32_t terminationStatus() const { return terminationStatus_; }
    [[nodiscard]] Platform::TerminationReason terminationReason() const { return terminationReason_; }

  private:
    friend ProcessResult execute(const std::string& launchPath,
                                 const std::optional<std::vector<std::string>>& arguments);

    ProcessResult(std::optional<std::string> output, std::optional<std::string> errorDescription,
                  std::int32_t terminationStatus, Platform::TerminationReason terminationReason);

    std::optional<std::string> output_;
    std::optional<std::string> errorDescription_;
    std::int32_t terminationStatus_;
    Platform::TerminationReason terminationReason_;
};

/// Runs one program to its end on this thread and captures its output. `arguments` do not include the path.
///
/// The pipes are read only after the child has ended, output first: a child that fills a pipe blocks
/// for ever, so only tools with short output are run. Logs what the child wrote to standard error
/// together with its end, then what it wrote to standard output; logs nothing for a child that wrote
/// nothing, whatever its status. The child's own line breaks stay; those in `arguments` that it
/// repeats do not. A path that cannot be run ends this process (the platform's exception is not
/// caught).
ProcessResult execute(const std::string& launchPath,
                      const std::optional<std::vector<std::string>>& arguments);

/// The same for an executable's URL.
ProcessResult execute(const Base::URL& launchURL, const std::optional<std::vector<std::string>>& arguments);

}  // namespace SwiftUtils
