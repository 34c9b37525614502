// Folders of the system, in a root folder of the tests' own.
#include "Platform/Posix/SystemFolders.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "Interference.h"
#include "OwnRoot.h"
#include "Platform/Posix/PosixFileManager.h"

namespace PlatformTests {
namespace {

using Base::URL;
using Platform::Posix::Moment;
using Platform::Posix::PosixFileManager;

/// Those that no other one of these lies in, so that each needs to be known for its own sake, and then the
/// others.
constexpr const char* kFolders[] = {
    "/Applications",
    "/Library/Application Support",
    "/bin",
    "/Library/Extensions",
    "/etc",
    "/Library/LaunchAgents",
    "/opt",
    "/Library/LaunchDaemons",
    "/private/etc",
    "/Library/PrivilegedHelperTools",
    "/private/tmp",
    "/Library/Services",
    "/private/var",
    "/System/Volumes/Data",
    "/sbin",
    "/Users/Shared",
    "/tmp",
    "/Users/alice",
    "/usr/lib",
    "/usr/local",
    "/usr/share",
    "/var",
    "/Volumes",
    "/",
    "/Library",
    "/System",
    "/System/Volumes",
    "/Users",
    "/private",
    "/usr",
};

void makeRest() {
    for (const char* each :
         {"/bin", "/opt", "/sbin", "/usr/lib", "/usr/local", "/usr/share", "/Library/Extensions",
          "/Library/LaunchAgents", "/Library/PrivilegedHelperTools", "/Library/Services", "/System/Volumes",
          "/System/Volumes/Data", "/Users/Shared"}) {
        makeFolder(each);
    }
}

void expectRefused(const std::string& folder) {
    PosixFileManager files;
    const URL url = URL::fileURL(folder);
    const struct stat before = statusOf(folder);
    EXPECT_EQ(files.removeItem(url),
              std::optional(Platform::Error{
                  "\"" + folder + "\" could not be removed: it is a folder of the system", EPERM}));
    EXPECT_EQ(files.setMode(url, 0700), EPERM) << folder;
    EXPECT_EQ(files.setOwner(url, 0, 77), EPERM) << folder;
    const auto error = files.copyItem(URL::fileURL("/System/source"), url);
    EXPECT_TRUE(error && error->code == EEXIST) << folder;
    files.setOwnerOfContents(url, 0, 77, [](const URL& item, int) { ADD_FAILURE() << item.path(); });
    const struct stat after = statusOf(folder);
    EXPECT_EQ(after.st_ino, before.st_ino) << folder;
    EXPECT_EQ(after.st_mode, before.st_mode) << folder;
    EXPECT_EQ(after.st_gid, before.st_gid) << folder;
}

TEST(SystemFolders, AreRefusedWhateverTheCallerSays) {
    EXPECT_TRUE(OwnRoot().run([] {
        makeRest();
        makeFile("/System/source");
        makeFile("/Library/kept");
        for (const char* each : kFolders) {
            expectRefused(each);
        }
        EXPECT_EQ(statusOf("/Library/kept").st_gid, ::getegid());
        EXPECT_EQ(statusOf("/Library/LaunchDaemons").st_gid, ::getegid());
    }));
}

TEST(SystemFolders, AreKnownByIdentity) {
    EXPECT_TRUE(OwnRoot().run([] {
        makeFile("/System/source");
        makeLink("/", "/System/root");
        for (const char* each : {"/System/root/Library", "//Library//Application Support", "/System/root/tmp",
                                 "/System/root/Users/alice"}) {
            expectRefused(each);
        }
        // A link of the product's own that leads to one is its own.
        PosixFileManager files;
        EXPECT_FALSE(files.removeItem(URL::fileURL("/System/root")));
        EXPECT_TRUE(exists("/Library/LaunchDaemons"));
    }));
}

TEST(SystemFolders, IncludeEveryHomeAndTheFoldersAboveIt) {
    EXPECT_TRUE(OwnRoot().run([] {
        PosixFileManager files;
        makeFile("/System/source");
        for (const char* each : {"/srv", "/srv/homes", "/srv/homes/bob", "/srv/more", "/srv/more/carol"}) {
            makeFolder(each);
        }
        makeLink("/srv/more", "/carols");
        const struct stat unknown = statusOf("/srv/homes/bob");
        EXPECT_FALSE(Platform::Posix::isSystemFolder(unknown));
        makeFile("/private/etc/passwd",
                 "root:x:0:0::/private/var/root:/bin/sh\nempty:x:3:3:::/bin/sh\n"
                 "relative:x:4:4::srv/free:/bin/sh\nnobody:x:9:9::/nonexistent/home:/bin/sh\n"
                 "bob:x:7:7::/srv/homes/bob:/bin/sh\ncarol:x:8:8::/carols/carol:/bin/sh\n");
        for (const char* each : {"/srv/homes/bob", "/srv/homes", "/srv", "/srv/more/carol", "/srv/more",
                                 "/carols", "/private/var/root"}) {
            expectRefused(each);
        }
        makeFolder("/srv/free");
        makeFolder("/srv/homes/bob/Library");
        EXPECT_FALSE(files.removeItem(URL::fileURL("/srv/free")));
        EXPECT_FALSE(files.removeItem(URL::fileURL("/srv/homes/bob/Library")));
    }));
}

TEST(SystemFolders, ProtectNothingThatLiesInThem) {
    EXPECT_TRUE(OwnRoot().run([] {
        PosixFileManager files;
        for (const std::string each : {"/Applications/x", "/Library/Application Support/x", "/Users/alice/x",
                                       "/private/tmp/x", "/x"}) {
            makeFolder(each);
            EXPECT_EQ(files.setMode(URL::fileURL(each), 0750), 0) << each;
            EXPECT_EQ(files.setOwner(URL::fileURL(each), 0, 0), 0) << each;
            EXPECT_FALSE(files.removeItem(URL::fileURL(each))) << each;
            EXPECT_FALSE(exists(each));
        }
    }));
}

// The item that was checked is the one that is opened.
TEST(SystemFolders, AreRefusedAlsoWhenTheyTakeTheItemsPlace) {
    EXPECT_TRUE(OwnRoot().run([] {
        PosixFileManager files;
        makeFolder("/Applications/item");
        makeFile("/Users/alice/kept");
        const Interference swap(Moment::openingFolder, "item", [](int) {
            ASSERT_EQ(::rmdir("/Applications/item"), 0);
            ASSERT_EQ(::rename("/Users/alice", "/Applications/item"), 0);
            makeLink("/Applications/item", "/Users/alice");
        });
        EXPECT_EQ(files.removeItem(URL::fileURL("/Applications/item"))->code, EPERM);
        EXPECT_EQ(swap.count(), 1);
        EXPECT_TRUE(exists("/Applications/item/kept"));
    }));
}

}  // namespace
}  // namespace PlatformTests
