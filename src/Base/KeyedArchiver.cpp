#include "Base/KeyedArchiver.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "Base/BinaryPlistWriter.h"
#include "Base/FatalError.h"

namespace Base {
namespace {

using ObjectId = BinaryPlistWriter::ObjectId;

// Makes one archive. "$objects" is a list of entries; an entry is referred to by a UID, its index in that
// list. Entries are numbered as they are met, each object before what it holds and its class after that.
class Archiver final : public Coder {
  public:
    explicit Archiver(std::size_t referenceSize);

    /// The archive of `objects`; nothing when it takes wider references.
    std::optional<std::vector<std::uint8_t>> archive(std::span<const CodedObject* const> objects);

    void encodeNil(std::string_view key) override { add(key, nil_); }
    void encodeString(std::string_view key, std::string_view value) override;
    void encodeURL(std::string_view key, const URL& value) override { add(key, url(value)); }
    void encodeBool(std::string_view key, bool value) override { add(key, inlineBool(value)); }
    void encodeURLs(std::string_view key, std::span<const URL> values) override;
    void encodeBools(std::string_view key, const std::vector<bool>& values) override;
    void encodeObject(std::string_view key, const CodedObject& value) override { add(key, object(value)); }

    std::optional<std::string> decodeString(std::string_view /*key*/) override { wrongDirection(); }
    std::optional<URL> decodeURL(std::string_view /*key*/) override { wrongDirection(); }
    bool decodeBool(std::string_view /*key*/) override { wrongDirection(); }
    std::optional<std::vector<URL>> decodeURLs(std::string_view /*key*/) override { wrongDirection(); }
    std::optional<std::vector<bool>> decodeBools(std::string_view /*key*/) override { wrongDirection(); }
    std::unique_ptr<CodedObject> decodeObject(std::string_view /*key*/, const CodedClass& /*e*/) override {
        wrongDirection();
    }

  private:
    struct Class {
        const CodedClass* coded;
        ObjectId uid;
    };
    struct Key {
        std::string text;
        ObjectId id;
    };

    [[noreturn]] static void wrongDirection() { fatalError("A keyed archiver cannot decode."); }

    // A new entry: the id of the UID that refers to it, the id to write its content under.
    struct Entry {
        ObjectId uid;
        ObjectId content;
    };
    Entry newEntry();
    ObjectId addEntry(ObjectId content);

    ObjectId key(std::string_view text);
    void add(std::string_view keyText, ObjectId value) {
        keys_.push_back(key(keyText));
        values_.push_back(value);
    }
    void finishObject(const Entry& entry, std::size_t firstKey, ObjectId classUID);

    ObjectId object(const CodedObject& value);
    ObjectId url(const URL& value);
    // The NSArray of the members from `first` on, which are taken off `members_`.
    void finishArray(const Entry& entry, std::size_t first);
    ObjectId inlineBool(bool value);
    ObjectId boolEntry(bool value);
    ObjectId classUID(const CodedClass& coded);
    ObjectId writeClass(std::string_view name, const CodedClass* superclass);
    std::vector<std::uint8_t> finish(ObjectId root);

    BinaryPlistWriter writer_;
    ObjectId top_;
    std::vector<ObjectId> entries_;  // content by entry index
    ObjectId nil_;

    // Keys and values of the objects being written, innermost last; members of the arrays being written
    // likewise.
    std::vector<ObjectId> keys_;
    std::vector<ObjectId> values_;
    std::vector<ObjectId> members_;

    // Each key text is stored once. An archive has a dozen of them, found by a look at their likely place.
    std::array<std::uint32_t, 64> likelyKeys_{};  // indices into `allKeys_`
    std::vector<Key> allKeys_;
    std::vector<Class> classes_;

