// Text, URLs, booleans and arrays of them.

#include "Base/Archive/Archiver.h"

namespace Base {
namespace {

constexpr CodedClass kArrayClass{"NSArray", nullptr, nullptr};
constexpr CodedClass kURLClass{"NSURL", nullptr, nullptr};

}  // namespace

void Archiver::encodeNil(std::string_view key) {
    add(key, nil_);
}

void Archiver::encodeString(std::string_view key, std::string_view value) {
    const Entry entry = newEntry();
    writer_.writeText(entry.content, value);
    add(key, entry.uid);
}

void Archiver::encodeURL(std::string_view key, const URL& value) {
    add(key, url(value));
}

void Archiver::encodeBool(std::string_view key, bool value) {
    add(key, inlineBool(value));
}

void Archiver::encodeObject(std::string_view key, const CodedObject& value) {
    add(key, object(value));
}

void Archiver::encodeURLs(std::string_view key, std::span<const URL> values) {
    const Entry entry = newEntry();
    std::vector<ObjectId> members;
    members.reserve(values.size());
    for (const URL& value : values) {
        members.push_back(url(value));
    }
    writeArray(entry, members);
    add(key, entry.uid);
}

void Archiver::encodeBools(std::string_view key, const std::vector<bool>& values) {
    const Entry entry = newEntry();
    std::vector<ObjectId> members;
    members.reserve(values.size());
    for (const bool value : values) {
        members.push_back(boolEntry(value));
    }
    writeArray(entry, members);
    add(key, entry.uid);
}

Archiver::ObjectId Archiver::url(const URL& value) {
    const Entry entry = newEntry();
    const Entry text = newEntry();
    writer_.writeText(text.content, value.absoluteString());
    writeSystemObject(entry.content, kURLClass, {{"NS.base", nil_}, {"NS.relative", text.uid}});
    return entry.uid;
}

void Archiver::writeArray(const Entry& entry, std::span<const ObjectId> members) {
    const ObjectId list = writer_.newObject();
    writer_.writeArray(list, members);
    writeSystemObject(entry.content, kArrayClass, {{"NS.objects", list}});
}

Archiver::ObjectId Archiver::inlineBool(bool value) {
    auto& known = bools_[value ? 1 : 0];
    if (!known) {
        known = writer_.newObject();
        writer_.writeBool(*known, value);
    }
    return *known;
}

Archiver::ObjectId Archiver::boolEntry(bool value) {
    auto& known = boolEntries_[value ? 1 : 0];
    if (!known) {
        known = addEntry(inlineBool(value));
    }
    return *known;
}

}  // namespace Base
