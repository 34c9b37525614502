#include "Platform/Linux/Bundles/PropertyListFile.h"

#include <fcntl.h>
#include <plist/plist.h>

#include <cstdlib>
#include <memory>

#include "Platform/Posix/PropertyListGuard.h"
#include "Platform/Posix/TamePropertyList.h"

namespace Platform::Linux {

namespace {

struct PlistDeleter {
    void operator()(void* plist) const { ::plist_free(plist); }
};
using Plist = std::unique_ptr<void, PlistDeleter>;

/// The dictionary of a file; null if there is none.
Plist readDictionary(int folder, const std::string& path) {
    const std::optional<std::string> bytes = Posix::readTamePropertyList(folder, path);
    if (!bytes) {
        return nullptr;
    }
    plist_t plist = nullptr;
    const auto length = static_cast<std::uint32_t>(bytes->size());
    if (Posix::isBinaryPropertyList(*bytes)) {
        ::plist_from_bin(bytes->data(), length, &plist);
    } else {
        ::plist_from_xml(bytes->data(), length, &plist);
    }
    Plist result(plist);
    return result && ::plist_get_node_type(plist) == PLIST_DICT ? std::move(result) : nullptr;
}

std::optional<std::string> stringOf(plist_t value) {
    std::uint64_t length = 0;
    const char* text = value != nullptr && ::plist_get_node_type(value) == PLIST_STRING
                           ? ::plist_get_string_ptr(value, &length)
                           : nullptr;
    return text != nullptr ? std::optional(std::string(text, length)) : std::nullopt;
}

}  // namespace

std::optional<PropertyListStrings> readPropertyListStrings(int folder, const std::string& path) {
    const Plist dictionary = readDictionary(folder, path);
    plist_dict_iter iterator = nullptr;
    if (dictionary) {
        ::plist_dict_new_iter(dictionary.get(), &iterator);
    }
    if (iterator == nullptr) {
        return std::nullopt;
    }
    PropertyListStrings result;
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        ::plist_dict_next_item(dictionary.get(), iterator, &key, &value);
        if (value == nullptr) {
            std::free(key);
            break;
        }
        if (auto text = key != nullptr ? stringOf(value) : std::nullopt) {
            result[key] = std::move(*text);
        }
        std::free(key);
    }
    std::free(iterator);
    return result;
}

std::vector<std::string> readPropertyListArray(const std::string& path, const char* key) {
    const Plist dictionary = readDictionary(AT_FDCWD, path);
    plist_t array = dictionary ? ::plist_dict_get_item(dictionary.get(), key) : nullptr;
    std::vector<std::string> result;
    if (array == nullptr || ::plist_get_node_type(array) != PLIST_ARRAY) {
        return result;
    }
    const std::uint32_t count = ::plist_array_get_size(array);
    for (std::uint32_t index = 0; index < count; ++index) {
        if (auto text = stringOf(::plist_array_get_item(array, index))) {
            result.push_back(std::move(*text));
        }
    }
    return result;
}

}  // namespace Platform::Linux
