#include "Platform/Posix/PosixUsers.h"

#include <pwd.h>
#include <sys/types.h>
#include <unistd.h>

namespace Platform::Posix {

void PosixUsers::rewind() {
    ::setpwent();
}

std::optional<Users::Entry> PosixUsers::next() {
    const passwd* entry = ::getpwent();
    if (entry == nullptr) {
        return std::nullopt;
    }
    return Entry{entry->pw_uid, entry->pw_dir != nullptr ? entry->pw_dir : ""};
}

void PosixUsers::close() {
    ::endpwent();
}

std::uint32_t PosixUsers::realUserId() {
    return ::getuid();
}

int PosixUsers::setEffectiveUserId(std::uint32_t uid) {
    return ::seteuid(uid);
}

}  // namespace Platform::Posix
