#include "MacView.h"

#include <unistd.h>

#include <cstdlib>

#include "DisplayText.h"
#include "Platform/InspectionPorts.h"
#include "Terminal.h"

namespace Inspect {

namespace {

std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

/// The path from the root folder.
std::string absolute(const std::string& path) {
    if (path.starts_with('/')) {
        return path;
    }
    std::unique_ptr<char, decltype(&std::free)> here(::getcwd(nullptr, 0), &std::free);
    return std::string(here != nullptr ? here.get() : "") + "/" + path;
}

}  // namespace

MacView::MacView(std::string root) : root_(std::move(root)) {
    if (!root_.empty()) {
        folder_ = std::make_unique<Inventory::FolderAsRoot>(Platform::createInspectionPorts().files, root_);
    }
}

std::unique_ptr<MacView> MacView::make(const std::optional<std::string>& root, std::string& why) {
    if (!root || root == "/") {
        return std::unique_ptr<MacView>(new MacView(""));
    }
    const std::string folder = withoutTrailingSlashes(absolute(*root));
    std::unique_ptr<MacView> view(new MacView(folder));
    // Otherwise a folder without a Mac would count as one without the product.
    for (const char* part : {"/Applications", "/Library"}) {
        Platform::Error error;
        const auto facts = view->files().look(Base::URL::fileURL(part), error);
        if (!facts || facts->kind != Platform::ItemKind::folder) {
            why = shown(std::string_view(*root)) + ": is not the root folder of a Mac: it has no folder " +
                  (part + 1);
            return nullptr;
        }
    }
    return view;
}

Platform::FileFacts& MacView::files() const {
    return folder_ ? *folder_ : Platform::createInspectionPorts().files;
}

Inventory::Inventory MacView::look() const {
    const Inventory::Viewpoint viewpoint{files(), Platform::createInspectionPorts().extensions, ::getpid(),
                                         root_};
    return Inventory::settledLook([&viewpoint] { return Inventory::look(viewpoint); });
}

std::vector<Platform::TreeSize> MacView::sizesOf(const Inventory::Inventory& inventory) const {
    Progress progress;
    return contentsOf(inventory.places, files(), [&progress](std::uint64_t count) {
        progress.show("Counting files: " + std::to_string(count));
    });
}

std::vector<Platform::TreeSize> contentsOf(const std::vector<Inventory::Place>& places,
                                           Platform::FileFacts& files,
                                           const std::function<void(std::uint64_t)>& counted) {
    std::vector<Platform::TreeSize> sizes;
    std::uint64_t before = 0;
    for (const Inventory::Place& place : places) {
        sizes.push_back(files.measure(
            Base::URL::fileURL(place.paths.front()), {},
            [&counted, before](const Platform::TreeSize& soFar) { counted(before + soFar.files); }));
        before += sizes.back().files;
    }
    return sizes;
}

Inventory::Version ownVersion() {
    return {SENTREL_SHORT_VERSION, SENTREL_BUILD};
}

}  // namespace Inspect
