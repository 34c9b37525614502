#include <plist/plist.h>

#include <cstdlib>
#include <memory>

#include "Platform/PropertyListForms.h"

namespace Platform {

namespace {

struct NodeDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeDeleter>;

struct BytesDeleter {
    void operator()(void* bytes) const { std::free(bytes); }
};

Node withReferences(plist_t node);

std::optional<std::uint64_t> reference(plist_t dictionary) {
    if (plist_dict_get_size(dictionary) != 1) {
        return std::nullopt;
    }
    plist_t const value = plist_dict_get_item(dictionary, "CF$UID");
    if (value == nullptr || plist_get_node_type(value) != PLIST_UINT) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    plist_get_uint_val(value, &number);
    return number;
}

Node dictionaryWithReferences(plist_t dictionary) {
    if (const auto number = reference(dictionary)) {
        return Node(plist_new_uid(*number));
    }
    Node result(plist_new_dict());
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(dictionary, &position);
    const std::unique_ptr<void, BytesDeleter> positionOwner(position);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dictionary, position, &key, &value);
        const std::unique_ptr<char, BytesDeleter> keyOwner(key);
        if (value == nullptr) {
            return result;
        }
        plist_dict_set_item(result.get(), key, withReferences(value).release());
    }
}

Node arrayWithReferences(plist_t array) {
    Node result(plist_new_array());
    plist_array_iter position = nullptr;
    plist_array_new_iter(array, &position);
    const std::unique_ptr<void, BytesDeleter> positionOwner(position);
    for (;;) {
        plist_t value = nullptr;
        plist_array_next_item(array, position, &value);
        if (value == nullptr) {
            return result;
        }
        plist_array_append_item(result.get(), withReferences(value).release());
    }
}

// A copy of `node` with references in place of CF$UID dictionaries. The caller has bounded the depth.
Node withReferences(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_DICT:
            return dictionaryWithReferences(node);
        case PLIST_ARRAY:
            return arrayWithReferences(node);
        default:
            return Node(plist_copy(node));
    }
}

}  // namespace

std::optional<std::vector<std::uint8_t>> binaryPropertyList(std::string_view xml) {
    plist_t parsed = nullptr;
    plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &parsed);
    const Node root(parsed);
    if (root == nullptr) {
        return std::nullopt;
    }
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(withReferences(root.get()).get(), &bytes, &size);
    const std::unique_ptr<char, BytesDeleter> owner(bytes);
    return bytes == nullptr ? std::nullopt : std::optional(std::vector<std::uint8_t>(bytes, bytes + size));
}

}  // namespace Platform
