// Which links on the way to an item are followed, in a root folder of the tests' own.
#include "Platform/Posix/TrustedPath.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "Interference.h"
#include "OwnRoot.h"
#include "Platform/Posix/FolderChain.h"
#include "Platform/Posix/PosixFileManager.h"

namespace PlatformTests {
namespace {

using Base::URL;
using Platform::Posix::Moment;
using Platform::Posix::OpenedParent;
using Platform::Posix::PosixFileManager;
using Platform::Posix::WayEnd;

/// Whether the way to `item` ends in `folder`, under the name that the item has.
void expectWay(const std::string& item, const std::string& folder) {
    OpenedParent parent;
    const WayEnd end = openParent(URL::fileURL(item), parent);
    ASSERT_EQ(end.code, 0) << item << ": " << end.refusedLink;
    struct stat found {};
    ASSERT_EQ(::fstat(parent.folder.get(), &found), 0);
    EXPECT_EQ(found.st_ino, statusOf(folder).st_ino) << item;
    EXPECT_EQ(parent.name, item == "/" ? "." : item.substr(item.rfind('/') + 1));
}

void expectRefused(const std::string& item, const std::string& link) {
    OpenedParent parent;
    const WayEnd end = openParent(URL::fileURL(item), parent);
    EXPECT_EQ(end.code, ELOOP) << item;
    EXPECT_EQ(end.refusedLink, link) << item;
}

void expectCode(const std::string& item, int code) {
    OpenedParent parent;
    const WayEnd end = openParent(URL::fileURL(item), parent);
    EXPECT_EQ(end.code, code) << item;
    EXPECT_EQ(end.refusedLink, "") << item;
}

TEST(TrustedPath, FollowsTheLinksOfTheSystem) {
    EXPECT_TRUE(OwnRoot().run([] {
        expectWay("/", "/");
        expectWay("/tmp", "/");
        expectWay("/Library/Application Support/x", "/Library/Application Support");
        expectWay("/tmp/x", "/private/tmp");
        expectWay("/etc/x", "/private/etc");
        expectWay("//var//root/x", "/private/var/root");
        makeLink("/Library", "/System/absolute");
        makeLink("../Library/Application Support/..//./LaunchDaemons/", "/System/relative");
        makeLink("../../../..", "/System/above");
        makeLink("../System/relative", "/usr/linked");
        expectWay("/System/absolute/x", "/Library");
        expectWay("/System/absolute/LaunchDaemons/x", "/Library/LaunchDaemons");
        expectWay("/System/relative/x", "/Library/LaunchDaemons");
        expectWay("/System/above/Library/x", "/Library");
        expectWay("/usr/linked/x", "/Library/LaunchDaemons");
    }));
}

TEST(TrustedPath, GoesThroughFoldersOfAnybody) {
    EXPECT_TRUE(OwnRoot().run([] {
        makeFolder("/Applications/NORVIK");
        makeFolder("/Applications/NORVIK/open", 0777);
        expectWay("/Applications/NORVIK/open/x", "/Applications/NORVIK/open");
        expectWay("/Users/alice/x", "/Users/alice");
        // The last component is the item.
        makeLink("/Library", "/Applications/link");
        expectWay("/Applications/link", "/Applications");
    }));
}

TEST(TrustedPath, RefusesALinkInAFolderThatOthersMayChange) {
    for (const mode_t mode : {0775, 0757, 01777, 0720, 0702}) {
        EXPECT_TRUE(OwnRoot().run([mode] {
            makeFolder("/Library/open");
            makeLink("/Library", "/Library/open/link");
            expectWay("/Library/open/link/x", "/Library");
            ASSERT_EQ(::chmod("/Library/open", mode), 0);
            expectRefused("/Library/open/link/x", "/Library/open/link");
            expectRefused("/Library/open/link/LaunchDaemons/x", "/Library/open/link");
        })) << mode;
    }
}

// Whoever may change the folder above could put another folder, with a link in it, in place of root's own.
TEST(TrustedPath, RefusesALinkBelowAFolderThatOthersMayChange) {
    EXPECT_TRUE(OwnRoot().run([] {
        makeFolder("/Applications/NORVIK");
        makeFolder("/Applications/NORVIK/deep");
        makeLink("/Library", "/Applications/NORVIK/deep/link");
        expectRefused("/Applications/NORVIK/deep/link/x", "/Applications/NORVIK/deep/link");
    }));
}

TEST(TrustedPath, RefusesALinkThatATrustedLinkLeadsTo) {
    EXPECT_TRUE(OwnRoot().run([] {
        makeLink("/Library", "/private/tmp/link");
        expectRefused("/tmp/link/x", "/private/tmp/link");
        makeLink("/private/tmp/link", "/System/two");
        expectRefused("/System/two/x", "/private/tmp/link");
        // The trust in the root folder comes back with an absolute target, not before.
        makeFolder("/private/tmp/folder");
        makeLink("/private/tmp/folder/..", "/System/up");
        expectRefused("/System/up/x", "/System/up");
    }));
}

TEST(TrustedPath, RefusesItemsOfAnotherOwner) {
    if (!OwnRoot::knowsOthers()) {
        GTEST_SKIP() << "only root can give items to others";
    }
    EXPECT_TRUE(OwnRoot().run([] {
        makeLink("/Library", "/System/alices");
        expectWay("/System/alices/x", "/Library");
        ASSERT_EQ(::lchown("/System/alices", kAlice, 0), 0);
        expectRefused("/System/alices/x", "/System/alices");
        makeFolder("/System/folder");
        makeLink("/Library", "/System/folder/link");
        ASSERT_EQ(::chown("/System/folder", kAlice, 0), 0);
        expectRefused("/System/folder/link/x", "/System/folder/link");
        // A root folder that belongs to somebody makes every link theirs.
        ASSERT_EQ(::chown("/", kAlice, 0), 0);
        expectRefused("/tmp/x", "/tmp");
        makeLink("/Library", "/System/absolute");
        expectRefused("/System/absolute/x", "/System/absolute");
    }));
}

TEST(TrustedPath, TheSameRuleHoldsForEveryUser) {
    if (!OwnRoot::knowsOthers()) {
        GTEST_SKIP() << "only root can become somebody else";
    }
    EXPECT_TRUE(OwnRoot().run([] {
        makeLink("/Library", "/Users/alice/link");
        ASSERT_EQ(::lchown("/Users/alice/link", kAlice, kAlice), 0);
        ASSERT_EQ(::seteuid(kAlice), 0);
        expectWay("/tmp/x", "/private/tmp");
        expectRefused("/Users/alice/link/x", "/Users/alice/link");
    }));
}

TEST(TrustedPath, SaysWhyThereIsNoWay) {
    EXPECT_TRUE(OwnRoot().run([] {
        makeFile("/System/file");
        makeLink("nowhere", "/System/dangling");
        makeLink("file", "/System/link");
        expectCode("/System/file/x", ENOTDIR);
        expectCode("/System/link/x", ENOTDIR);
        expectCode("/System/missing/x", ENOENT);
        expectCode("/System/dangling/x", ENOENT);
        for (const char* each : {"/System/../x", "/System/./x", "/System/..", "/.", "/../x"}) {
            expectCode(each, EINVAL);
        }
        makeFolder("/System/..x");
        expectWay("/System/..x/...", "/System/..x");
    }));
}

TEST(TrustedPath, FollowsThirtyTwoLinksAndNoMore) {
    EXPECT_TRUE(OwnRoot().run([] {
        makeLink("loop", "/System/loop");
        expectCode("/System/loop/x", ELOOP);
        makeLink("/Library", "/System/1");
        for (int number = 2; number <= 33; ++number) {
            makeLink(std::to_string(number - 1), "/System/" + std::to_string(number));
        }
        expectWay("/System/32/x", "/Library");
        expectCode("/System/33/x", ELOOP);
    }));
}

TEST(TrustedPath, MakesMissingFoldersOfThePathAlone) {
    EXPECT_TRUE(OwnRoot().run([] {
        PosixFileManager files;
        EXPECT_FALSE(files.createDirectory(URL::fileURL("/tmp/a/b/c"), true));
        EXPECT_TRUE(S_ISDIR(statusOf("/private/tmp/a/b/c").st_mode));
        makeLink("new/folder", "/System/dangling");
        const auto error = files.createDirectory(URL::fileURL("/System/dangling/below/x"), true);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, ENOENT);
        EXPECT_FALSE(exists("/System/new"));
        makeFolder("/Applications/real");
        makeLink("/Library", "/Applications/real/link");
        EXPECT_EQ(*files.createDirectory(URL::fileURL("/Applications/real/link/new/x"), true),
                  (Platform::Error{"\"/Applications/real/link/new/x\" could not be created: "
                                   "\"/Applications/real/link\" on the way to it is a link that root alone "
                                   "does not control",
                                   ELOOP}));
        EXPECT_FALSE(exists("/Library/new"));
    }));
}

// Every operation goes this way.
TEST(TrustedPath, NoOperationChangesAnythingBehindSomebodysLink) {
    EXPECT_TRUE(OwnRoot().run([] {
        PosixFileManager files;
        makeFolder("/Users/alice/private", 0700);
        makeFile("/Users/alice/private/SNT", "alice's", 0600);
        makeFolder("/Users/alice/private/folder");
        makeFile("/Users/alice/private/folder/file", "alice's", 0600);
        makeFile("/System/source");
        makeLink("/Users/alice/private", "/Applications/NORVIK");
        const std::string reason =
            "\"/Applications/NORVIK\" on the way to it is a link that root alone does not control";
        const auto url = [](const std::string& name) { return URL::fileURL("/Applications/NORVIK/" + name); };
        EXPECT_EQ(*files.removeItem(url("SNT")),
                  (Platform::Error{"\"/Applications/NORVIK/SNT\" could not be removed: " + reason, ELOOP}));
        EXPECT_EQ(
            *files.copyItem(url("SNT"), URL::fileURL("/System/stolen")),
            (Platform::Error{
                "\"/Applications/NORVIK/SNT\" could not be copied to \"/System/stolen\": " + reason, ELOOP}));
        EXPECT_EQ(
            *files.copyItem(URL::fileURL("/System/source"), url("new")),
            (Platform::Error{
                "\"/System/source\" could not be copied to \"/Applications/NORVIK/new\": " + reason, ELOOP}));
        EXPECT_EQ(files.createDirectory(url("new"), false)->code, ELOOP);
        EXPECT_EQ(files.setMode(url("SNT"), 0777), EBADF);
        EXPECT_EQ(files.setOwner(url("SNT"), 0, 77), EBADF);
        files.setOwnerOfContents(url("folder"), 0, 77,
                                 [](const URL& item, int) { ADD_FAILURE() << item.path(); });
        EXPECT_EQ(contentsOf("/Users/alice/private/SNT"), "alice's");
        EXPECT_EQ(statusOf("/Users/alice/private/SNT").st_mode, S_IFREG | mode_t{0600});
        EXPECT_EQ(statusOf("/Users/alice/private/folder/file").st_gid, ::getegid());
        EXPECT_FALSE(exists("/Users/alice/private/new"));
        EXPECT_FALSE(exists("/System/stolen"));
    }));
}

// A folder becomes a link after it was seen, and before it is opened.
TEST(TrustedPath, NoticesAFolderThatBecomesALink) {
    EXPECT_TRUE(OwnRoot().run([] {
        PosixFileManager files;
        makeFolder("/Applications/NORVIK");
        makeFile("/Applications/NORVIK/SNT");
        makeFile("/Users/alice/SNT");
        const Interference swap(Moment::openingOnTheWay, "NORVIK", [](int) {
            ASSERT_EQ(::rename("/Applications/NORVIK", "/Applications/away"), 0);
            makeLink("/Users/alice", "/Applications/NORVIK");
        });
        EXPECT_EQ(files.removeItem(URL::fileURL("/Applications/NORVIK/SNT"))->code, ELOOP);
        EXPECT_EQ(swap.count(), 1);
        EXPECT_TRUE(exists("/Users/alice/SNT"));
        EXPECT_TRUE(exists("/Applications/away/SNT"));
    }));
}

// A link that was met makes room for a folder: no way for this time.
TEST(TrustedPath, NoticesALinkThatBecomesAFolder) {
    EXPECT_TRUE(OwnRoot().run([] {
        PosixFileManager files;
        makeFolder("/Applications/folder");
        makeFile("/Applications/folder/SNT");
        makeLink("/Users/alice", "/Applications/NORVIK");
        const Interference swap(Moment::readingLinkOnWay, "NORVIK", [](int) {
            ASSERT_EQ(::unlink("/Applications/NORVIK"), 0);
            ASSERT_EQ(::rename("/Applications/folder", "/Applications/NORVIK"), 0);
        });
        EXPECT_EQ(files.removeItem(URL::fileURL("/Applications/NORVIK/SNT"))->code, ENOTDIR);
        EXPECT_EQ(swap.count(), 1);
        EXPECT_TRUE(exists("/Applications/NORVIK/SNT"));
    }));
}

// The walk stands in the folder, not at its path.
TEST(TrustedPath, StaysInAFolderThatIsMovedAway) {
    EXPECT_TRUE(OwnRoot().run([] {
        PosixFileManager files;
        makeFolder("/Applications/NORVIK");
        makeFolder("/Applications/NORVIK/below");
        makeFile("/Applications/NORVIK/below/SNT");
        makeFolder("/Users/alice/below");
        makeFile("/Users/alice/below/SNT");
        const Interference swap(Moment::openingOnTheWay, "below", [](int) {
            ASSERT_EQ(::rename("/Applications/NORVIK", "/Applications/away"), 0);
            makeLink("/Users/alice", "/Applications/NORVIK");
        });
        EXPECT_FALSE(files.removeItem(URL::fileURL("/Applications/NORVIK/below/SNT")));
        EXPECT_EQ(swap.count(), 1);
        EXPECT_TRUE(exists("/Users/alice/below/SNT"));
        EXPECT_FALSE(exists("/Applications/away/below/SNT"));
    }));
}

}  // namespace
}  // namespace PlatformTests
