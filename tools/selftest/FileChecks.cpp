// The file operations in a scratch folder, as far as they are alike on every system.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Check.h"
#include "Folder.h"
#include "Platform/Posix/SHA256.h"
#include "Platform/SystemPorts.h"

namespace Selftest {

namespace {

Outcome checkTree() {
    const Folder folder;
    folder.makeFolder("tree");
    folder.makeFolder("tree/below");
    for (int i = 0; i < 1000; ++i) {
        folder.makeFile("tree/below/" + std::to_string(i));
    }
    if (const auto error = files().copyItem(folder.url("tree"), folder.url("copy"))) {
        return failed("copying: " + textOf(error));
    }
    if (folder.contentsOf("copy/below/999") != "contents") {
        return failed("the copy is not whole");
    }
    for (const char* const name : {"tree", "copy"}) {
        if (const auto error = files().removeItem(folder.url(name))) {
            return failed("removing: " + textOf(error));
        }
    }
    return folder.has("tree") || folder.has("copy") ? failed("something is left") : passed("1000 files");
}

Outcome checkLinks() {
    const Folder folder;
    folder.makeFolder("target");
    folder.makeFile("target/file");
    folder.makeLink(folder.path("target"), "link");
    const auto onTheWay = files().removeItem(folder.url("link/file"));
    if (!onTheWay || onTheWay->code != ELOOP || !folder.has("target/file")) {
        return failed("a link on the way is not refused: " + textOf(onTheWay));
    }
    const auto error = files().removeItem(folder.url("link"));
    if (error || folder.has("link")) {
        return failed("the link is not removed: " + textOf(error));
    }
    return folder.has("target/file") ? passed() : failed("the link's target is gone");
}

/// Of the system's own: /tmp leads to /private/tmp on a Mac.
Outcome checkSystemLinks() {
    std::string path = "/tmp/sentrel-selftest-XXXXXX";
    if (::mkdtemp(path.data()) == nullptr) {
        return skipped("no folder can be made in /tmp");
    }
    const auto error = files().removeItem(Base::URL::fileURL(path));
    if (error) {
        static_cast<void>(::rmdir(path.c_str()));
        return failed("the link /tmp is not followed: " + textOf(error));
    }
    struct stat status {};
    const bool isLink = ::lstat("/tmp", &status) == 0 && S_ISLNK(status.st_mode);
    return passed(isLink ? "/tmp is a link" : "/tmp is no link here");
}

Outcome checkLinkMode() {
    const Folder folder;
    folder.makeFile("target");
    folder.makeLink("target", "link");
    static_cast<void>(::chmod(folder.path("target").c_str(), 0640));
    const int code = files().setMode(folder.url("link"), 0700);
    struct stat target {};
    struct stat link {};
    if (::lstat(folder.path("target").c_str(), &target) != 0 || (target.st_mode & 07777) != 0640) {
        return failed("the mode of the link's target changed");
    }
    if (code == EOPNOTSUPP) {
        return passed("links have no mode of their own here");
    }
    const bool isSet = ::lstat(folder.path("link").c_str(), &link) == 0 && (link.st_mode & 07777) == 0700;
    return code == 0 && isSet ? passed("the link has it")
                              : failed("the link's mode is not set: " + std::to_string(code));
}

Outcome checkMissing() {
    const Folder folder;
    const auto error = files().removeItem(folder.url("nothing"));
    if (!error || error->code != ENOENT) {
        return failed("removing what is not there: " + textOf(error));
    }
    const int code = files().setMode(folder.url("nothing"), 0600);
    return code == EBADF ? passed("\"" + error->description + "\"")
                         : failed("the mode of what is not there: " + std::to_string(code));
}

Outcome checkSystemFolders() {
    const Folder folder;
    for (const char* const place : {"/Applications", "/Library", "/Users", "/"}) {
        if (!files().itemExists(Base::URL::fileURL(place))) {
            continue;
        }
        // The mode that it has: were it not refused, nothing would change.
        struct stat status {};
        if (::stat(place, &status) != 0) {
            return failed("cannot be looked at: " + std::string(place));
        }
        const int code = files().setMode(Base::URL::fileURL(place), status.st_mode & 07777);
        if (code != EPERM) {
            return failed("a folder of the system is not refused: " + std::string(place) + ", " +
                          std::to_string(code));
        }
    }
    return passed();
}

Outcome checkLocalFolders() {
    using Platform::StandardFolder;
    Platform::StandardFolders& folders = Platform::SystemPorts::current().folders;
    const std::string applications = folders.folder(StandardFolder::applications).path();
    const std::string support = folders.folder(StandardFolder::applicationSupport).path();
    const std::string users = folders.folder(StandardFolder::users).path();
    const bool isRight =
        applications == "/Applications" && support == "/Library/Application Support" && users == "/Users";
    return isRight ? passed() : failed(applications + ", " + support + ", " + users);
}

Outcome checkDigest() {
    Platform::Posix::SHA256 digest;
    digest.add("abc", 3);
    const std::string result = digest.finish();
    return result == "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad" ? passed()
                                                                                        : failed(result);
}

}  // namespace

Checks fileChecks() {
    return {{"files.tree", checkTree},
            {"files.links", checkLinks},
            {"files.system-links", checkSystemLinks},
            {"files.link-mode", checkLinkMode},
            {"files.missing", checkMissing},
            {"files.system-folders", checkSystemFolders},
            {"files.local-folders", checkLocalFolders},
            {"files.digest", checkDigest}};
}

}  // namespace Selftest
