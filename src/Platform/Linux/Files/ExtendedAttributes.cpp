#include "Platform/Linux/Files/ExtendedAttributes.h"

#include <sys/xattr.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

namespace Platform::Linux {

namespace {

/// Attributes of an open item.
struct OpenItem {
    int descriptor;

    ssize_t list(char* names, std::size_t size) const { return ::flistxattr(descriptor, names, size); }
    ssize_t get(const char* name, void* value, std::size_t size) const {
        return ::fgetxattr(descriptor, name, value, size);
    }
    int set(const char* name, const void* value, std::size_t size) const {
        return ::fsetxattr(descriptor, name, value, size, 0);
    }
};

/// Attributes of an entry that is never followed. No call takes a folder and a name; the path leads through
/// the open folder, which makes it safe.
struct NamedItem {
    NamedItem(int folder, const char* name) : path("/proc/self/fd/" + std::to_string(folder) + "/" + name) {}

    ssize_t list(char* names, std::size_t size) const { return ::llistxattr(path.c_str(), names, size); }
    ssize_t get(const char* name, void* value, std::size_t size) const {
        return ::lgetxattr(path.c_str(), name, value, size);
    }
    int set(const char* name, const void* value, std::size_t size) const {
        return ::lsetxattr(path.c_str(), name, value, size, 0);
    }

    std::string path;
};

bool isForgivable(int failure) {
    return failure == EPERM || failure == EACCES || failure == ENOTSUP;
}

template <class Item>
int copyOne(const Item& source, const Item& copy, const char* name, std::vector<char>& value) {
    for (;;) {
        const ssize_t size = source.get(name, nullptr, 0);
        if (size < 0) {
            return errno == ENODATA || isForgivable(errno) ? 0 : errno;
        }
        value.resize(static_cast<std::size_t>(size));
        const ssize_t count = source.get(name, value.data(), value.size());
        if (count >= 0) {
            const int result = copy.set(name, value.data(), static_cast<std::size_t>(count));
            return result == 0 || isForgivable(errno) ? 0 : errno;
        }
        // It has grown in between: try again.
        if (errno != ERANGE) {
            return errno == ENODATA ? 0 : errno;
        }
    }
}

template <class Item>
int copyAll(const Item& source, const Item& copy) {
    std::array<char, 1024> small;
    std::vector<char> large;
    char* names = small.data();
    ssize_t length = source.list(names, small.size());
    while (length < 0 && errno == ERANGE) {
        const ssize_t size = source.list(nullptr, 0);
        large.resize(size > 0 ? static_cast<std::size_t>(size) : 1);
        names = large.data();
        length = source.list(names, large.size());
    }
    if (length < 0) {
        return isForgivable(errno) ? 0 : errno;
    }
    std::vector<char> value;
    for (const char* name = names; name < names + length; name += std::strlen(name) + 1) {
        if (const int failure = copyOne(source, copy, name, value); failure != 0) {
            return failure;
        }
    }
    return 0;
}

}  // namespace

int copyExtendedAttributes(int source, int copy) {
    return copyAll(OpenItem{source}, OpenItem{copy});
}

int copyExtendedAttributes(int from, const char* name, int to, const char* newName) {
    const int failure = copyAll(NamedItem(from, name), NamedItem(to, newName));
    // Without /proc they cannot be reached.
    return failure == ENOENT ? 0 : failure;
}

}  // namespace Platform::Linux
