// What protects a file on a Mac: flags, access control lists; and what a copy keeps of it.

#include <membership.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Check.h"
#include "Folder.h"
#include "Platform/SystemPorts.h"

namespace Selftest {

namespace {

/// A list with one entry that denies this user `right`.
bool deny(const std::string& path, acl_perm_t right) {
    acl_t list = ::acl_init(1);
    acl_entry_t entry = nullptr;
    acl_permset_t rights = nullptr;
    uuid_t user{};
    const bool isSet = list != nullptr && ::acl_create_entry(&list, &entry) == 0 &&
                       ::acl_set_tag_type(entry, ACL_EXTENDED_DENY) == 0 &&
                       ::mbr_uid_to_uuid(::geteuid(), user) == 0 && ::acl_set_qualifier(entry, user) == 0 &&
                       ::acl_get_permset(entry, &rights) == 0 && ::acl_add_perm(rights, right) == 0 &&
                       ::acl_set_permset(entry, rights) == 0 &&
                       ::acl_set_file(path.c_str(), ACL_TYPE_EXTENDED, list) == 0;
    if (list != nullptr) {
        ::acl_free(list);
    }
    return isSet;
}

void removeList(const std::string& path) {
    if (acl_t const none = ::acl_init(0); none != nullptr) {
        static_cast<void>(::acl_set_file(path.c_str(), ACL_TYPE_EXTENDED, none));
        ::acl_free(none);
    }
}

bool hasList(const std::string& path) {
    acl_t const list = ::acl_get_link_np(path.c_str(), ACL_TYPE_EXTENDED);
    if (list != nullptr) {
        ::acl_free(list);
    }
    return list != nullptr;
}

/// An item with the flag "immutable" stays, the others of its folder go, and without the flag it goes too.
Outcome checkImmutable() {
    const Folder folder;
    folder.makeFolder("tree");
    folder.makeFile("tree/kept");
    folder.makeFile("tree/other");
    const std::string kept = folder.path("tree/kept");
    if (::chflags(kept.c_str(), UF_IMMUTABLE) != 0) {
        return skipped("the scratch folder's file system has no flags");
    }
    const auto error = files().removeItem(folder.url("tree"));
    const bool isKept = folder.has("tree/kept") && !folder.has("tree/other");
    static_cast<void>(::chflags(kept.c_str(), 0));
    if (!error || error->code != EPERM || !isKept) {
        return failed("removing: " + textOf(error) + (isKept ? "" : "; the wrong items are left"));
    }
    const auto afterwards = files().removeItem(folder.url("tree"));
    return afterwards ? failed("without the flag: " + textOf(afterwards))
                      : passed("\"" + error->description + "\"");
}

/// The flag "hidden" makes no entry invisible here; a dot before its name does.
Outcome checkHidden() {
    const Folder folder;
    folder.makeFolder("dotted");
    folder.makeFile("dotted/.file");
    folder.makeFolder("flagged");
    folder.makeFile("flagged/file");
    if (::chflags(folder.path("flagged/file").c_str(), UF_HIDDEN) != 0) {
        return skipped("the scratch folder's file system has no flags");
    }
    Platform::Error error;
    const std::optional<bool> dotted = files().hasVisibleEntries(folder.url("dotted"), error);
    const std::optional<bool> flagged = files().hasVisibleEntries(folder.url("flagged"), error);
    return dotted == false && flagged == true ? passed() : failed("the wrong entries are visible");
}

Outcome checkDenied() {
    if (::geteuid() == 0) {
        return skipped("root may do what a list denies");
    }
    const Folder folder;
    folder.makeFolder("tree");
    folder.makeFile("tree/file");
    if (!deny(folder.path("tree"), ACL_DELETE_CHILD) || !deny(folder.path("tree/file"), ACL_DELETE)) {
        return skipped("no access control list can be set");
    }
    const auto error = files().removeItem(folder.url("tree"));
    const bool isKept = folder.has("tree/file");
    if (isKept) {
        removeList(folder.path("tree/file"));
        removeList(folder.path("tree"));
    }
    return error && (error->code == EACCES || error->code == EPERM) && isKept
               ? passed("\"" + error->description + "\"")
               : failed("removing: " + textOf(error));
}

Outcome checkCopy() {
    const Folder folder;
    folder.makeFile("source");
    const std::string source = folder.path("source");
    const std::string copy = folder.path("copy");
    const char value[] = "value";
    const bool hasAttribute =
        ::setxattr(source.c_str(), "com.norvik.selftest", value, sizeof value, 0, 0) == 0;
    const bool isListed = deny(source, ACL_EXECUTE);
    static_cast<void>(::chmod(source.c_str(), 0640));
    if (const auto error = files().copyItem(folder.url("source"), folder.url("copy"))) {
        return failed("copying: " + textOf(error));
    }
    struct stat before {};
    struct stat after {};
    char copied[sizeof value]{};
    if (::lstat(source.c_str(), &before) != 0 || ::lstat(copy.c_str(), &after) != 0) {
        return failed("the copy is not there");
    }
    if ((after.st_mode & 07777) != 0640 || after.st_mtimespec.tv_sec != before.st_mtimespec.tv_sec) {
        return failed("the copy has another mode or time");
    }
    if (hasAttribute &&
        (::getxattr(copy.c_str(), "com.norvik.selftest", copied, sizeof copied, 0, 0) != sizeof value ||
         std::memcmp(copied, value, sizeof value) != 0)) {
        return failed("the copy lacks an extended attribute");
    }
    if (isListed && !hasList(copy)) {
        return failed("the copy lacks the access control list");
    }
    return passed(std::string(hasAttribute ? "" : "without an extended attribute; ") +
                  (isListed ? "with an access control list" : "without an access control list"));
}

}  // namespace

Checks protectionChecks() {
    return {{"protection.immutable", checkImmutable},
            {"protection.hidden", checkHidden},
            {"protection.denied", checkDenied},
            {"protection.copy", checkCopy}};
}

}  // namespace Selftest
