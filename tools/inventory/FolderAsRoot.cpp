#include "FolderAsRoot.h"

#include <cerrno>

namespace Inventory {

FolderAsRoot::FolderAsRoot(Platform::FileFacts& files, std::string folder)
    : files_(files), folder_(std::move(folder)) {}

Base::URL FolderAsRoot::real(const Base::URL& item) const {
    return Base::URL::fileURL(folder_ + item.path());
}

std::optional<Platform::ItemFacts> FolderAsRoot::look(const Base::URL& item, Platform::Error& error) {
    const std::string& path = item.path();
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        const auto facts = files_.look(real(Base::URL::fileURL(path.substr(0, end))), error);
        if (!facts) {
            return std::nullopt;
        }
        if (facts->kind == Platform::ItemKind::link) {
            error = {"\"" + folder_ + path + "\" could not be looked at: \"" + folder_ + path.substr(0, end) +
                         "\" is a link",
                     ELOOP};
            return std::nullopt;
        }
    }
    return files_.look(real(item), error);
}

Platform::TreeSize FolderAsRoot::measure(const Base::URL& item,
                                         const std::vector<Platform::ItemIdentity>& without,
                                         const std::function<void(const Platform::TreeSize&)>& counted) {
    return files_.measure(real(item), without, counted);
}

}  // namespace Inventory
