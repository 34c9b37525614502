#import "Platform/Darwin/Coding/SystemCoder.h"

#include <cstddef>

#include "Base/Excerpt.h"
#import "Platform/Darwin/Coding/Carrier.h"
#import "Platform/Darwin/Coding/CodedValues.h"
#import "Platform/Darwin/Coding/GuardedCoding.h"
#include "Platform/Darwin/FoundationBridge.h"

namespace Platform::Darwin {

namespace {

/// A fault in a length that a log takes. It may quote the archive; it may also be the words of a nested
/// object's carrier.
std::string briefly(NSString* fault) {
    constexpr std::size_t kLongest = 400;
    return Base::excerpt(text(fault), kLongest);
}

}  // namespace

// Encoding.

void SystemCoder::encode(std::string_view key, id value) {
    [coder_ encodeObject:value forKey:foundationString(key)];
}

void SystemCoder::encodeNil(std::string_view key) {
    encode(key, nil);
}

void SystemCoder::encodeString(std::string_view key, std::string_view value) {
    encode(key, foundationString(value));
}

void SystemCoder::encodeURL(std::string_view key, const Base::URL& value) {
    encode(key, codedURL(value));
}

void SystemCoder::encodeBool(std::string_view key, bool value) {
    [coder_ encodeBool:value ? YES : NO forKey:foundationString(key)];
}

void SystemCoder::encodeURLs(std::string_view key, std::span<const Base::URL> values) {
    NSMutableArray* const list = [NSMutableArray arrayWithCapacity:values.size()];
    for (const Base::URL& value : values) {
        [list addObject:codedURL(value)];
    }
    // Archived as an NSArray proper.
    encode(key, [NSArray arrayWithArray:list]);
}

void SystemCoder::encodeBools(std::string_view key, const std::vector<bool>& values) {
    NSMutableArray* const list = [NSMutableArray arrayWithCapacity:values.size()];
    for (const bool value : values) {
        [list addObject:[NSNumber numberWithBool:value ? YES : NO]];
    }
    encode(key, [NSArray arrayWithArray:list]);
}

void SystemCoder::encodeObject(std::string_view key, const Base::CodedObject& value) {
    const Loan loan(value);
    encode(key, loan.carrier());
}

// Decoding.

void SystemCoder::refuse(std::string_view key, std::string_view what) {
    if (fault_.empty()) {
        fault_ = "key \"" + Base::excerpt(key) + "\" " + std::string(what);
    }
}

id SystemCoder::decode(std::string_view key, NSSet* classes) {
    if (!fault_.empty()) {
        return nil;
    }
    NSString* fault = nil;
    const id value = PlatformDarwinDecodeObject(coder_, classes, foundationString(key), &fault);
    if (fault != nil) {
        refuse(key, "cannot be decoded: " + briefly(fault));
        return nil;
    }
    if (value == nil) {
        missingKey_ = key;
    }
    return value;
}

NSArray* SystemCoder::decodeArray(std::string_view key, Class member) {
    const id value = decode(key, [NSSet setWithObjects:[NSArray class], member, nil]);
    if (value != nil && ![value isKindOfClass:[NSArray class]]) {
        refuse(key, "is not an array");
        return nil;
    }
    return value;
}

std::optional<std::string> SystemCoder::decodeString(std::string_view key) {
    const id value = decode(key, [NSSet setWithObject:[NSString class]]);
    std::optional<std::string> string = stringValue(value);
    if (value != nil && !string) {
        refuse(key, "is not a string of well-formed text");
    }
    return string;
}

std::optional<Base::URL> SystemCoder::decodeURL(std::string_view key) {
    const id value = decode(key, [NSSet setWithObject:[NSURL class]]);
    std::optional<Base::URL> url = urlValue(value);
    if (value != nil && !url) {
        refuse(key, "is not a file URL");
    }
    return url;
}

bool SystemCoder::decodeBool(std::string_view key) {
    if (!fault_.empty()) {
        return false;
    }
    NSString* fault = nil;
    const bool value = PlatformDarwinDecodeBool(coder_, foundationString(key), &fault) != NO;
    if (fault != nil) {
        refuse(key, "is not a boolean: " + briefly(fault));
        return false;
    }
    return value;
}

std::optional<std::vector<Base::URL>> SystemCoder::decodeURLs(std::string_view key) {
    NSArray* const list = decodeArray(key, [NSURL class]);
    if (list == nil) {
        return std::nullopt;
    }
    std::vector<Base::URL> values;
    const NSUInteger count = [list count];
    values.reserve(count);
    for (NSUInteger i = 0; i < count; ++i) {
        std::optional<Base::URL> value = urlValue([list objectAtIndex:i]);
        if (!value) {
            refuse(key, "has an item " + std::to_string(i + 1) + " that is not a file URL");
            return std::nullopt;
        }
        values.push_back(std::move(*value));
    }
    return values;
}

std::optional<std::vector<bool>> SystemCoder::decodeBools(std::string_view key) {
    NSArray* const list = decodeArray(key, [NSNumber class]);
    if (list == nil) {
        return std::nullopt;
    }
    std::vector<bool> values;
    const NSUInteger count = [list count];
    values.reserve(count);
    for (NSUInteger i = 0; i < count; ++i) {
        const std::optional<bool> value = boolValue([list objectAtIndex:i]);
        if (!value) {
            refuse(key, "has an item " + std::to_string(i + 1) + " that is not a boolean");
            return std::nullopt;
        }
        values.push_back(*value);
    }
    return values;
}

std::unique_ptr<Base::CodedObject> SystemCoder::decodeObject(std::string_view key,
                                                             const Base::CodedClass& expected) {
    const id value = decode(key, [NSSet setWithObject:carrierClass(expected)]);
    if (value == nil) {
        return nullptr;
    }
    const Base::CodedObject* const carried = carriedObject(value);
    if (carried == nullptr || !carried->codedClass().isKindOf(expected)) {
        refuse(key, "is not an object of the class " + Base::excerpt(expected.runtimeName));
        return nullptr;
    }
    std::string refusal;
    std::unique_ptr<Base::CodedObject> object = copyOf(*carried, refusal);
    if (object == nullptr) {
        refuse(key, "cannot be used: " + refusal);
    }
    return object;
}

}  // namespace Platform::Darwin
