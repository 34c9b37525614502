#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Inspect {

/// Whether reports are in colour: standard output is a terminal that supports colours, and the environment
/// has no NO_COLOR.
[[nodiscard]] bool usesColour();

enum class Colour : std::uint8_t { good, warning, bad };

/// `text` in a colour (green, yellow, red), or unchanged.
[[nodiscard]] std::string coloured(std::string_view text, Colour colour, bool inColour);

/// The most columns of a report: 100, or all of a wider terminal.
inline constexpr std::size_t kReportWidth = 100;
[[nodiscard]] std::size_t reportWidth();

/// Appends a line that begins with `indent` blanks, and a line feed. A line of more than `width` columns is
/// broken after a slash or a blank, if there is one, and continues 4 columns further in.
void appendFolded(std::string& output, std::string_view line, std::size_t indent, std::size_t width);

/// A progress line on standard error, if that is a terminal. The line is wiped at the
/// end.
class Progress {
  public:
    Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void show(std::string_view text);

  private:
    bool isTerminal_;
    bool isShown_ = false;
};

/// A number of bytes in few characters: "0 B", "999 B", "1.0 kB", "12.3 MB"; in thousands, as a Mac counts.
[[nodiscard]] std::string sizeText(std::uint64_t bytes);

}  // namespace Inspect
