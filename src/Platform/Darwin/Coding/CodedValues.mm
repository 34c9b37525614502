#import "Platform/Darwin/Coding/CodedValues.h"

#include <cstddef>
#include <vector>

#include "Base/UTF16.h"
#include "Platform/Darwin/FoundationBridge.h"

namespace Platform::Darwin {

namespace {

// How many URLs may stand on one another; as many as in the program's own archives.
constexpr std::size_t kMaxBases = 8;

/// The text of `url`, then that of the URL that it stands on, and so on; nothing when they are too many or
/// one has no text.
std::optional<std::vector<std::string>> texts(NSURL* url) {
    std::vector<std::string> result;
    for (NSURL* each = url; each != nil; each = [each baseURL]) {
        std::optional<std::string> text = stringValue([each relativeString]);
        if (!text || result.size() == kMaxBases + 1) {
            return std::nullopt;
        }
        result.push_back(std::move(*text));
    }
    return result;
}

bool isWholeNumber(NSNumber* number) {
    const char type = *[number objCType];
    return type != *@encode(float) && type != *@encode(double);
}

}  // namespace

std::optional<std::string> stringValue(id value) {
    if (![value isKindOfClass:[NSString class]]) {
        return std::nullopt;
    }
    return Base::utf8FromUTF16(Foundation::units(value));
}

std::optional<Base::URL> urlValue(id value) {
    if (![value isKindOfClass:[NSURL class]]) {
        return std::nullopt;
    }
    // Not absoluteURL or path: they resolve what has to be refused.
    const std::optional<std::vector<std::string>> chain = texts(value);
    if (!chain) {
        return std::nullopt;
    }
    std::optional<Base::URL> result;
    bool isFolder = false;
    for (auto text = chain->rbegin(); text != chain->rend(); ++text) {
        result = result ? Base::URL::parse(*text, *result, isFolder) : Base::URL::parse(*text);
        if (!result) {
            return std::nullopt;
        }
        isFolder = text->empty() ? isFolder : text->back() == '/';
    }
    return result;
}

std::optional<bool> boolValue(id value) {
    if (![value isKindOfClass:[NSNumber class]] || !isWholeNumber(value)) {
        return std::nullopt;
    }
    const long long number = [value longLongValue];
    return number == 0 || number == 1 ? std::optional(number == 1) : std::nullopt;
}

NSURL* codedURL(const Base::URL& url) {
    return [NSURL URLWithString:foundationString(url.absoluteString())];
}

}  // namespace Platform::Darwin
