#include "Base/Archive/ArchiveObjects.h"

namespace Base {
namespace {

using Object = BinaryPlistReader::Object;
using ObjectId = BinaryPlistReader::ObjectId;
using Type = BinaryPlistReader::Type;

constexpr Object kNoObject{Type::damaged, 0, nullptr};

bool isSmallDictionary(const Object& object) {
    return object.type == Type::dictionary && object.count <= ArchiveObjects::kMaxKeys;
}

// The class of a value that archives hold without an object around it; empty for values that never occur so.
std::string_view plainValueClass(Type type) {
    switch (type) {
        case Type::ascii:
        case Type::utf16:
            return "NSString";
        case Type::integer:
        case Type::real:
        case Type::boolean:
            return "NSNumber";
        case Type::data:
            return "NSData";
        case Type::date:
            return "NSDate";
        case Type::damaged:
        case Type::null:
        case Type::uid:
        case Type::array:
        case Type::dictionary:
            return "";
    }
    return "";
}

ArchiveObjects::Kind plainValueKind(const Object& object) {
    using Kind = ArchiveObjects::Kind;
    return BinaryPlistReader::isText(object)                           ? Kind::string
           : object.type == Type::boolean                              ? Kind::boolean
           : object.type == Type::integer || object.type == Type::real ? Kind::number
                                                                       : Kind::otherValue;
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
    ArchiveObjects objects(std::move(*plist), allowed);
    if (!objects.readFrame(limits, refusal) || !objects.readEntries(refusal)) {
        return std::nullopt;
    }
    return objects;
}

std::string ArchiveObjects::entryName(std::size_t index) {
    return "object " + std::to_string(index);
}

const ArchiveObjects::Entry* ArchiveObjects::target(ObjectId id) const {
    const auto index = BinaryPlistReader::uid(plist_.object(id));
    return index && *index < entries_.size() ? &entries_[static_cast<std::size_t>(*index)] : nullptr;
}

Object ArchiveObjects::value(const Object& dictionary, std::string_view key) const {
    const auto id = plist_.value(dictionary, key);
    return id ? plist_.object(*id) : kNoObject;
}

bool ArchiveObjects::readFrame(const UnarchivingLimits& limits, std::string& refusal) {
    const Object frame = plist_.object(plist_.top());
    if (!isSmallDictionary(frame)) {
        refusal = "not a keyed archive: its outermost object is not a dictionary of at most " +
                  std::to_string(kMaxKeys) + " keys";
        return false;
    }
    if (BinaryPlistReader::asciiText(value(frame, "$archiver")) != "NSKeyedArchiver") {
        refusal = "not a keyed archive: \"$archiver\" is not NSKeyedArchiver";
        return false;
    }
    constexpr std::uint64_t kVersion = 100000;
    if (BinaryPlistReader::integer(value(frame, "$version")) != kVersion) {
        refusal = "not a keyed archive: \"$version\" is not 100000";
        return false;
    }
    list_ = value(frame, "$objects");
    if (list_.type != Type::array || list_.count == 0) {
        refusal = "not a keyed archive: \"$objects\" is not a list of objects";
        return false;
    }
    if (list_.count > limits.objects) {
        refusal = "the archive holds more than " + std::to_string(limits.objects) + " objects";
        return false;
    }
    return readTop(value(frame, "$top"), refusal);
}

bool ArchiveObjects::readTop(const Object& top, std::string& refusal) {
    const auto root = isSmallDictionary(top) ? BinaryPlistReader::uid(value(top, "root")) : std::nullopt;
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
    entries_[0] = {null, Kind::nil, 0};
    for (std::size_t index = 1; index < entries_.size(); ++index) {
        // A class is read with the first object that refers to it, which may come before the class.
        if (entries_[index].kind == Kind::unknown && !readEntry(index, refusal)) {
            return false;
        }
    }
    return true;
}

bool ArchiveObjects::readEntry(std::size_t index, std::string& refusal) {
    const Object object = plist_.object(plist_.reference(list_, index));
    return object.type == Type::dictionary ? readDictionary(index, object, refusal)
                                           : readPlainValue(index, object, refusal);
}

bool ArchiveObjects::readPlainValue(std::size_t index, const Object& object, std::string& refusal) {
    const std::string_view name = plainValueClass(object.type);
    if (name.empty()) {
        refusal = entryName(index) + " has no class";
        return false;
    }
    if (!allowsValue(name)) {
        refusal = entryName(index) + " is of the class " + std::string(name) + ", which is not allowed";
        return false;
    }
    entries_[index] = {plist_.reference(list_, index), plainValueKind(object), 0};
    return true;
}

bool ArchiveObjects::readDictionary(std::size_t index, const Object& dictionary, std::string& refusal) {
    if (!isSmallDictionary(dictionary)) {
        refusal = entryName(index) + " has more than " + std::to_string(kMaxKeys) + " keys";
        return false;
    }
    const auto classId = plist_.value(dictionary, "$class");
    if (!classId) {
        return classDescribed(index, refusal) != nullptr;
    }
    const auto classIndex = BinaryPlistReader::uid(plist_.object(*classId));
    if (!classIndex || *classIndex == 0 || *classIndex >= entries_.size()) {
        refusal = entryName(index) + " refers to no class";
        return false;
    }
    const Class* const described = classDescribed(static_cast<std::size_t>(*classIndex), refusal);
    if (described == nullptr) {
        return false;
    }
    entries_[index] = {plist_.reference(list_, index), described->kind, described->classIndex};
    return true;
}

}  // namespace Base
