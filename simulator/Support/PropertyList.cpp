#include "Support/PropertyList.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <plist/plist.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Support/Files.h"

namespace Simulator {

namespace {

constexpr int kMaximumDepth = 24;
constexpr std::size_t kMaximumBytes = 4U << 20U;

struct PlistDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using PlistOwner = std::unique_ptr<void, PlistDeleter>;

plist_t toPlist(const PropertyList& value) {
    switch (value.type()) {
        case PropertyList::value_t::object: {
            plist_t dictionary = plist_new_dict();
            for (const auto& [key, item] : value.items()) {
                plist_dict_set_item(dictionary, key.c_str(), toPlist(item));
            }
            return dictionary;
        }
        case PropertyList::value_t::array: {
            plist_t array = plist_new_array();
            for (const auto& item : value) {
                plist_array_append_item(array, toPlist(item));
            }
            return array;
        }
        case PropertyList::value_t::boolean:
            return plist_new_bool(value.get<bool>() ? 1 : 0);
        case PropertyList::value_t::number_integer:
        case PropertyList::value_t::number_unsigned:
            return plist_new_uint(value.get<std::uint64_t>());
        case PropertyList::value_t::number_float:
            return plist_new_real(value.get<double>());
        case PropertyList::value_t::binary: {
            const auto& bytes = value.get_binary();
            return plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        }
        default:
            return plist_new_string(value.is_string() ? value.get_ref<const std::string&>().c_str() : "");
    }
}

std::optional<PropertyList> fromPlist(plist_t node, int depth);

std::optional<PropertyList> fromDictionary(plist_t node, int depth) {
    PropertyList result = PropertyList::object();
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    for (;;) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        if (item == nullptr) {
            break;
        }
        auto value = fromPlist(item, depth + 1);
        if (value) {
            result[key] = std::move(*value);
        }
        std::free(key);
        if (!value) {
            std::free(iterator);
            return std::nullopt;
        }
    }
    std::free(iterator);
    return result;
}

std::optional<PropertyList> fromArray(plist_t node, int depth) {
    PropertyList result = PropertyList::array();
    for (std::uint32_t index = 0; index < plist_array_get_size(node); ++index) {
        auto value = fromPlist(plist_array_get_item(node, index), depth + 1);
        if (!value) {
            return std::nullopt;
        }
        result.push_back(std::move(*value));
    }
    return result;
}

std::optional<PropertyList> fromData(plist_t node) {
    char* bytes = nullptr;
    std::uint64_t length = 0;
    plist_get_data_val(node, &bytes, &length);
    std::vector<std::uint8_t> data(bytes, bytes + length);
    std::free(bytes);
    return PropertyList::binary(std::move(data));
}

std::optional<PropertyList> fromPlist(plist_t node, int depth) {
    if (depth > kMaximumDepth) {
        return std::nullopt;
    }
    switch (plist_get_node_type(node)) {
        case PLIST_DICT:
            return fromDictionary(node, depth);
        case PLIST_ARRAY:
            return fromArray(node, depth);
        case PLIST_STRING: {
            char* text = nullptr;
            plist_get_string_val(node, &text);
            PropertyList result = std::string(text == nullptr ? "" : text);
            std::free(text);
            return result;
        }
        case PLIST_BOOLEAN: {
            std::uint8_t flag = 0;
            plist_get_bool_val(node, &flag);
            return PropertyList(flag != 0);
        }
        case PLIST_UINT: {
            std::uint64_t number = 0;
            plist_get_uint_val(node, &number);
            return PropertyList(static_cast<std::int64_t>(number));
        }
        case PLIST_REAL: {
            double number = 0;
            plist_get_real_val(node, &number);
            return PropertyList(number);
        }
        case PLIST_DATA:
            return fromData(node);
        default:
            return PropertyList(nullptr);
    }
}

/// Child side of parseHostilePropertyList: never returns.
[[noreturn]] void parseInChild(std::string_view bytes, int output) {
    const rlimit memory{512U << 20U, 512U << 20U};
    const rlimit time{2, 2};
    const rlimit noCore{0, 0};
#ifndef SIMULATOR_SANITIZED
    ::setrlimit(RLIMIT_AS, &memory);
#else
    static_cast<void>(memory);
#endif
    ::setrlimit(RLIMIT_CPU, &time);
    ::setrlimit(RLIMIT_CORE, &noCore);
    ::alarm(3);
    const auto parsed = parsePropertyList(bytes);
    if (parsed) {
        const std::vector<std::uint8_t> encoded = PropertyList::to_cbor(*parsed);
        static_cast<void>(writeAll(output, {reinterpret_cast<const char*>(encoded.data()), encoded.size()}));
    }
    ::_exit(parsed ? 0 : 1);
}

}  // namespace

std::string writePropertyList(const PropertyList& value, PropertyListForm form) {
    const PlistOwner root(toPlist(value));
    char* bytes = nullptr;
    std::uint32_t length = 0;
    if (form == PropertyListForm::xml) {
        plist_to_xml(root.get(), &bytes, &length);
    } else {
        plist_to_bin(root.get(), &bytes, &length);
    }
    std::string result(bytes, length);
    std::free(bytes);
    return result;
}

std::optional<PropertyList> parsePropertyList(std::string_view bytes) {
    if (bytes.size() < 8 || bytes.size() > kMaximumBytes) {
        return std::nullopt;
    }
    plist_t parsed = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &parsed);
    const PlistOwner root(parsed);
    if (root == nullptr || plist_get_node_type(root.get()) != PLIST_DICT) {
        return std::nullopt;
    }
    return fromPlist(root.get(), 0);
}

std::optional<PropertyList> parseHostilePropertyList(std::string_view bytes) {
    int ends[2];
    if (bytes.empty() || bytes.size() > kMaximumBytes || ::pipe2(ends, O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    Descriptor input(ends[0]);
    Descriptor output(ends[1]);
    const pid_t child = ::fork();
    if (child == 0) {
        // Signals that the parent handles must kill the child.
        for (const int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGALRM, SIGXCPU, SIGPIPE}) {
            ::signal(signal, SIG_DFL);
        }
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        parseInChild(bytes, output.get());
    }
    output.reset();
    if (child < 0) {
        return std::nullopt;
    }
    const auto encoded = readAll(input.get(), 4 * kMaximumBytes);
    if (!encoded) {
        ::kill(child, SIGKILL);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!encoded || status != 0) {
        return std::nullopt;
    }
    auto result = PropertyList::from_cbor(*encoded, true, false);
    return result.is_object() ? std::optional(std::move(result)) : std::nullopt;
}

std::string stringOf(const PropertyList& dictionary, const char* key) {
    const auto found = dictionary.find(key);
    return found != dictionary.end() && found->is_string() ? found->get<std::string>() : std::string();
}

}  // namespace Simulator
