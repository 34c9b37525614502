#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/Patience.h"

namespace WindowTests {

/// A WindowProbe on a display, ended with the object.
class ProbeProcess {
  public:
    /// What is listened to.
    enum class Streams { output, outputAndErrors };

    /// `settings` as on the probe's command line. With an empty display, DISPLAY is not set.
    ProbeProcess(const std::string& display, const std::vector<std::string>& settings,
                 Streams streams = Streams::output);
    ProbeProcess(const ProbeProcess&) = delete;
    ProbeProcess& operator=(const ProbeProcess&) = delete;
    ~ProbeProcess();

    [[nodiscard]] pid_t pid() const { return child_; }
    void tell(const std::string& command) const;
    /// Waits for a line that is equal to `line`. False when it did not come, or nothing at all for `limit`;
    /// what came instead is in `heard`.
    bool hears(const std::string& line, std::chrono::seconds limit = TestSupport::kPatience);
    /// Every line that was read so far.
    [[nodiscard]] const std::vector<std::string>& heard() const { return heard_; }
    /// Waits for the end. Returns the exit status, 128 plus the signal's number, or -1 if it does not end.
    int status();

  private:
    bool readLine(std::string& line, std::chrono::milliseconds limit);

    pid_t child_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string rest_{};
    std::vector<std::string> heard_{};
};

}  // namespace WindowTests
