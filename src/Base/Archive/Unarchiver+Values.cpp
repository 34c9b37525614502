// Text, URLs, booleans and arrays of them.

#include <algorithm>
#include <array>

#include "Base/Archive/Unarchiver.h"
#include "Base/UTF16.h"
#include "Base/UTF8.h"

namespace Base {
namespace {

using Entry = ArchiveObjects::Entry;
using Kind = ArchiveObjects::Kind;
using Object = BinaryPlistReader::Object;
using Type = BinaryPlistReader::Type;

// The longest chain of URLs through "NS.base"; a cycle ends here too.
constexpr std::size_t kMaxBases = 8;

}  // namespace

Object Unarchiver::textOf(const Entry& entry) const {
    if (entry.kind == Kind::string) {
        return plist_.object(entry.id);
    }
    return entry.kind == Kind::wrappedString ? wrappedText(entry) : kNoObject;
}

Object Unarchiver::wrappedText(const Entry& entry) const {
    const auto id = plist_.value(plist_.object(entry.id), "NS.string");
    if (!id) {
        return kNoObject;
    }
    const Entry* const inner = archive_.target(*id);
    if (inner != nullptr && inner->kind != Kind::string) {
        return kNoObject;
    }
    const Object text = plist_.object(inner != nullptr ? inner->id : *id);
    return BinaryPlistReader::isText(text) ? text : kNoObject;
}

// Returns nothing without a refusal for malformed text: the caller knows the place.
std::optional<std::string> Unarchiver::string(const Object& text) {
    if (text.type == Type::ascii) {
        const std::string_view characters = BinaryPlistReader::asciiText(text);
        if (!isASCII(characters) || !spendText(characters.size())) {
            return std::nullopt;
        }
        return std::string(characters);
    }
    std::u16string units;
    units.reserve(text.count);
    for (std::size_t i = 0; i < text.count; ++i) {
        units += static_cast<char16_t>(text.content[2 * i] << 8 | text.content[2 * i + 1]);
    }
    auto converted = utf8FromUTF16(units);
    if (!converted || !spendText(converted->size())) {
        return std::nullopt;
    }
    return converted;
}

std::optional<std::string> Unarchiver::decodeString(std::string_view key) {
    const Entry* const entry = findEntry(key);
    if (entry == nullptr || !spendObject()) {
        return std::nullopt;
    }
    const Object text = textOf(*entry);
    if (isNone(text)) {
        refuseKey(key, "is not a string");
        return std::nullopt;
    }
    auto value = string(text);
    if (!value) {
        refuseKey(key, "is not well-formed text");
    }
    return value;
}

Unarchiver::URLParts Unarchiver::urlParts(const Entry& entry) const {
    const Object object = plist_.object(entry.id);
    const auto relativeId = plist_.value(object, "NS.relative");
    const auto baseId = plist_.value(object, "NS.base");
    const Entry* const relative = relativeId ? archive_.target(*relativeId) : nullptr;
    const Entry* const base = baseId ? archive_.target(*baseId) : archive_.nil();
    if (relative == nullptr || base == nullptr || (base->kind != Kind::nil && base->kind != Kind::url)) {
        return {kNoObject, archive_.nil()};
    }
    return {textOf(*relative), base};
}

std::optional<URL> Unarchiver::urlOnBases(const URLParts& outermost) {
    std::array<Object, kMaxBases + 1> texts{outermost.relative};
    std::size_t count = 1;
    for (const Entry* base = outermost.base; base->kind != Kind::nil;) {
        const URLParts parts = urlParts(*base);
        if (isNone(parts.relative) || count == texts.size()) {
            return std::nullopt;
        }
        texts[count++] = parts.relative;
        base = parts.base;
    }
    std::optional<URL> result;
    bool isFolder = false;
    while (count-- > 0) {
        const auto text = string(texts[count]);
        if (!text) {
            return std::nullopt;
        }
        result = result ? URL::parse(*text, *result, isFolder) : URL::parse(*text);
        if (!result) {
            return std::nullopt;
        }
        isFolder = text->empty() ? isFolder : text->back() == '/';
    }
    return result;
}

// Returns nothing without a refusal for anything but a file URL: the caller knows the place.
std::optional<URL> Unarchiver::url(const Entry& entry) {
    if (entry.kind != Kind::url || !spendObject()) {
        return std::nullopt;
    }
    const URLParts parts = urlParts(entry);
    return isNone(parts.relative) ? std::nullopt : urlOnBases(parts);
}

std::optional<URL> Unarchiver::decodeURL(std::string_view key) {
    const Entry* const entry = findEntry(key);
    if (entry == nullptr) {
        return std::nullopt;
    }
    auto value = url(*entry);
    if (!value) {
        refuseKey(key, "is not a file URL");
    }
    return value;
}

std::optional<bool> Unarchiver::truth(const Object& value) {
    if (const auto boolean = BinaryPlistReader::boolean(value)) {
        return boolean;
    }
    const auto number = BinaryPlistReader::integer(value);
    return number && *number <= 1 ? std::optional(*number == 1) : std::nullopt;
}

bool Unarchiver::decodeBool(std::string_view key) {
    const auto id = find(key);
    if (!id) {
        return false;
    }
    const Object value = plist_.object(*id);
    if (const auto boolean = BinaryPlistReader::boolean(value)) {
        return *boolean;
    }
    if (value.type != Type::integer && value.type != Type::real) {
        refuseKey(key, "is not a boolean");
        return false;
    }
    return std::any_of(value.content, value.content + value.count,
                       [](std::uint8_t byte) { return byte != 0; });
}

Object Unarchiver::listUnder(std::string_view key) {
    const Entry* const entry = findEntry(key);
    return entry == nullptr || !spendObject() ? kNoObject : members(*entry, key);
}

std::optional<std::vector<URL>> Unarchiver::decodeURLs(std::string_view key) {
    const Object list = listUnder(key);
    if (isNone(list)) {
        return std::nullopt;
    }
    std::vector<URL> values;
    values.reserve(list.count);
    for (std::size_t i = 0; i < list.count; ++i) {
        const Entry* const member = archive_.target(plist_.reference(list, i));
        auto value = member != nullptr ? url(*member) : std::nullopt;
        if (!value) {
            refuseMember(key, i, "is not a file URL");
            return std::nullopt;
        }
        values.push_back(std::move(*value));
    }
    return values;
}

std::optional<std::vector<bool>> Unarchiver::decodeBools(std::string_view key) {
    const Object list = listUnder(key);
    if (isNone(list)) {
        return std::nullopt;
    }
    std::vector<bool> values;
    values.reserve(list.count);
    for (std::size_t i = 0; i < list.count; ++i) {
        const Entry* const member = archive_.target(plist_.reference(list, i));
        const bool isNumber =
            member != nullptr && (member->kind == Kind::boolean || member->kind == Kind::number);
        const auto value = isNumber ? truth(plist_.object(member->id)) : std::nullopt;
        if (!value) {
            refuseMember(key, i, "is not a boolean");
        }
        if (!value || !spendObject()) {
            return std::nullopt;
        }
        values.push_back(*value);
    }
    return values;
}

}  // namespace Base
