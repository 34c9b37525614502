#pragma once

#include <string_view>

namespace Platform {

/// The system log (NSLog; on Linux the datagram socket /dev/log, see syslog(3)).
class SystemLog {
  public:
    virtual ~SystemLog() = default;

    /// Writes one entry. `text` is UTF-8 and may contain line breaks; it is logged whole, never used as a
    /// format. The entry also goes to standard error if that is a terminal or was redirected to a file, a
    /// pipe or a socket. Anything that the log does not accept is lost. May be called on any thread.
    virtual void log(std::string_view text) = 0;
};

}  // namespace Platform
