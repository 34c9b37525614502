// The classes that an archive describes.

#include <algorithm>

#include "Base/Archive/ArchiveObjects.h"
#include "Base/Excerpt.h"

namespace Base {
namespace {

using Object = BinaryPlistReader::Object;
using Type = BinaryPlistReader::Type;

// The class whose permission covers `name`: allowing a class allows its mutable form.
std::string_view immutableForm(std::string_view name) {
    return name == "NSMutableArray" ? "NSArray" : name == "NSMutableString" ? "NSString" : name;
}

}  // namespace

const ArchiveObjects::Class* ArchiveObjects::classDescribed(std::size_t index, std::string& refusal) {
    Entry& entry = entries_[index];
    if (entry.kind != Kind::classDescription) {
        const auto described = readClass(index, refusal);
        if (!described) {
            return nullptr;
        }
        // An honest archive describes each class once.
        constexpr std::size_t kMaxClasses = 1024;
        if (classes_.size() == kMaxClasses) {
            refusal = "the archive describes more than " + std::to_string(kMaxClasses) + " classes";
            return nullptr;
        }
        entry = {plist_.reference(list_, index), Kind::classDescription,
                 static_cast<std::uint16_t>(classes_.size())};
        classes_.push_back(*described);
    }
    return &classes_[entry.classIndex];
}

std::optional<ArchiveObjects::Class> ArchiveObjects::readClass(std::size_t index,
                                                               std::string& refusal) const {
    const Object dictionary = plist_.object(plist_.reference(list_, index));
    if (entries_[index].kind != Kind::unknown || dictionary.type != Type::dictionary ||
        dictionary.count > kMaxKeys || plist_.value(dictionary, "$class")) {
        refusal = entryName(index) + " is not a class";
        return std::nullopt;
    }
    const auto nameId = plist_.value(dictionary, "$classname");
    if (!nameId) {
        refusal = entryName(index) + " has no class";
        return std::nullopt;
    }
    const std::string_view name = BinaryPlistReader::asciiText(plist_.object(*nameId));
    if (name.empty()) {
        refusal = entryName(index) + " is not a class";
        return std::nullopt;
    }
    const auto allowed = allowedClass(name);
    if (!allowed) {
        refusal = entryName(index) + " names the class " + excerpt(name) + ", which is not allowed";
        return std::nullopt;
    }
    const auto list = plist_.value(dictionary, "$classes");
    if (list && !classesAgree(plist_.object(*list), name)) {
        refusal = entryName(index) + " does not describe the class " + excerpt(name) + " correctly";
        return std::nullopt;
    }
    return allowed;
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
