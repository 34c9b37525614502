#include "Base/ArchiveObjects.h"

#include <algorithm>

#include "Base/Text.h"

namespace Base {
namespace {

using Object = BinaryPlistReader::Object;
using ObjectId = BinaryPlistReader::ObjectId;
using Type = BinaryPlistReader::Type;

std::string entryName(std::size_t index) {
    return "object " + std::to_string(index);
}

// The class whose permission covers `name`: a mutable form is as good as the class itself.
std::string_view immutableForm(std::string_view name) {
    if (name == "NSMutableArray") {
        return "NSArray";
    }
    if (name == "NSMutableString") {
        return "NSString";
    }
    return name;
}

// The class of a value that archives hold without an object around it; empty for what they never hold so.
std::string_view plainValueClass(const Object& object) {
    switch (object.type) {
        case Type::ascii:
        case Type::utf16:
            return "NSString";
        case Type::integer:
        case Type::real:
            return "NSNumber";
        case Type::simple:
            return BinaryPlistReader::boolean(object) ? "NSNumber" : "";
        case Type::data:
            return "NSData";
        case Type::date:
            return "NSDate";
        default:
            return "";
    }
}

}  // namespace

std::optional<ArchiveObjects> ArchiveObjects::open(std::span<const std::uint8_t> archive,
                                                   const AllowedClasses& allowed,
                                                   const UnarchivingLimits& limits, std::string& refusal) {
    if (archive.size() > limits.archiveBytes) {
        refusal = "the archive takes more than " + std::to_string(limits.archiveBytes) + " bytes";
        return std::nullopt;
    }
    std::string fault;
    auto plist = BinaryPlistReader::open(archive, fault);
    if (!plist) {
        refusal = "not a readable binary property list: " + fault;
        return std::nullopt;
    }
    ArchiveObjects objects(*plist, allowed);
    if (!objects.readFrame(limits, refusal) || !objects.readEntries(refusal)) {
        return std::nullopt;
    }
    return objects;
}

std::optional<Object> ArchiveObjects::value(const Object& dictionary, const DictionaryShape& shape,
                                            std::string_view key) const {
    const std::size_t position = shape.find(key);
    if (position == DictionaryShape::kNowhere) {
        return std::nullopt;
    }
    return plist_.object(plist_.reference(dictionary, dictionary.count + position));
}

bool ArchiveObjects::readFrame(const UnarchivingLimits& limits, std::string& refusal) {
    const Object frame = plist_.object(plist_.top());
    if (!DictionaryShape::has(frame)) {
        refusal = "not a keyed archive: its outermost object is no dictionary of a few keys";
        return false;
    }
    const DictionaryShape shape(plist_, frame);
    const auto archiver = value(frame, shape, "$archiver");
    if (!archiver || BinaryPlistReader::asciiText(*archiver) != "NSKeyedArchiver") {
        refusal = "not a keyed archive: \"$archiver\" is not NSKeyedArchiver";
        return false;
    }
    constexpr std::uint64_t kVersion = 100000;
    const auto version = value(frame, shape, "$version");
    if (!version || BinaryPlistReader::integer(*version) != kVersion) {
        refusal = "not a keyed archive: \"$version\" is not 100000";
        return false;
    }
    const auto list = value(frame, shape, "$objects");
    if (!list || list->type != Type::array || list->count == 0) {
        refusal = "not a keyed archive: \"$objects\" is no list of objects";
        return false;
    }
    if (list->count > limits.objects) {
        refusal = "the archive holds more than " + std::to_string(limits.objects) + " objects";
        return false;
    }
    list_ = *list;
    return readTop(value(frame, shape, "$top"), refusal);
}

bool ArchiveObjects::readTop(const std::optional<Object>& top, std::string& refusal) {
    std::optional<std::uint64_t> root;
    if (top && DictionaryShape::has(*top)) {
        const std::size_t position = DictionaryShape(plist_, *top).find("root");
        if (position != DictionaryShape::kNowhere) {
            root = plist_.uid(plist_.reference(*top, top->count + position));
        }
    }
    if (!root || *root >= list_.count) {
        refusal = "not a keyed archive: \"$top\" refers to no object under \"root\"";
        return false;
    }
    root_ = static_cast<std::size_t>(*root);
    return true;
}

bool ArchiveObjects::readEntries(std::string& refusal) {
    const ObjectId null = plist_.reference(list_, 0);
    if (BinaryPlistReader::asciiText(plist_.object(null)) != "$null") {
        refusal = "not a keyed archive: \"$objects\" does not begin with $null";
        return false;
    }
    entries_.resize(list_.count);
    entries_[0] = {null, Kind::nil, DictionaryShapes::kNone, 0};
    for (std::size_t index = 1; index < entries_.size(); ++index) {
        if (entries_[index].kind == Kind::unknown && !readEntry(index, refusal)) {
            return false;
        }
    }
    return true;
}

bool ArchiveObjects::readEntry(std::size_t index, std::string& refusal) {
    const ObjectId id = plist_.reference(list_, index);
    const Object object = plist_.object(id);
    if (object.type == Type::dictionary) {
        return readDictionary(index, object, refusal);
    }
    entries_[index] = {id, Kind::string, DictionaryShapes::kNone, 0};
    return (allowsStrings_ && BinaryPlistReader::isText(object)) ||
           readPlainValue(entries_[index], object, index, refusal);
}

bool ArchiveObjects::readPlainValue(Entry& entry, const Object& object, std::size_t index,
                                    std::string& refusal) const {
    const std::string_view name = plainValueClass(object);
    if (name.empty()) {
        refusal = entryName(index) + " has no class";
        return false;
    }
    if (!allowsValue(name)) {
        refusal = entryName(index) + " is of the class " + std::string(name) + ", which is not allowed";
        return false;
    }
    entry.kind = object.type == Type::simple ? Kind::boolean
                 : name == "NSNumber"        ? Kind::number
                                             : Kind::otherValue;
    return true;
}

bool ArchiveObjects::readDictionary(std::size_t index, const Object& dictionary, std::string& refusal) {
    if (!DictionaryShape::has(dictionary)) {
        refusal = entryName(index) + " has more than " + std::to_string(DictionaryShape::kMaxKeys) + " keys";
        return false;
    }
    const std::uint8_t shapeIndex = shapes_.keep(plist_, dictionary);
    std::unique_ptr<DictionaryShape> scratch;
    const std::size_t position = shapes_.shape(plist_, dictionary, shapeIndex, scratch).classPosition();
    if (position == DictionaryShape::kNowhere) {
        return classDescribed(index, refusal) != nullptr;
    }
    const auto classIndex = plist_.uid(plist_.reference(dictionary, dictionary.count + position));
    if (!classIndex || *classIndex == 0 || *classIndex >= entries_.size()) {
        refusal = entryName(index) + " refers to no class";
        return false;
    }
    const Class* const described = classDescribed(static_cast<std::size_t>(*classIndex), refusal);
    if (described == nullptr) {
        return false;
    }
    entries_[index] = {plist_.reference(list_, index), described->kind, shapeIndex, described->classIndex};
    return true;
}

const ArchiveObjects::Class* ArchiveObjects::classDescribed(std::size_t index, std::string& refusal) {
    Entry& entry = entries_[index];
    if (entry.kind != Kind::classDescription) {
        Class described{};
        if (!readClass(index, described, refusal)) {
            return nullptr;
        }
        // An archive that describes its classes again and again is honest at most in small numbers.
        constexpr std::size_t kMaxClasses = 1024;
        if (classes_.size() == kMaxClasses) {
            refusal = "the archive describes more than " + std::to_string(kMaxClasses) + " classes";
            return nullptr;
        }
        entry = {plist_.reference(list_, index), Kind::classDescription, DictionaryShapes::kNone,
                 static_cast<std::uint16_t>(classes_.size())};
        classes_.push_back(described);
    }
    return &classes_[entry.classIndex];
}

bool ArchiveObjects::readClass(std::size_t index, Class& described, std::string& refusal) {
    const Object dictionary = plist_.object(plist_.reference(list_, index));
    if (entries_[index].kind != Kind::unknown || !DictionaryShape::has(dictionary)) {
        refusal = entryName(index) + " is no class";
        return false;
    }
    std::unique_ptr<DictionaryShape> scratch;
    const DictionaryShape& shape =
        shapes_.shape(plist_, dictionary, shapes_.keep(plist_, dictionary), scratch);
    const auto nameValue = value(dictionary, shape, "$classname");
    const std::string_view name = nameValue ? BinaryPlistReader::asciiText(*nameValue) : std::string_view();
    if (name.empty() || shape.classPosition() != DictionaryShape::kNowhere) {
        refusal = entryName(index) + (nameValue ? " is no class" : " has no class");
        return false;
    }
    const auto allowed = allowedClass(name);
    if (!allowed) {
        refusal = entryName(index) + " names the class " + excerpt(name) + ", which is not allowed";
        return false;
    }
    const auto list = value(dictionary, shape, "$classes");
    if (list && !classesAgree(*list, name)) {
        refusal = entryName(index) + " does not describe the class " + excerpt(name) + " as it should";
        return false;
    }
    described = *allowed;
    return true;
}

bool ArchiveObjects::classesAgree(const Object& list, std::string_view name) const {
    constexpr std::size_t kMaxSuperclasses = 64;
    if (list.type != Type::array || list.count == 0 || list.count > kMaxSuperclasses) {
        return false;
    }
    for (std::size_t i = 0; i < list.count; ++i) {
        const Object each = plist_.object(plist_.reference(list, i));
        if (!BinaryPlistReader::isText(each) || (i == 0 && BinaryPlistReader::asciiText(each) != name)) {
            return false;
        }
    }
    return true;
}

bool ArchiveObjects::allowsValue(std::string_view name) const {
    return std::find(allowed_.values.begin(), allowed_.values.end(), name) != allowed_.values.end();
}

std::optional<ArchiveObjects::Class> ArchiveObjects::allowedClass(std::string_view name) const {
    for (std::size_t i = 0; i < allowed_.objects.size(); ++i) {
        if (allowed_.objects[i]->runtimeName == name) {
            return Class{Kind::object, static_cast<std::uint16_t>(i)};
        }
    }
    const std::string_view plain = immutableForm(name);
    if (!allowsValue(plain)) {
        return std::nullopt;
    }
    const Kind kind = plain == "NSArray"    ? Kind::array
                      : plain == "NSURL"    ? Kind::url
                      : plain == "NSString" ? Kind::wrappedString
                                            : Kind::otherValue;
    return Class{kind, 0};
}

}  // namespace Base
