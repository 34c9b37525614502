#pragma once

#include <string>
#include <string_view>

#include "Support/Files.h"
#include "launchd/EventLoop.h"

namespace Simulator {

/// The system log: receives everything that programs send to /dev/log and appends it to /var/log/system.log.
///
/// An entry is "Nov 21 08:00:00 Mac NAME[PID]: text"; the process id is the kernel's, not the sender's claim;
/// line breaks in a text stay, any other control character is written as ^X.
class SystemLogFile {
  public:
    explicit SystemLogFile(EventLoop& loop);

    /// Opens the socket and the file.
    [[nodiscard]] bool open();

    /// Writes launchd's own line.
    void write(std::string_view text) { append("launchd", 1, text); }

    /// Takes everything that has arrived.
    void drain();

  private:
    [[nodiscard]] bool receiveOne();
    void append(std::string_view program, int pid, std::string_view text);

    EventLoop& loop_;
    Descriptor socket_;
    Descriptor file_;
};

}  // namespace Simulator
