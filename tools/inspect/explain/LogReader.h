#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "inspect/explain/LogEntry.h"

namespace Inspect {

/// Reads the entries of a system log one after another, whichever form the log has (see LogLine.h; also JSON,
/// one object per line or an array of objects). Memory does not grow with the log: an entry keeps its first
/// kLongestEntry bytes, the rest of it is skipped.
class LogReader {
  public:
    static constexpr std::size_t kLongestEntry = std::size_t{1} << 16;

    /// Puts up to `size` bytes at `buffer` and returns how many; 0 at the end, and on failure.
    using Source = std::function<std::size_t(char* buffer, std::size_t size)>;

    explicit LogReader(Source source);

    /// The next entry; nothing at the end of the log.
    [[nodiscard]] std::optional<LogEntry> next();

    /// After the end: the number of entries.
    [[nodiscard]] std::size_t entries() const { return entries_; }
    /// After the end: whether the log stops in the middle of a JSON object.
    [[nodiscard]] bool endsInTheMiddle() const { return endsInTheMiddle_; }

  private:
    enum class Form { unknown, lines, json };

    [[nodiscard]] int nextByte();
    [[nodiscard]] bool readLine(std::string& line);
    [[nodiscard]] bool readObject(std::string& object);
    [[nodiscard]] std::optional<LogEntry> nextFromLines();
    [[nodiscard]] std::optional<LogEntry> nextFromJson();
    void findForm();

    Source source_;
    std::string buffer_;
    std::size_t position_ = 0;
    std::size_t line_ = 0;
    std::size_t entries_ = 0;
    Form form_ = Form::unknown;
    bool endsInTheMiddle_ = false;
    std::optional<LogEntry> begun_;
};

}  // namespace Inspect
