#include "Base/KeyedUnarchiver.h"

#include <array>
#include <utility>
#include <vector>

#include "Base/ArchiveObjects.h"
#include "Base/FatalError.h"
#include "Base/Text.h"

namespace Base {
namespace {

using Entry = ArchiveObjects::Entry;
using Kind = ArchiveObjects::Kind;
using Object = BinaryPlistReader::Object;
using ObjectId = BinaryPlistReader::ObjectId;
using Type = BinaryPlistReader::Type;

// How deep objects may hold objects. The product's records stop at four; a class that may hold itself stops
// here.
constexpr std::size_t kMaxDepth = 32;
// How many URLs may stand on one another through "NS.base"; a cycle ends here too.
constexpr std::size_t kMaxBases = 8;

// Builds the objects of one checked archive. The first fault is kept; from then on every operation returns
// nothing.
class Unarchiver final : public Coder {
  public:
    Unarchiver(const ArchiveObjects& archive, const AllowedClasses& allowed, const UnarchivingLimits& limits)
        : archive_(archive), plist_(archive.plist()), allowed_(allowed), limits_(limits) {}

    std::optional<CodedObjectList> list();
    [[nodiscard]] std::string takeRefusal() { return std::move(refusal_); }

    void encodeNil(std::string_view /*key*/) override { wrongDirection(); }
    void encodeString(std::string_view /*key*/, std::string_view /*value*/) override { wrongDirection(); }
    void encodeURL(std::string_view /*key*/, const URL& /*value*/) override { wrongDirection(); }
    void encodeBool(std::string_view /*key*/, bool /*value*/) override { wrongDirection(); }
    void encodeURLs(std::string_view /*key*/, std::span<const URL> /*values*/) override { wrongDirection(); }
    void encodeBools(std::string_view /*key*/, const std::vector<bool>& /*values*/) override {
        wrongDirection();
    }
    void encodeObject(std::string_view /*key*/, const CodedObject& /*value*/) override { wrongDirection(); }

    std::optional<std::string> decodeString(std::string_view key) override;
    std::optional<URL> decodeURL(std::string_view key) override;
    bool decodeBool(std::string_view key) override;
    std::optional<std::vector<URL>> decodeURLs(std::string_view key) override;
    std::optional<std::vector<bool>> decodeBools(std::string_view key) override;
    std::unique_ptr<CodedObject> decodeObject(std::string_view key, const CodedClass& expected) override;

  private:
    // The object whose keys are being read, within the one that holds it.
    struct Frame {
        const Frame* outer;
        std::string_view outerKey;  // under which the outer object holds this one
        const CodedClass* coded;
        Object dictionary;
        const DictionaryShape* shape;
        std::size_t likely = 0;
        std::string_view missingKey{};  // the first one that was asked for in vain
        bool missesKey = false;
    };

    [[noreturn]] static void wrongDirection() { fatalError("A keyed unarchiver cannot encode."); }

    [[nodiscard]] bool refused() const { return !refusal_.empty(); }
    // Refuses the archive at the place where decoding stands. `what` continues a sentence.
    void refuse(std::string_view what);
    void refuseKey(std::string_view key, std::string_view what);
    void refuseMember(std::string_view key, std::size_t index, std::string_view what);
    // Takes one object off the budget.
    bool spendObject();
    bool spendText(std::size_t bytes);

    // What the object at hand holds under `key`; nothing when it is missing.
    std::optional<ObjectId> find(std::string_view key);
    // The entry under `key`; null when the key is missing, nil, or (after a refusal) no reference.
    const Entry* findEntry(std::string_view key);
    void noteMissing(std::string_view key);
    // The references in an array entry; nothing (after a refusal) when the entry is none.
    std::optional<Object> members(const Entry& entry, std::string_view key);

