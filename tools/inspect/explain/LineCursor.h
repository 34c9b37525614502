#pragma once

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>

namespace Inspect {

/// The rest of a line, taken from its front.
class LineCursor {
  public:
    explicit LineCursor(std::string_view text) : text_(text) {}

    [[nodiscard]] std::string_view rest() const { return text_; }

    [[nodiscard]] bool take(std::string_view expected) {
        const bool matches = text_.starts_with(expected);
        text_.remove_prefix(matches ? expected.size() : 0);
        return matches;
    }

    [[nodiscard]] bool takeSpaces() {
        const std::size_t count = std::min(text_.find_first_not_of(' '), text_.size());
        text_.remove_prefix(count);
        return count > 0;
    }

    /// A number of `digits` digits; of any length for 0.
    [[nodiscard]] std::optional<int> takeNumber(std::size_t digits) {
        std::size_t length = 0;
        while (length < text_.size() && std::isdigit(static_cast<unsigned char>(text_[length])) != 0) {
            ++length;
        }
        if (length == 0 || (digits != 0 && length != digits)) {
            return std::nullopt;
        }
        int number = 0;
        const auto [end, error] = std::from_chars(text_.data(), text_.data() + length, number);
        if (error != std::errc()) {
            return std::nullopt;
        }
        text_.remove_prefix(length);
        return number;
    }

    /// Everything up to the next blank; nothing at the end.
    [[nodiscard]] std::string_view takeWord() {
        const std::string_view word = text_.substr(0, text_.find(' '));
        text_.remove_prefix(word.size());
        return word;
    }

    /// Everything before `mark`, which is taken too.
    [[nodiscard]] std::optional<std::string_view> takeUpTo(std::string_view mark) {
        const std::size_t end = text_.find(mark);
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        const std::string_view before = text_.substr(0, end);
        text_.remove_prefix(end + mark.size());
        return before;
    }

  private:
    std::string_view text_;
};

}  // namespace Inspect
