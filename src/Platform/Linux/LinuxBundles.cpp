#include "Platform/Linux/LinuxBundles.h"

#include <fcntl.h>
#include <plist/plist.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <map>

#include "Platform/Linux/ProcessFiles.h"
#include "Platform/Linux/PropertyListGuard.h"
#include "Platform/Posix/Descriptor.h"

namespace Platform::Linux {

namespace {

using InfoStrings = std::map<std::string, std::string>;

constexpr std::size_t kLargestInfo = std::size_t{1} << 20;

std::optional<std::string> readInfoFile(int bundle) {
    // Without O_NONBLOCK a FIFO of that name would hold this up.
    const Posix::Descriptor file(::openat(bundle, "Contents/Info.plist", O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0 ||
        static_cast<std::size_t>(status.st_size) > kLargestInfo) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t length = 0;
    while (length < bytes.size()) {
        const ssize_t count = ::read(file.get(), bytes.data() + length, bytes.size() - length);
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        length += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes.resize(length);
    return bytes;
}

struct PlistDeleter {
    void operator()(void* plist) const { ::plist_free(plist); }
};
using Plist = std::unique_ptr<void, PlistDeleter>;

Plist parse(const std::string& bytes) {
    plist_t plist = nullptr;
    const auto length = static_cast<std::uint32_t>(bytes.size());
    if (isBinaryPropertyList(bytes)) {
        ::plist_from_bin(bytes.data(), length, &plist);
    } else {
        ::plist_from_xml(bytes.data(), length, &plist);
    }
    return Plist(plist);
}

/// The strings of the dictionary on top; no other value is ever asked for.
InfoStrings stringsOf(plist_t dictionary) {
    InfoStrings result;
    plist_dict_iter iterator = nullptr;
    ::plist_dict_new_iter(dictionary, &iterator);
    if (iterator == nullptr) {
        return result;
    }
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        ::plist_dict_next_item(dictionary, iterator, &key, &value);
        if (value == nullptr) {
            std::free(key);
            break;
        }
        std::uint64_t length = 0;
        const char* text = key != nullptr && ::plist_get_node_type(value) == PLIST_STRING
                               ? ::plist_get_string_ptr(value, &length)
                               : nullptr;
        if (text != nullptr) {
            result[key] = std::string(text, length);
        }
        std::free(key);
    }
    std::free(iterator);
    return result;
}

InfoStrings readInfo(int bundle) {
    const std::optional<std::string> bytes = readInfoFile(bundle);
    if (!bytes || !isTamePropertyList(*bytes)) {
        return {};
    }
    const Plist plist = parse(*bytes);
    return plist && ::plist_get_node_type(plist.get()) == PLIST_DICT ? stringsOf(plist.get()) : InfoStrings();
}

class FolderBundle final : public Bundle {
  public:
    FolderBundle(Base::URL url, InfoStrings info) : url_(std::move(url)), info_(std::move(info)) {}

    Base::URL url() const override { return url_; }

    std::optional<std::string> infoString(const std::string& key) const override {
        const auto found = info_.find(key);
        return found != info_.end() ? std::optional(found->second) : std::nullopt;
    }

    std::optional<Base::URL> resource(const std::string& name, const std::string& type) const override {
        Base::URL file = url_.appendingPathComponent("Contents/Resources").appendingPathComponent(name);
        if (!type.empty()) {
            file = file.appendingPathExtension(type);
        }
        struct stat status {};
        return ::stat(file.path().c_str(), &status) == 0 ? std::optional(file) : std::nullopt;
    }

  private:
    const Base::URL url_;
    const InfoStrings info_;
};

}  // namespace

LinuxBundles::LinuxBundles() : executable_(executablePath(::getpid())) {}

std::unique_ptr<Bundle> LinuxBundles::open(const Base::URL& location) {
    const Posix::Descriptor folder(::open(location.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder ? std::make_unique<FolderBundle>(location, readInfo(folder.get())) : nullptr;
}

std::unique_ptr<Bundle> LinuxBundles::mainBundle() {
    const Base::URL folder = Base::URL::fileURL(executable_).deletingLastPathComponent();
    const Base::URL contents = folder.deletingLastPathComponent();
    const Base::URL application = contents.deletingLastPathComponent();
    const bool bundled = folder.lastPathComponent() == "MacOS" &&
                         contents.lastPathComponent() == "Contents" && application.path().ends_with(".app");
    const Base::URL& location = bundled ? application : folder;
    std::unique_ptr<Bundle> bundle = open(location);
    return bundle ? std::move(bundle) : std::make_unique<FolderBundle>(location, InfoStrings());
}

}  // namespace Platform::Linux
