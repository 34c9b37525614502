#include "Base/Archive/Archiver.h"

#include <algorithm>

namespace Base {

Archiver::Archiver(std::size_t referenceSize) : writer_(referenceSize), top_(writer_.newObject()) {
    const Entry null = newEntry();
    nil_ = null.uid;
    writer_.writeText(null.content, "$null");
}

Archiver::Entry Archiver::newEntry() {
    const ObjectId content = writer_.newObject();
    return {addEntry(content), content};
}

Archiver::ObjectId Archiver::addEntry(ObjectId content) {
    const ObjectId uid = writer_.newObject();
    writer_.writeUID(uid, static_cast<std::uint32_t>(entries_.size()));
    entries_.push_back(content);
    return uid;
}

Archiver::ObjectId Archiver::newText(std::string_view text) {
    const ObjectId id = writer_.newObject();
    writer_.writeText(id, text);
    return id;
}

Archiver::ObjectId Archiver::key(std::string_view text) {
    const auto known =
        std::find_if(keys_.begin(), keys_.end(), [text](const Key& each) { return each.text == text; });
    if (known != keys_.end()) {
        return known->id;
    }
    const ObjectId id = newText(text);
    keys_.push_back({std::string(text), id});
    return id;
}

Archiver::ObjectId Archiver::classUID(const CodedClass& coded) {
    const auto known = std::find_if(classes_.begin(), classes_.end(),
                                    [&coded](const Class& each) { return each.coded == &coded; });
    if (known != classes_.end()) {
        return known->uid;
    }
    const ObjectId uid = writeClass(coded);
    classes_.push_back({&coded, uid});
    return uid;
}

Archiver::ObjectId Archiver::writeClass(const CodedClass& coded) {
    const Entry entry = newEntry();
    const ObjectId name = newText(coded.runtimeName);
    std::vector<ObjectId> names{name};
    for (const CodedClass* each = coded.superclass; each != nullptr; each = each->superclass) {
        names.push_back(newText(each->runtimeName));
    }
    names.push_back(newText("NSObject"));
    const ObjectId list = writer_.newObject();
    writer_.writeArray(list, names);
    const ObjectId nameKey = key("$classname");
    const ObjectId listKey = key("$classes");
    writer_.writeDictionary(entry.content, std::array{Pair{nameKey, name}, Pair{listKey, list}});
    return entry.uid;
}

void Archiver::add(std::string_view keyText, ObjectId value) {
    pairs_.push_back({key(keyText), value});
}

Archiver::ObjectId Archiver::object(const CodedObject& value) {
    const Entry entry = newEntry();
    const std::size_t first = pairs_.size();
    value.encode(*this);
    add("$class", classUID(value.codedClass()));
    writePairs(entry.content, first);
    return entry.uid;
}

void Archiver::writePairs(ObjectId id, std::size_t first) {
    writer_.writeDictionary(id, std::span(pairs_).subspan(first));
    pairs_.resize(first);
}

void Archiver::writeSystemObject(ObjectId id, const CodedClass& coded,
                                 std::initializer_list<NamedValue> values) {
    const std::size_t first = pairs_.size();
    for (const NamedValue& each : values) {
        add(each.key, each.value);
    }
    // The key's text comes before the class, unlike in `object`.
    const ObjectId classKey = key("$class");
    pairs_.push_back({classKey, classUID(coded)});
    writePairs(id, first);
}

std::vector<std::uint8_t> Archiver::finish(ObjectId root) {
    constexpr std::uint32_t kVersion = 100000;
    std::array<Pair, 4> pairs{};
    constexpr std::array<std::string_view, 4> kKeys{"$version", "$archiver", "$top", "$objects"};
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        pairs[i].key = key(kKeys[i]);
    }
    for (Pair& each : pairs) {
        each.value = writer_.newObject();
    }
    writer_.writeInteger(pairs[0].value, kVersion);
    writer_.writeText(pairs[1].value, "NSKeyedArchiver");
    writer_.writeDictionary(pairs[2].value, std::array{Pair{key("root"), root}});
    writer_.writeArray(pairs[3].value, entries_);
    writer_.writeDictionary(top_, pairs);
    return writer_.finish(top_);
}

std::optional<std::vector<std::uint8_t>> Archiver::archive(std::span<const CodedObject* const> objects) {
    const Entry root = newEntry();
    std::vector<ObjectId> members;
    members.reserve(objects.size());
    for (const CodedObject* each : objects) {
        members.push_back(object(*each));
    }
    writeArray(root, members);
    std::vector<std::uint8_t> bytes = finish(root.uid);
    return writer_.overflowed() ? std::nullopt : std::optional(std::move(bytes));
}

}  // namespace Base
