#include <fcntl.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "Platform/Posix/NativeFiles.h"

namespace Platform::Posix {

namespace {

/// Entries for root itself count too: there is no reason for one.
bool givesRightToChange(acl_entry_t entry) {
    constexpr std::array<acl_perm_t, 6> kRights = {ACL_ADD_FILE,       ACL_ADD_SUBDIRECTORY, ACL_DELETE_CHILD,
                                                   ACL_WRITE_SECURITY, ACL_CHANGE_OWNER,     ACL_DELETE};
    acl_tag_t tag = ACL_UNDEFINED_TAG;
    acl_permset_t rights = nullptr;
    if (::acl_get_tag_type(entry, &tag) != 0 || ::acl_get_permset(entry, &rights) != 0) {
        return true;
    }
    return tag == ACL_EXTENDED_ALLOW && std::any_of(kRights.begin(), kRights.end(), [&](acl_perm_t each) {
               return ::acl_get_perm_np(rights, each) != 0;
           });
}

}  // namespace

// Reading is the least that open(2) can be asked for: there is no descriptor for an item's attributes alone.
// O_NONBLOCK and O_NOCTTY, because the item may be a FIFO without a writer or a terminal.
int openItemItself(int parent, const char* name) {
    return ::openat(parent, name, O_RDONLY | O_SYMLINK | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

int setModeOfOpenItem(int item, mode_t mode) {
    return ::fchmod(item, mode);
}

int setOwnerOfOpenItem(int item, uid_t owner, gid_t group) {
    return ::fchown(item, owner, group);
}

// Opening for search alone came long after 10.13, so the folder has to be readable.
bool changeOfOwnerKeepsSetIdBits() {
    return true;
}

int openFolderForLookup(int parent, const char* name) {
    return ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

bool listLetsOthersChange(int folder) {
    const acl_t list = ::acl_get_fd_np(folder, ACL_TYPE_EXTENDED);
    if (list == nullptr) {
        return errno != ENOENT;
    }
    bool lets = false;
    acl_entry_t entry = nullptr;
    for (int which = ACL_FIRST_ENTRY; !lets && ::acl_get_entry(list, which, &entry) == 0;
         which = ACL_NEXT_ENTRY) {
        lets = givesRightToChange(entry);
    }
    (void)::acl_free(list);
    return lets;
}

timespec changeTime(const struct stat& status) {
    return status.st_ctimespec;
}

}  // namespace Platform::Posix
