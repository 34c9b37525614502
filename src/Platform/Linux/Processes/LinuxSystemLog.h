#pragma once

#include <mutex>
#include <string>
#include <string_view>

#include "Platform/Posix/Descriptor.h"
#include "Platform/SystemLog.h"

namespace Platform::Linux {

/// The datagram socket of the system log, in the form that syslog(3) uses:
/// "<13>Nov  1 12:00:00 NAME[PID]: text", NAME being the program's file name, the time local.
///
/// Connects when something is logged, and again after the log was restarted. One entry is one datagram, line
/// breaks included; one that is larger than the system accepts is sent as several, each with the heading, cut
/// between characters. Waits while the log's queue is full. Like NSLog, writes the entry to standard error
/// too if somebody reads that (see StandardErrorLog.h).
class LinuxSystemLog final : public SystemLog {
  public:
    explicit LinuxSystemLog(std::string socketPath = "/dev/log");

    void log(std::string_view text) override;

  private:
    [[nodiscard]] bool connect();
    [[nodiscard]] int send(std::string_view heading, std::string_view text);
    void sendOrReconnect(std::string_view heading, std::string_view text);
    void sendInPieces(std::string_view heading, std::string_view text);

    const std::string socketPath_;
    const std::string programName_;
    std::mutex mutex_;
    Posix::Descriptor socket_;
};

}  // namespace Platform::Linux
