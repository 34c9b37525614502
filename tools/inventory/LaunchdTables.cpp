#include "LaunchdTables.h"

#include <algorithm>
#include <charconv>

namespace Inventory {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Takes the next line off `text`, trimmed; nothing at the end.
std::optional<std::string_view> takeLine(std::string_view& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return trimmed(line);
}

/// The lines of the block that begins with `NAME = {`, up to its "}". Returns nothing if there is no such
/// block or it has no end.
std::optional<std::vector<std::string_view>> block(std::string_view text, std::string_view beginning) {
    std::optional<std::string_view> line;
    while ((line = takeLine(text)) && *line != beginning) {
    }
    std::vector<std::string_view> lines;
    while (line && (line = takeLine(text)) && *line != "}") {
        lines.push_back(*line);
    }
    return line ? std::optional(std::move(lines)) : std::nullopt;
}

}  // namespace

std::optional<std::vector<std::string>> printedLabels(std::string_view text) {
    const auto lines = block(text, "services = {");
    if (!lines) {
        return std::nullopt;
    }
    std::vector<std::string> labels;
    for (const std::string_view line : *lines) {
        // The process id, perhaps the last exit status, then the label.
        labels.emplace_back(line.substr(line.find_last_of(" \t") + 1));
    }
    return labels;
}

PrintedJob printedJob(std::string_view text) {
    constexpr std::string_view kIs = " = ";
    PrintedJob job;
    int depth = 0;
    while (const auto line = takeLine(text)) {
        if (line->ends_with('{')) {
            ++depth;
            continue;
        }
        if (*line == "}") {
            --depth;
            continue;
        }
        const std::size_t is = line->find(kIs);
        if (depth != 1 || is == std::string_view::npos) {
            continue;
        }
        const std::string_view key = line->substr(0, is);
        const std::string_view value = line->substr(is + kIs.size());
        if (key == "path") {
            job.plist = value;
        } else if (key == "program") {
            job.program = value;
        } else if (std::int32_t pid = 0;
                   key == "pid" &&
                   std::from_chars(value.data(), value.data() + value.size(), pid).ec == std::errc()) {
            job.pid = pid;
        }
    }
    return job;
}

std::optional<std::vector<PrintedOverride>> printedOverrides(std::string_view text) {
    constexpr std::string_view kMeans = "\" => ";
    const auto lines = block(text, "disabled services = {");
    if (!lines) {
        return std::nullopt;
    }
    std::vector<PrintedOverride> overrides;
    for (const std::string_view line : *lines) {
        const std::size_t end = line.find(kMeans);
        if (line.starts_with('"') && end != std::string_view::npos) {
            const std::string_view word = line.substr(end + kMeans.size());
            overrides.push_back({std::string(line.substr(1, end - 1)), word == "true" || word == "disabled"});
        }
    }
    return overrides;
}

}  // namespace Inventory
