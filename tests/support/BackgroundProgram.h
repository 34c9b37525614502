#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/Patience.h"

namespace TestSupport {

/// A program that runs beside the test; ended with everything it started when the object goes.
class BackgroundProgram {
  public:
    /// Starts a program found in PATH in a new process group, without input; its output goes to
    /// `outputFile`.
    BackgroundProgram(const std::vector<std::string>& command, const std::string& outputFile);
    BackgroundProgram(const BackgroundProgram&) = delete;
    BackgroundProgram& operator=(const BackgroundProgram&) = delete;
    ~BackgroundProgram();

    /// Waits for the end at most so long. The exit status, 128 and the number of the signal, or -1 when the
    /// program still runs.
    int wait(std::chrono::seconds limit = kPatience);

  private:
    pid_t pid_ = -1;
    int status_ = -1;
};

}  // namespace TestSupport
