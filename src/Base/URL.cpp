#include "Base/URL.h"

#include <cstddef>

#include "Base/PathEscaping.h"

namespace Base {
namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase) {
    if (text.size() != lowerCase.size()) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char lower = (text[i] >= 'A' && text[i] <= 'Z') ? static_cast<char>(text[i] | 0x20) : text[i];
        if (lower != lowerCase[i]) {
            return false;
        }
    }
    return true;
}

// The length of the scheme that `text` begins with, without the colon; npos if it has none.
std::size_t schemeLength(std::string_view text) {
    if (text.empty() || !isLetter(text[0])) {
        return kNowhere;
    }
    for (std::size_t i = 1; i < text.size(); ++i) {
        const char c = text[i];
        if (c == ':') {
            return i;
        }
        if (!isLetter(c) && !(c >= '0' && c <= '9') && c != '+' && c != '-' && c != '.') {
            return kNowhere;
        }
    }
    return kNowhere;
}

bool hasDotComponent(std::string_view path) {
    std::size_t begin = 0;
    while (begin <= path.size()) {
        std::size_t end = path.find('/', begin);
        end = end == kNowhere ? path.size() : end;
        const std::string_view component = path.substr(begin, end - begin);
        if (component == "." || component == "..") {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

void dropTrailingSlashes(std::string& path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
}

// The decoded path in `text`, without trailing slashes. Dots are looked for in the decoded form, so that an
// escaped one is found as well.
std::optional<std::string> decodedPath(std::string_view text) {
    auto path = unescapedPath(text);
    if (!path || hasDotComponent(*path)) {
        return std::nullopt;
    }
    dropTrailingSlashes(*path);
    return path;
}

// The part of `text` from the path on, after an optional "//" and host; nothing if the host is another
// machine.
std::optional<std::string_view> withoutHost(std::string_view text) {
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        const std::string_view host = text.substr(0, text.find('/'));
        if (!host.empty() && !equalsIgnoringCase(host, "localhost")) {
            return std::nullopt;
        }
        text.remove_prefix(host.size());
    }
    if (!text.starts_with('/')) {
        return std::nullopt;
    }
    return text;
}

}  // namespace

URL URL::fileURL(std::string_view path) {
    std::string absolute;
    absolute.reserve(path.size() + 1);
    if (!path.starts_with('/')) {
        absolute = "/";
    }
    absolute += path;
    dropTrailingSlashes(absolute);
    return URL(std::move(absolute));
}

std::optional<URL> URL::parse(std::string_view text) {
    constexpr std::string_view kScheme = "file";
    if (text.size() <= kScheme.size() || text[kScheme.size()] != ':' ||
        !equalsIgnoringCase(text.substr(0, kScheme.size()), kScheme)) {
        return std::nullopt;
    }
    const auto escaped = withoutHost(text.substr(kScheme.size() + 1));
    if (!escaped) {
        return std::nullopt;
    }
    auto path = decodedPath(*escaped);
    return path ? std::optional(URL(std::move(*path))) : std::nullopt;
}

std::optional<URL> URL::parse(std::string_view relative, const URL& base, bool baseIsFolder) {
    if (schemeLength(relative) != kNowhere) {
        return parse(relative);
    }
    if (relative.empty()) {
        return base;
    }
    if (relative.starts_with('/')) {
        const auto escaped = withoutHost(relative);
        auto path = escaped ? decodedPath(*escaped) : std::nullopt;
        return path ? std::optional(URL(std::move(*path))) : std::nullopt;
    }
    auto below = decodedPath("/" + std::string(relative));
    if (!below) {
        return std::nullopt;
    }
    const URL folder = baseIsFolder ? base : base.deletingLastPathComponent();
    // A decoded component begins with a slash only if it was escaped; it is kept like any other repeated
    // slash.
    std::string path = folder.path_ == "/" ? std::move(*below) : folder.path_ + *below;
    dropTrailingSlashes(path);
    return URL(std::move(path));
}

std::string URL::absoluteString() const {
    std::string text;
    text.reserve(2 * path_.size());  // room for a few escapes
    text = "file://";
    appendEscapedPath(text, path_);
    return text;
}

std::string URL::lastPathComponent() const {
    return path_ == "/" ? path_ : path_.substr(path_.rfind('/') + 1);
}

URL URL::appendingPathComponent(std::string_view component) const {
    const std::size_t first = component.find_first_not_of('/');
    if (first == kNowhere) {
        return *this;
    }
    component.remove_prefix(first);
    std::string path = path_;
    if (path != "/") {
        path += '/';
    }
    path += component;
    dropTrailingSlashes(path);
    return URL(std::move(path));
}

URL URL::appendingPathExtension(std::string_view extension) const {
    std::string path;
    path.reserve(path_.size() + 1 + extension.size());
    path = path_;
    path += '.';
    path += extension;
    dropTrailingSlashes(path);
    return URL(std::move(path));
}

URL URL::deletingLastPathComponent() const {
    std::string path = path_.substr(0, path_.rfind('/') + 1);
    dropTrailingSlashes(path);
    return URL(std::move(path));
}

}  // namespace Base
