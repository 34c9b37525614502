#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Inspect {

/// One entry of a system log: one program's message at one moment. Bytes are those of the log.
struct LogEntry {
    /// The time as the log writes it.
    std::string time;
    /// The same in seconds, for differences within one log. Entries without a year count from the start of a
    /// leap year.
    std::optional<double> seconds;
    /// The program's file name.
    std::string program;
    std::int32_t pid = 0;
    /// The message, without the line feed that ends the entry; it may hold others.
    std::string text;
    /// The number of the entry's first line, from 1.
    std::size_t line = 0;

    friend bool operator==(const LogEntry&, const LogEntry&) = default;
};

}  // namespace Inspect
