#include "InstallCommon/ProductVersionUtil.h"

#include <algorithm>
#include <string>

namespace InstallCommon {

namespace {

struct Versions {
    std::string shortVersion;
    std::string build;

    [[nodiscard]] std::string text() const {
        return shortVersion == build ? shortVersion : shortVersion + "." + build;
    }
};

std::optional<Versions> versions(const Platform::Bundle& bundle) {
    const auto shortVersion =
        bundle.infoString(std::string(ProductVersionUtil::kCFBundleShortVersionStringKey));
    if (!shortVersion) {
        return std::nullopt;
    }
    const auto build = bundle.infoString(std::string(ProductVersionUtil::kCFBundleVersionKey));
    if (!build) {
        return std::nullopt;
    }
    return Versions{*shortVersion, *build};
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Removes the run of digits from the front of `text` and returns it without its leading zeros.
std::string_view takeNumber(std::string_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
    std::string_view number = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(number.size());
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

std::strong_ordering compareValues(std::string_view a, std::string_view b) {
    const std::strong_ordering byLength = a.size() <=> b.size();
    return byLength != std::strong_ordering::equal ? byLength : a.compare(b) <=> 0;
}

}  // namespace

std::optional<std::strong_ordering> ProductVersionUtil::compareVersions(
    const Platform::Bundle& installedBundle, const Platform::Bundle& newBundle) {
    const std::optional<Versions> installed = versions(installedBundle);
    if (!installed) {
        return std::nullopt;
    }
    const std::optional<Versions> offered = versions(newBundle);
    if (!offered) {
        return std::nullopt;
    }
    return compareNumerically(installed->text(), offered->text());
}

std::strong_ordering compareNumerically(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        std::strong_ordering order = std::strong_ordering::equal;
        if (isDigit(a.front()) && isDigit(b.front())) {
            order = compareValues(takeNumber(a), takeNumber(b));
        } else {
            // UTF-8 bytes sort like the code points that they encode.
            order = static_cast<unsigned char>(a.front()) <=> static_cast<unsigned char>(b.front());
            a.remove_prefix(1);
            b.remove_prefix(1);
        }
        if (order != std::strong_ordering::equal) {
            return order;
        }
    }
    return a.size() <=> b.size();
}

}  // namespace InstallCommon
