#include "macsim/MacBuilder.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Support/Files.h"
#include "macsim/Refusal.h"

namespace Simulator {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void failed(const std::string& path) {
    throw Refusal("cannot make " + path + ": " + std::strerror(errno));
}

[[noreturn]] void failed(const std::string& path, const std::error_code& error) {
    throw Refusal("cannot make " + path + ": " + error.message());
}

}  // namespace

FileProgress::~FileProgress() {
    if (isShown_) {
        std::fputs("\r\x1b[K", stderr);
    }
}

void FileProgress::count() {
    constexpr std::size_t kStep = 250;
    if (++files_ % kStep == 0 && ::isatty(STDERR_FILENO) == 1) {
        isShown_ = true;
        std::fprintf(stderr, "\r\x1b[K%zu files...", files_);
    }
}

void MacBuilder::makeParent(const std::string& path) {
    const std::string parent = path.substr(0, path.rfind('/'));
    if (parent == lastParent_) {
        return;
    }
    std::error_code error;
    fs::create_directories(hostPath(parent), error);
    if (error) {
        failed(path, error);
    }
    lastParent_ = parent;
}

void MacBuilder::setAccess(const std::string& path, const Access& access) {
    const std::string host = hostPath(path);
    if (((access.uid != 0 || access.gid != 0) && ::lchown(host.c_str(), access.uid, access.gid) != 0) ||
        ::chmod(host.c_str(), access.mode) != 0) {
        failed(path);
    }
}

void MacBuilder::folder(const std::string& path, const Access& access) {
    std::error_code error;
    fs::create_directories(hostPath(path), error);
    if (error) {
        failed(path, error);
    }
    setAccess(path, access);
}

void MacBuilder::file(const std::string& path, std::string_view bytes, const Access& access) {
    makeParent(path);
    const Descriptor file(
        ::open(hostPath(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.valid() || !writeAll(file.get(), bytes)) {
        failed(path);
    }
    setAccess(path, access);
    progress_.count();
}

void MacBuilder::link(const std::string& path, const std::string& target) {
    makeParent(path);
    if (::symlink(target.c_str(), hostPath(path).c_str()) != 0) {
        failed(path);
    }
}

void MacBuilder::propertyList(const std::string& path, const PropertyList& value, PropertyListForm form) {
    file(path, writePropertyList(value, form));
}

void MacBuilder::program(const std::string& name, const std::string& path, const Access& access) {
    makeParent(path);
    std::error_code error;
    fs::copy_file(programs_ + "/" + name, hostPath(path), fs::copy_options::overwrite_existing, error);
    if (error) {
        failed(path, error);
    }
    setAccess(path, access);
}

void MacBuilder::copyFolder(const std::string& source, const std::string& path) {
    makeParent(path);
    std::error_code error;
    fs::copy(source, hostPath(path), fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    if (error) {
        failed(path, error);
    }
    // Only root can change installed items, whatever the umask of the build was.
    const auto protect = [](const fs::path& item) {
        fs::permissions(
            item, fs::perms::group_write | fs::perms::others_write | fs::perms::set_uid | fs::perms::set_gid,
            fs::perm_options::remove | fs::perm_options::nofollow);
    };
    protect(hostPath(path));
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(hostPath(path))) {
        if (!entry.is_symlink()) {
            protect(entry.path());
        }
    }
}

bool MacBuilder::exists(const std::string& path) const {
    std::error_code error;
    return fs::exists(fs::symlink_status(hostPath(path), error));
}

}  // namespace Simulator
