#include "Base/Archive/Unarchiver.h"

#include <utility>

#include "Base/Excerpt.h"

namespace Base {
namespace {

using Entry = ArchiveObjects::Entry;
using Kind = ArchiveObjects::Kind;
using Object = BinaryPlistReader::Object;
using ObjectId = BinaryPlistReader::ObjectId;
using Type = BinaryPlistReader::Type;

// How deep objects may nest. The product's records stop at four; a class that may contain itself stops here.
constexpr std::size_t kMaxDepth = 32;
// How many of the objects around a fault a refusal names, besides the outermost one.
constexpr std::size_t kShownFrames = 3;

std::string placeOf(std::size_t position) {
    return "command " + std::to_string(position);
}

}  // namespace

void Unarchiver::refuse(std::string_view what) {
    if (refused()) {
        return;
    }
    std::string place;
    std::size_t inner = 0;
    for (const Frame* each = frame_; each != nullptr; each = each->outer, ++inner) {
        const bool isOutermost = each->outer == nullptr;
        if (inner < kShownFrames || isOutermost) {
            place.insert(0, " (" + excerpt(each->coded->runtimeName) + "): ");
            place.insert(0, isOutermost ? placeOf(position_) : "key \"" + excerpt(each->outerKey) + '"');
        } else if (inner == kShownFrames) {
            place.insert(0, "...: ");
        }
    }
    if (frame_ == nullptr && position_ > 0) {
        place = placeOf(position_) + ": ";
    }
    refusal_ = place + std::string(what);
}

void Unarchiver::refuseKey(std::string_view key, std::string_view what) {
    refuse("key \"" + excerpt(key) + "\" " + std::string(what));
}

void Unarchiver::refuseMember(std::string_view key, std::size_t index, std::string_view what) {
    refuse("key \"" + excerpt(key) + "\": item " + std::to_string(index + 1) + ' ' + std::string(what));
}

bool Unarchiver::spendObject() {
    if (!canAfford(1)) {
        return false;
    }
    ++objectsBuilt_;
    return true;
}

bool Unarchiver::canAfford(std::size_t objects) {
    if (objects > limits_.objects - objectsBuilt_) {
        refuse("the archive unfolds to more than " + std::to_string(limits_.objects) + " objects");
        return false;
    }
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
    const auto id = plist_.value(frame_->dictionary, key);
    if (!id || archive_.target(*id) == archive_.nil()) {
        // A class stops at the first required key that is missing, so the last one missed is the one to name.
        frame_->missingKey = key;
        return std::nullopt;
    }
    return id;
}

const Entry* Unarchiver::findEntry(std::string_view key) {
    const auto id = find(key);
    if (!id) {
        return nullptr;
    }
    const Entry* const entry = archive_.target(*id);
    if (entry == nullptr) {
        refuseKey(key, "refers to no object");
    }
    return entry;
}

std::unique_ptr<CodedObject> Unarchiver::decodeObject(std::string_view key, const CodedClass& expected) {
    const Entry* const entry = findEntry(key);
    if (entry == nullptr) {
        return nullptr;
    }
    const CodedClass* const coded =
        entry->kind == Kind::object ? allowed_.objects[entry->classIndex] : nullptr;
    if (coded == nullptr || !coded->isKindOf(expected)) {
        refuseKey(key, "is not an object of the class " + excerpt(expected.runtimeName));
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
    Frame frame{outer, key, &coded, plist_.object(entry.id)};
    Frame* const enclosing = std::exchange(frame_, &frame);
    ++depth_;
    auto built = coded.decode != nullptr ? coded.decode(*this) : nullptr;
    if (built == nullptr) {
        if (frame.missingKey) {
            refuseKey(*frame.missingKey, "is missing");
        }
        refuse("its keys do not make an object");
    }
    --depth_;
    frame_ = enclosing;
    return refused() ? nullptr : std::move(built);
}

Object Unarchiver::members(const Entry& entry, std::string_view key) {
    const auto id =
        entry.kind == Kind::array ? plist_.value(plist_.object(entry.id), "NS.objects") : std::nullopt;
    const Object list = id ? plist_.object(*id) : kNoObject;
    if (list.type != Type::array) {
        refuseKey(key, "is not an array");
        return kNoObject;
    }
    return canAfford(list.count) ? list : kNoObject;
}

std::optional<CodedObjectList> Unarchiver::list() {
    const Object elements = members(archive_.root(), "root");
    if (isNone(elements)) {
        return std::nullopt;
    }
    CodedObjectList objects;
    objects.reserve(elements.count);
    for (std::size_t i = 0; i < elements.count; ++i) {
        position_ = i + 1;
        const Entry* const entry = archive_.target(plist_.reference(elements, i));
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

}  // namespace Base
