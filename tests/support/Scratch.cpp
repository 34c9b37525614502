#include "support/Scratch.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <utility>

namespace PlatformTests {

namespace {

constexpr uid_t kUnprivileged = 65534;

/// Calls `each` with the name of every entry.
void forEntries(int folder, const std::function<void(const char* name)>& each) {
    const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* stream = own >= 0 ? ::fdopendir(own) : nullptr;
    if (stream == nullptr) {
        return;
    }
    while (const dirent* entry = ::readdir(stream)) {
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..") {
            each(entry->d_name);
        }
    }
    ::closedir(stream);
}

int openWhateverItsMode(int parent, const char* name) {
    struct stat status {};
    if (::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISDIR(status.st_mode)) {
        return -1;
    }
    ::fchmodat(parent, name, 0700, 0);
    return ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

bool makeAccessible(int parent, const char* name) {
    const int folder = openWhateverItsMode(parent, name);
    return folder >= 0 && ::close(folder) == 0;
}

/// Empties a folder independently of the code under test: subfolders of subfolders are moved up, so that no
/// depth matters.
void removeContents(int top) {
    bool found = true;
    int moved = 0;
    while (std::exchange(found, false)) {
        forEntries(top, [&](const char* name) {
            if (::unlinkat(top, name, 0) == 0) {
                return;
            }
            const int folder = openWhateverItsMode(top, name);
            forEntries(folder, [&](const char* below) {
                const std::string target = "moved " + std::to_string(moved++);
                if (::unlinkat(folder, below, 0) != 0 && makeAccessible(folder, below)) {
                    found = ::renameat(folder, below, top, target.c_str()) == 0 || found;
                }
            });
            ::close(folder);
            ::unlinkat(top, name, AT_REMOVEDIR);
        });
    }
}

}  // namespace

Scratch::Scratch(std::string base) : path_(std::move(base) + "/platform-tests-XXXXXX") {
    if (::mkdtemp(path_.data()) == nullptr) {
        std::perror(path_.c_str());
        std::abort();
    }
    ::chmod(path_.c_str(), 0755);
}

Scratch::~Scratch() {
    const int folder = openWhateverItsMode(AT_FDCWD, path_.c_str());
    removeContents(folder);
    ::close(folder);
    ::rmdir(path_.c_str());
}

std::string Scratch::usualBase() {
    if (const char* chosen = std::getenv("TMPDIR")) {
        return chosen;
    }
    // Thousands of folders take seconds on some disks.
    return ::access("/dev/shm", W_OK | X_OK) == 0 ? "/dev/shm" : "/tmp";
}

std::string Scratch::currentFolder() {
    char* path = ::getcwd(nullptr, 0);
    std::string result(path != nullptr ? path : "/tmp");
    std::free(path);
    return result;
}

void makeFolder(const std::string& path, mode_t mode) {
    ASSERT_EQ(::mkdir(path.c_str(), 0700), 0) << path;
    ASSERT_EQ(::chmod(path.c_str(), mode), 0) << path;
}

void makeFile(const std::string& path, std::string_view contents, mode_t mode) {
    std::ofstream(path, std::ios::binary) << contents;
    ASSERT_EQ(::chmod(path.c_str(), mode), 0) << path;
}

void makeLink(const std::string& target, const std::string& path) {
    ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0) << path;
}

void makeDeepFolders(const std::string& top, int depth) {
    int folder = ::open(top.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < depth && folder >= 0; ++level) {
        ASSERT_EQ(::mkdirat(folder, "d", 0755), 0);
        const int next = ::openat(folder, "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(folder);
        folder = next;
    }
    const int file = ::openat(folder, "leaf", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    ASSERT_GE(file, 0);
    ::close(file);
    ::close(folder);
}

Depth depthOf(const std::string& top) {
    Depth result;
    int folder = ::open(top.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    while (folder >= 0) {
        struct stat status {};
        result.leaf = ::fstatat(folder, "leaf", &status, AT_SYMLINK_NOFOLLOW) == 0;
        const int next = ::openat(folder, "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(folder);
        folder = next;
        result.folders += next >= 0 ? 1 : 0;
    }
    return result;
}

bool exists(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

std::string targetOf(const std::string& path) {
    std::array<char, 4096> target{};
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    return length > 0 ? std::string(target.data(), static_cast<std::size_t>(length)) : std::string();
}

int openDescriptors() {
    int count = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        count += ::fcntl(descriptor, F_GETFD) >= 0 ? 1 : 0;
    }
    return count;
}

std::optional<int> withoutPrivileges(const std::function<int()>& check) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::geteuid() == 0 && (::setegid(kUnprivileged) != 0 || ::seteuid(kUnprivileged) != 0)) {
            ::_exit(255);
        }
        ::_exit(check());
    }
    int status = 0;
    const bool ended = child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status);
    return ended ? std::optional(WEXITSTATUS(status)) : std::nullopt;
}

void giveToUnprivileged(const std::string& path) {
    if (::geteuid() == 0) {
        ASSERT_EQ(::lchown(path.c_str(), kUnprivileged, kUnprivileged), 0) << path;
    }
}

}  // namespace PlatformTests
