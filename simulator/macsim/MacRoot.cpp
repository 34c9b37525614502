#include "macsim/MacRoot.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Support/Machine.h"
#include "macsim/Refusal.h"

namespace Simulator {

namespace {

constexpr std::size_t kMaximumFile = 256U << 20U;

}  // namespace

MacRoot::MacRoot(const std::string& folder) {
    std::error_code error;
    const auto absolute = std::filesystem::canonical(folder, error);
    bool isForbidden = error == std::errc::permission_denied;
    if (!error) {
        folder_ = absolute.string();
        root_ = Descriptor(::open(folder_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    if (root_.valid()) {
        const Descriptor description = open(kMachineFile, O_RDONLY | O_NONBLOCK);
        if (description.valid()) {
            return;
        }
        isForbidden = errno == EACCES;
    }
    throw Refusal(folder + (isForbidden ? ": Permission denied" : " is not a simulated Mac"));
}

Descriptor MacRoot::open(std::string_view path, int flags, unsigned mode) const {
    open_how how{};
    how.flags = static_cast<unsigned>(flags) | O_CLOEXEC;
    how.mode = mode;
    how.resolve = RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS;
    return Descriptor(
        static_cast<int>(::syscall(SYS_openat2, root_.get(), std::string(path).c_str(), &how, sizeof how)));
}

bool MacRoot::exists(std::string_view path) const {
    return open(path, O_PATH | O_NOFOLLOW).valid();
}

std::optional<std::string> MacRoot::read(std::string_view path) const {
    const Descriptor file = open(path, O_RDONLY | O_NONBLOCK);
    return file.valid() ? readAll(file.get(), kMaximumFile) : std::nullopt;
}

bool MacRoot::write(std::string_view path, std::string_view bytes, unsigned mode, std::uint32_t uid,
                    std::uint32_t gid) const {
    remove(path);
    const Descriptor file = open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
    return file.valid() && writeAll(file.get(), bytes) &&
           ((uid == 0 && gid == 0) || ::fchown(file.get(), uid, gid) == 0) && ::fchmod(file.get(), mode) == 0;
}

void MacRoot::remove(std::string_view path) const {
    const std::size_t slash = path.rfind('/');
    const Descriptor parent = open(path.substr(0, slash + 1), O_PATH | O_DIRECTORY);
    if (parent.valid()) {
        ::unlinkat(parent.get(), std::string(path.substr(slash + 1)).c_str(), 0);
    }
}

}  // namespace Simulator