    // Ids of what is made when it is first needed; 0, the outermost dictionary's id, stands for "not yet".
    ObjectId arrayClass_ = 0;
    ObjectId urlClass_ = 0;
    std::array<ObjectId, 2> arrayKeys_{};
    std::array<ObjectId, 3> urlKeys_{};
    std::array<ObjectId, 2> bools_{};
    std::array<ObjectId, 2> boolEntries_{};
};

Archiver::Archiver(std::size_t referenceSize) : writer_(referenceSize), top_(writer_.newObject()) {
    constexpr std::size_t kUsualEntries = 1024;
    constexpr std::size_t kUsualMembers = 128;
    entries_.reserve(kUsualEntries);
    keys_.reserve(kUsualMembers);
    values_.reserve(kUsualMembers);
    members_.reserve(kUsualMembers);
    allKeys_.reserve(likelyKeys_.size());
    const Entry null = newEntry();
    nil_ = null.uid;
    writer_.writeText(null.content, "$null");
}

Archiver::Entry Archiver::newEntry() {
    const ObjectId content = writer_.newObject();
    return {addEntry(content), content};
}

ObjectId Archiver::addEntry(ObjectId content) {
    const ObjectId uid = writer_.newObject();
    writer_.writeUID(uid, static_cast<std::uint32_t>(entries_.size()));
    entries_.push_back(content);
    return uid;
}

ObjectId Archiver::key(std::string_view text) {
    const std::size_t mark = text.empty() ? 0
                                          : static_cast<unsigned char>(text.front()) * 5U +
                                                static_cast<unsigned char>(text.back()) + text.size();
    std::uint32_t& likely = likelyKeys_[mark % likelyKeys_.size()];
    if (likely < allKeys_.size() && allKeys_[likely].text == text) {
        return allKeys_[likely].id;
    }
    for (likely = 0; likely < allKeys_.size(); ++likely) {
        if (allKeys_[likely].text == text) {
            return allKeys_[likely].id;
        }
    }
    allKeys_.push_back({std::string(text), writer_.newObject()});
    writer_.writeText(allKeys_.back().id, text);
    return allKeys_.back().id;
}

void Archiver::encodeString(std::string_view key, std::string_view value) {
    const Entry entry = newEntry();
    writer_.writeText(entry.content, value);
    add(key, entry.uid);
}

void Archiver::encodeURLs(std::string_view key, std::span<const URL> values) {
    const Entry entry = newEntry();
    const std::size_t first = members_.size();
    for (const URL& value : values) {
        members_.push_back(url(value));
    }
    finishArray(entry, first);
    add(key, entry.uid);
}

void Archiver::encodeBools(std::string_view key, const std::vector<bool>& values) {
    const Entry entry = newEntry();
    const std::size_t first = members_.size();
    for (const bool value : values) {
        members_.push_back(boolEntry(value));
    }
    finishArray(entry, first);
    add(key, entry.uid);
}

ObjectId Archiver::object(const CodedObject& value) {
    const Entry entry = newEntry();
    const std::size_t firstKey = keys_.size();
    value.encode(*this);
    finishObject(entry, firstKey, classUID(value.codedClass()));
    return entry.uid;
}

void Archiver::finishObject(const Entry& entry, std::size_t firstKey, ObjectId classUID) {
    add("$class", classUID);
    writer_.writeDictionary(entry.content, std::span(keys_).subspan(firstKey),
                            std::span(values_).subspan(firstKey));
    keys_.resize(firstKey);
    values_.resize(firstKey);
}

ObjectId Archiver::url(const URL& value) {
    const Entry entry = newEntry();
    const Entry text = newEntry();
    writer_.writeFileURL(text.content, value.path());
    if (urlClass_ == 0) {
        urlKeys_ = {key("NS.base"), key("NS.relative"), key("$class")};
        urlClass_ = writeClass("NSURL", nullptr);
    }
    writer_.writeDictionary(entry.content, urlKeys_, std::array<ObjectId, 3>{nil_, text.uid, urlClass_});
    return entry.uid;
}

void Archiver::finishArray(const Entry& entry, std::size_t first) {
    const ObjectId list = writer_.newObject();
    writer_.writeArray(list, std::span(members_).subspan(first));
    members_.resize(first);
    if (arrayClass_ == 0) {
        arrayKeys_ = {key("NS.objects"), key("$class")};
        arrayClass_ = writeClass("NSArray", nullptr);
    }
    writer_.writeDictionary(entry.content, arrayKeys_, std::array<ObjectId, 2>{list, arrayClass_});
}

ObjectId Archiver::inlineBool(bool value) {
    ObjectId& known = bools_[value ? 1 : 0];
    if (known == 0) {
        known = writer_.newObject();
        writer_.writeBool(known, value);
    }
    return known;
}

ObjectId Archiver::boolEntry(bool value) {
    ObjectId& known = boolEntries_[value ? 1 : 0];
    if (known == 0) {
        known = addEntry(inlineBool(value));
    }
    return known;
}

ObjectId Archiver::classUID(const CodedClass& coded) {
    for (const Class& known : classes_) {
        if (known.coded == &coded) {
            return known.uid;
        }
    }
    const ObjectId uid = writeClass(coded.runtimeName, coded.superclass);
    classes_.push_back({&coded, uid});
    return uid;
}

ObjectId Archiver::writeClass(std::string_view name, const CodedClass* superclass) {
    const Entry entry = newEntry();
    const auto text = [this](std::string_view value) {
        const ObjectId id = writer_.newObject();
        writer_.writeText(id, value);
        return id;
    };
    const ObjectId nameId = text(name);
    std::vector<ObjectId> names{nameId};
    for (const CodedClass* each = superclass; each != nullptr; each = each->superclass) {
        names.push_back(text(each->runtimeName));
    }
    names.push_back(text("NSObject"));
    const ObjectId list = writer_.newObject();
    writer_.writeArray(list, names);
    const std::array<ObjectId, 2> keys{key("$classname"), key("$classes")};
    const std::array<ObjectId, 2> values{nameId, list};
    writer_.writeDictionary(entry.content, keys, values);
    return entry.uid;
}

std::vector<std::uint8_t> Archiver::finish(ObjectId root) {
    const std::array<ObjectId, 4> keys{key("$version"), key("$archiver"), key("$top"), key("$objects")};
    const std::array<ObjectId, 4> values{writer_.newObject(), writer_.newObject(), writer_.newObject(),
                                         writer_.newObject()};
    constexpr std::uint32_t kVersion = 100000;
    writer_.writeInteger(values[0], kVersion);
    writer_.writeText(values[1], "NSKeyedArchiver");
    const std::array<ObjectId, 1> rootKey{key("root")};
    const std::array<ObjectId, 1> rootValue{root};
    writer_.writeDictionary(values[2], rootKey, rootValue);
    writer_.writeArray(values[3], entries_);
    writer_.writeDictionary(top_, keys, values);
    return writer_.finish(top_);
}

std::optional<std::vector<std::uint8_t>> Archiver::archive(std::span<const CodedObject* const> objects) {
    const Entry root = newEntry();
    const std::size_t first = members_.size();
    for (const CodedObject* each : objects) {
        members_.push_back(object(*each));
    }
    finishArray(root, first);
    std::vector<std::uint8_t> bytes = finish(root.uid);
    return writer_.overflowed() ? std::nullopt : std::optional(std::move(bytes));
}

}  // namespace

std::vector<std::uint8_t> archivedArray(std::span<const CodedObject* const> objects) {
    constexpr std::size_t kUsualReferenceSize = 2;
    constexpr std::size_t kWideReferenceSize = 4;
    if (auto bytes = Archiver(kUsualReferenceSize).archive(objects)) {
        return std::move(*bytes);
    }
    return *Archiver(kWideReferenceSize).archive(objects);
}

}  // namespace Base
