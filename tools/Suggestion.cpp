#include "Suggestion.h"

#include <algorithm>

namespace Tools {

namespace {

std::size_t distance(std::string_view a, std::string_view b) {
    // rows[i][j]: from the first i letters of `a` to the first j of `b`.
    std::vector<std::vector<std::size_t>> rows(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                rows[i][j] = i + j;
                continue;
            }
            const std::size_t changed = rows[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, changed});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
            }
        }
    }
    return rows[a.size()][b.size()];
}

}  // namespace

std::optional<std::string> nearestWord(std::string_view word, const std::vector<std::string>& words) {
    // No word of a command line is that long; the table stays small.
    constexpr std::size_t kLongest = 64;
    if (word.size() > kLongest) {
        return std::nullopt;
    }
    std::optional<std::string> nearest;
    std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
    for (const std::string& each : words) {
        const std::size_t letters = distance(word, each);
        if (letters < least) {
            least = letters;
            nearest = each;
        }
    }
    return nearest;
}

std::string didYouMean(std::string_view word, const std::vector<std::string>& words) {
    const auto nearest = nearestWord(word, words);
    return nearest ? ": did you mean " + *nearest + "?" : std::string();
}

}  // namespace Tools
