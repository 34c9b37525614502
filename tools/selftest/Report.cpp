#include "Report.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "Base/Displayable.h"

namespace Selftest {

namespace {

constexpr std::array<std::string_view, 3> kWords{"PASS", "FAIL", "SKIP"};
/// Begins the line in which a check's process says what it found.
constexpr std::string_view kMark = "selftest-outcome ";

std::string_view wordOf(Verdict verdict) {
    return kWords.at(static_cast<std::size_t>(verdict));
}

std::string padded(std::string_view text, std::size_t width) {
    return std::string(text) + std::string(width > text.size() ? width - text.size() : 0, ' ');
}

std::string number(int count) {
    const std::string digits = std::to_string(count);
    return std::string(digits.size() < 6 ? 6 - digits.size() : 0, ' ') + digits;
}

struct Counts {
    std::string_view group;
    std::array<int, 3> of{};
};

std::string rowOf(const Counts& counts) {
    std::string row = padded(counts.group, 12);
    for (const int count : counts.of) {
        row += number(count);
    }
    return row + "\n";
}

}  // namespace

std::string lineOf(std::string_view name, const Outcome& outcome, std::size_t width) {
    std::string line = std::string(wordOf(outcome.verdict)) + "  " + std::string(name);
    if (!outcome.reason.empty()) {
        line += std::string(width > name.size() ? width - name.size() : 0, ' ') + "  " + outcome.reason;
    }
    return line;
}

void printOutcome(const Outcome& outcome) {
    std::printf("\n%s%s %s\n", std::string(kMark).c_str(), std::string(wordOf(outcome.verdict)).c_str(),
                Base::displayable(outcome.reason).c_str());
    std::fflush(stdout);
}

std::optional<Outcome> outcomeIn(std::string_view output) {
    const std::size_t begin = output.rfind(kMark);
    if (begin == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view line = output.substr(begin + kMark.size());
    line = line.substr(0, line.find('\n'));
    const auto* const word = std::find(kWords.begin(), kWords.end(), line.substr(0, line.find(' ')));
    if (word == kWords.end()) {
        return std::nullopt;
    }
    const std::string_view reason = line.substr(std::min(word->size() + 1, line.size()));
    return Outcome{static_cast<Verdict>(word - kWords.begin()), std::string(reason)};
}

std::string tableOf(const std::vector<Result>& results) {
    std::vector<Counts> groups;
    Counts all{"all"};
    for (const Result& result : results) {
        const std::string_view group = result.name.substr(0, result.name.find('.'));
        if (groups.empty() || groups.back().group != group) {
            groups.push_back({group});
        }
        const auto column = static_cast<std::size_t>(result.outcome.verdict);
        ++groups.back().of.at(column);
        ++all.of.at(column);
    }
    std::string table = padded("group", 12);
    for (const std::string_view word : kWords) {
        table += "  " + std::string(word);
    }
    table += "\n";
    for (const Counts& counts : groups) {
        table += rowOf(counts);
    }
    return table + rowOf(all);
}

int exitStatusOf(const std::vector<Result>& results) {
    return std::any_of(results.begin(), results.end(),
                       [](const Result& each) { return each.outcome.verdict == Verdict::fail; })
               ? 1
               : 0;
}

}  // namespace Selftest
