#include "Terminal.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "DisplayText.h"
#include "Files.h"

namespace Inspect {

namespace {

constexpr std::string_view kWipe = "\r\x1b[K";

const char* codeOf(Colour colour) {
    switch (colour) {
        case Colour::good:
            return "\x1b[32m";
        case Colour::warning:
            return "\x1b[33m";
        case Colour::bad:
            return "\x1b[31m";
    }
    return "";
}

}  // namespace

bool usesColour() {
    const char* const refused = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    const bool isRefused = refused != nullptr && *refused != '\0';
    const bool isDumb = terminal == nullptr || std::string_view(terminal) == "dumb";
    return !isRefused && !isDumb && ::isatty(STDOUT_FILENO) == 1;
}

std::string coloured(std::string_view text, Colour colour, bool inColour) {
    constexpr std::string_view kPlain = "\x1b[0m";
    return inColour ? codeOf(colour) + std::string(text).append(kPlain) : std::string(text);
}

std::size_t reportWidth() {
    return ::isatty(STDOUT_FILENO) == 1 ? std::max(kReportWidth, outputWidth()) : kReportWidth;
}

void appendFolded(std::string& output, std::string_view line, std::size_t indent, std::size_t width) {
    constexpr std::size_t kFurtherIn = 4;
    std::size_t before = indent;
    while (before + columnsOf(line) > width) {
        // A byte takes a column at most, so this many of them fit.
        const std::size_t end = line.find_last_of("/ ", width - std::min(before + 1, width));
        if (end == std::string_view::npos || end + 1 == line.size()) {
            break;
        }
        appendLine(output, std::string(before, ' ').append(line.substr(0, end + 1)));
        line.remove_prefix(end + 1);
        before = indent + kFurtherIn;
    }
    appendLine(output, std::string(before, ' ').append(line));
}

Progress::Progress() : isTerminal_(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (isShown_) {
        static_cast<void>(std::fwrite(kWipe.data(), 1, kWipe.size(), stderr));
    }
}

void Progress::show(std::string_view text) {
    if (isTerminal_) {
        isShown_ = true;
        const std::string line = std::string(kWipe).append(text);
        static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
    }
}

std::string sizeText(std::uint64_t bytes) {
    constexpr std::uint64_t kThousand = 1000;
    constexpr std::array<const char*, 6> kUnits{"kB", "MB", "GB", "TB", "PB", "EB"};
    if (bytes < kThousand) {
        return std::to_string(bytes) + " B";
    }
    std::size_t unit = 0;
    std::uint64_t ofUnit = kThousand;
    while (bytes / ofUnit >= kThousand) {
        ofUnit *= kThousand;
        ++unit;
    }
    // Rounded down: the real size is never less than the one shown.
    const std::uint64_t tenths = bytes / (ofUnit / 10);
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " " + kUnits.at(unit);
}

}  // namespace Inspect