    std::unique_ptr<CodedObject> object(const Entry& entry, const CodedClass& coded, const Frame* outer,
                                        std::string_view key);
    std::optional<Object> textOf(const Entry& entry) const;
    std::optional<std::string> string(const Object& text);
    std::optional<URL> url(const Entry& entry);
    // The relative text of a URL entry, and what it stands on.
    struct URLParts {
        Object relative;
        const Entry* base;  // the nil entry at the end of a chain
    };
    std::optional<URLParts> urlParts(const Entry& entry) const;
    std::optional<URL> urlOnBases(const URLParts& outermost);
    static std::optional<bool> truth(const Object& value);

    const ArchiveObjects& archive_;
    const BinaryPlistReader& plist_;
    const AllowedClasses& allowed_;
    const UnarchivingLimits& limits_;
    std::size_t objectsBuilt_ = 0;
    std::size_t textBuilt_ = 0;
    std::size_t depth_ = 0;
    std::size_t position_ = 0;  // in the list, counted from 1
    Frame* frame_ = nullptr;
    std::string refusal_;
};

// "command 3 (Outer): key "agent" (Inner): ", counted from 1 as people do.
std::string placeOf(std::size_t position) {
    return "command " + std::to_string(position);
}

void Unarchiver::refuse(std::string_view what) {
    if (refused()) {
        return;
    }
    std::string place;
    for (const Frame* each = frame_; each != nullptr; each = each->outer) {
        const std::string name = " (" + printable(each->coded->runtimeName) + "): ";
        place = (each->outer == nullptr ? placeOf(position_) : "key \"" + printable(each->outerKey) + '"') +
                name + place;
    }
    if (frame_ == nullptr && position_ > 0) {
        place = placeOf(position_) + ": ";
    }
    refusal_ = place + std::string(what);
}

void Unarchiver::refuseKey(std::string_view key, std::string_view what) {
    refuse("key \"" + printable(key) + "\" " + std::string(what));
}

void Unarchiver::refuseMember(std::string_view key, std::size_t index, std::string_view what) {
    refuse("key \"" + printable(key) + "\": item " + std::to_string(index + 1) + ' ' + std::string(what));
}

bool Unarchiver::spendObject() {
    if (objectsBuilt_ == limits_.objects) {
        refuse("the archive unfolds to more than " + std::to_string(limits_.objects) + " objects");
        return false;
    }
    ++objectsBuilt_;
    return true;
}

bool Unarchiver::spendText(std::size_t bytes) {
    if (bytes > limits_.textBytes - textBuilt_) {
        refuse("the archive unfolds to more than " + std::to_string(limits_.textBytes) + " bytes of text");
        return false;
    }
    textBuilt_ += bytes;
    return true;
}

std::optional<ObjectId> Unarchiver::find(std::string_view key) {
    if (frame_ == nullptr) {
        fatalError("A keyed unarchiver was asked for a key outside of an object.");
    }
    if (refused()) {
        return std::nullopt;
    }
    const std::size_t position = frame_->shape->find(key, frame_->likely);
    if (position == DictionaryShape::kNowhere) {
        noteMissing(key);
        return std::nullopt;
    }
    frame_->likely = position + 1;
    return plist_.reference(frame_->dictionary, frame_->dictionary.count + position);
}

void Unarchiver::noteMissing(std::string_view key) {
    if (!frame_->missesKey) {
        frame_->missesKey = true;
        frame_->missingKey = key;
    }
}

const Entry* Unarchiver::findEntry(std::string_view key) {
    const auto id = find(key);
    if (!id) {
        return nullptr;
    }
    const Entry* const entry = archive_.target(*id);
    if (entry == nullptr) {
        refuseKey(key, "refers to no object");
        return nullptr;
    }
    if (entry->kind == Kind::nil) {
        noteMissing(key);
        return nullptr;
    }
    return entry;
}

std::optional<Object> Unarchiver::textOf(const Entry& entry) const {
    const Object object = plist_.object(entry.id);
    if (entry.kind == Kind::string) {
        return object;
    }
    if (entry.kind != Kind::wrappedString) {
        return std::nullopt;
    }
    std::optional<DictionaryShape> scratch;
    const std::size_t position = archive_.shape(entry, object, scratch).find("NS.string");
    if (position == DictionaryShape::kNowhere) {
        return std::nullopt;
    }
    const ObjectId id = plist_.reference(object, object.count + position);
    const Entry* const inner = archive_.target(id);
    if (inner != nullptr && inner->kind != Kind::string) {
        return std::nullopt;
    }
    const Object text = plist_.object(inner != nullptr ? inner->id : id);
    return BinaryPlistReader::isText(text) ? std::optional(text) : std::nullopt;
}

// Nothing without a refusal when the text is not well formed: the caller knows where it stands.
std::optional<std::string> Unarchiver::string(const Object& text) {
    if (text.type == Type::ascii) {
        const std::string_view characters = BinaryPlistReader::asciiText(text);
        if (!isASCII(characters) || !spendText(characters.size())) {
            return std::nullopt;
        }
        return std::string(characters);
    }
    auto converted = utf8FromBigEndianUTF16({text.content, 2 * text.count});
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
    const auto text = textOf(*entry);
    if (!text) {
        refuseKey(key, "is not a string");
        return std::nullopt;
    }
    auto value = string(*text);
    if (!value) {
        refuseKey(key, "is not well-formed text");
    }
    return value;
}

std::optional<Unarchiver::URLParts> Unarchiver::urlParts(const Entry& entry) const {
    const Object object = plist_.object(entry.id);
    std::optional<DictionaryShape> scratch;
    const DictionaryShape& shape = archive_.shape(entry, object, scratch);
    const auto valueOf = [&](std::size_t position) {
        return plist_.reference(object, object.count + position);
    };
    const std::size_t relative = shape.relativePosition();
    const std::size_t base = shape.basePosition();
    const Entry* const text = relative != DictionaryShape::kNowhere ? archive_.target(valueOf(relative)) : nullptr;
    const auto relativeText = text != nullptr ? textOf(*text) : std::nullopt;
    const Entry* const baseEntry =
        base != DictionaryShape::kNowhere ? archive_.target(valueOf(base)) : archive_.nil();
    if (!relativeText || baseEntry == nullptr ||
        (baseEntry->kind != Kind::nil && baseEntry->kind != Kind::url)) {
        return std::nullopt;
    }
    return URLParts{*relativeText, baseEntry};
}

std::optional<URL> Unarchiver::urlOnBases(const URLParts& outermost) {
    std::array<Object, kMaxBases + 1> texts{outermost.relative};
    std::size_t count = 1;
    for (const Entry* base = outermost.base; base->kind != Kind::nil;) {
        const auto parts = urlParts(*base);
        if (!parts || count == texts.size()) {
            return std::nullopt;
        }
        texts[count++] = parts->relative;
        base = parts->base;
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

// Nothing without a refusal when the URL is none: the caller knows where it stands.
std::optional<URL> Unarchiver::url(const Entry& entry) {
    if (entry.kind != Kind::url || !spendObject()) {
        return std::nullopt;
    }
    const auto parts = urlParts(entry);
    if (!parts) {
        return std::nullopt;
    }
    const std::string_view text = BinaryPlistReader::asciiText(parts->relative);
    if (parts->base->kind != Kind::nil || text.empty()) {
        return urlOnBases(*parts);
    }
    if (!isASCII(text) || !spendText(text.size())) {
        return std::nullopt;
    }
    return URL::parse(text);
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
    if (archive_.target(*id) == archive_.nil()) {
        noteMissing(key);
        return false;
    }
    const auto result = truth(value);
    if (!result) {
        refuseKey(key, "is not a boolean");
    }
    return result.value_or(false);
}

std::optional<Object> Unarchiver::members(const Entry& entry, std::string_view key) {
    if (entry.kind == Kind::array) {
        const Object object = plist_.object(entry.id);
        std::optional<DictionaryShape> scratch;
        const std::size_t position = archive_.shape(entry, object, scratch).find("NS.objects");
        if (position != DictionaryShape::kNowhere) {
            const Object list = plist_.object(plist_.reference(object, object.count + position));
            if (list.type == Type::array) {
                return list;
            }
        }
    }
    refuseKey(key, "is not an array");
    return std::nullopt;
}

std::optional<std::vector<URL>> Unarchiver::decodeURLs(std::string_view key) {
    const Entry* const entry = findEntry(key);
    const auto list = entry != nullptr && spendObject() ? members(*entry, key) : std::nullopt;
    if (!list) {
        return std::nullopt;
    }
    std::vector<URL> values;
    values.reserve(list->count);
    for (std::size_t i = 0; i < list->count; ++i) {
        const Entry* const member = archive_.target(plist_.reference(*list, i));
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
    const Entry* const entry = findEntry(key);
    const auto list = entry != nullptr && spendObject() ? members(*entry, key) : std::nullopt;
    if (!list) {
        return std::nullopt;
    }
    std::vector<bool> values;
    values.reserve(list->count);
    for (std::size_t i = 0; i < list->count; ++i) {
        const Entry* const member = archive_.target(plist_.reference(*list, i));
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

std::unique_ptr<CodedObject> Unarchiver::decodeObject(std::string_view key, const CodedClass& expected) {
    const Entry* const entry = findEntry(key);
    if (entry == nullptr) {
        return nullptr;
    }
    const CodedClass* const coded =
        entry->kind == Kind::object ? allowed_.objects[entry->classIndex] : nullptr;
    if (coded == nullptr || !coded->isKindOf(expected)) {
        refuseKey(key, "is not an object of the class " + printable(expected.runtimeName));
        return nullptr;
    }
    return object(*entry, *coded, frame_, key);
}

std::unique_ptr<CodedObject> Unarchiver::object(const Entry& entry, const CodedClass& coded,
                                                const Frame* outer, std::string_view key) {
    if (!spendObject()) {
        return nullptr;
    }
    if (depth_ == kMaxDepth) {
        refuseKey(key, "is nested too deeply");
        return nullptr;
    }
    const Object dictionary = plist_.object(entry.id);
    std::optional<DictionaryShape> scratch;
    Frame frame{outer, key, &coded, dictionary, &archive_.shape(entry, dictionary, scratch)};
    Frame* const enclosing = std::exchange(frame_, &frame);
    ++depth_;
    auto built = coded.decode != nullptr ? coded.decode(*this) : nullptr;
    if (built == nullptr) {
        if (frame.missesKey) {
            refuseKey(frame.missingKey, "is missing");
        }
        refuse("it cannot be made from what it holds");
    }
    --depth_;
    frame_ = enclosing;
    return refused() ? nullptr : std::move(built);
}

std::optional<CodedObjectList> Unarchiver::list() {
    const auto elements = members(archive_.root(), "root");
    if (!elements) {
        return std::nullopt;
    }
    CodedObjectList objects;
    objects.reserve(elements->count);
    for (std::size_t i = 0; i < elements->count; ++i) {
        position_ = i + 1;
        const Entry* const entry = archive_.target(plist_.reference(*elements, i));
        if (entry == nullptr || entry->kind != Kind::object) {
            refuse("it is not an object of a coded class");
            return std::nullopt;
        }
        auto element = object(*entry, *allowed_.objects[entry->classIndex], nullptr, {});
        if (element == nullptr) {
            return std::nullopt;
        }
        objects.push_back(std::move(element));
    }
    return objects;
}

}  // namespace

std::optional<CodedObjectList> unarchivedArray(std::span<const std::uint8_t> archive,
                                               const AllowedClasses& allowed, std::string& refusal,
                                               const UnarchivingLimits& limits) {
    const auto objects = ArchiveObjects::open(archive, allowed, limits, refusal);
    if (!objects) {
        return std::nullopt;
    }
    Unarchiver unarchiver(*objects, allowed, limits);
    auto list = unarchiver.list();
    if (!list) {
        refusal = unarchiver.takeRefusal();
    }
    return list;
}

}  // namespace Base
