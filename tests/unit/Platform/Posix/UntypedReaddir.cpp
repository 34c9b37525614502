// A readdir(3) that tells the type of every other entry only: many file systems tell it of none. And a
// closedir(3) that is as strict as a Mac's. They take the place of the system's in the whole program.
#include <dirent.h>
#include <dlfcn.h>

#include <atomic>
#include <cstdlib>

extern "C" dirent* readdir(DIR* stream) {  // NOLINT(readability-inconsistent-declaration-parameter-name)
    static const auto systems = reinterpret_cast<dirent* (*)(DIR*)>(::dlsym(RTLD_NEXT, "readdir"));
    static std::atomic<unsigned> calls = 0;
    dirent* const entry = systems(stream);
    if (entry != nullptr && ++calls % 2 == 0) {
        entry->d_type = DT_UNKNOWN;
    }
    return entry;
}

extern "C" int closedir(DIR* stream) {  // NOLINT(readability-inconsistent-declaration-parameter-name)
    static const auto systems = reinterpret_cast<int (*)(DIR*)>(::dlsym(RTLD_NEXT, "closedir"));
    // glibc's takes even null, though it is declared never to, which makes a plain comparison vain.
    DIR* const volatile given = stream;
    if (given == nullptr) {
        std::abort();
    }
    return systems(stream);
}
