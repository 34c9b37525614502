#include "Platform/Posix/PosixCodeModules.h"

#include <dlfcn.h>

namespace Platform::Posix {

namespace {

Error loaderError(const std::string& module) {
    const char* words = ::dlerror();
    return {words != nullptr ? words : module + " cannot be loaded", 0};
}

}  // namespace

std::optional<Error> PosixCodeModules::load(const Base::URL& module, const std::string& symbol,
                                            void*& address) {
    // Without a slash the loader would look for a library of that name in the system's folders.
    const std::string& path = module.path();
    if (!path.starts_with('/')) {
        return Error{path + " is not an absolute path", 0};
    }
    void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        return loaderError(path);
    }
    void* const found = ::dlsym(library, symbol.c_str());
    if (found == nullptr) {
        return loaderError(path);
    }
    address = found;
    return std::nullopt;
}

}  // namespace Platform::Posix
