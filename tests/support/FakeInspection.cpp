#include "support/FakeInspection.h"

#include <algorithm>
#include <cerrno>

namespace TestSupport {

using Platform::ItemKind;

void FakeFileFacts::add(const std::string& path, ItemKind kind, std::uint64_t bytes) {
    for (Base::URL folder = Base::URL::fileURL(path).deletingLastPathComponent(); folder.path() != "/";
         folder = folder.deletingLastPathComponent()) {
        if (!items.contains(folder.path())) {
            items[folder.path()] = {ItemKind::folder, 0, {1, next_++}};
        }
    }
    items[path] = {kind, bytes, {1, next_++}};
}

std::optional<Platform::ItemFacts> FakeFileFacts::look(const Base::URL& item, Platform::Error& error) {
    if (onLook) {
        onLook(item.path());
    }
    if (const auto failure = failures.find(item.path()); failure != failures.end()) {
        error = failure->second;
        return std::nullopt;
    }
    const auto found = items.find(item.path());
    if (found == items.end()) {
        error = {"\"" + item.path() + "\" could not be looked at: No such file or directory", ENOENT};
        return std::nullopt;
    }
    return found->second;
}

Platform::TreeSize FakeFileFacts::measure(const Base::URL& item,
                                          const std::vector<Platform::ItemIdentity>& without,
                                          const std::function<void(const Platform::TreeSize&)>& counted) {
    const auto isLeftOut = [&](const std::string& path) {
        return std::any_of(items.begin(), items.end(), [&](const auto& entry) {
            const bool isOrHolds = path == entry.first || path.starts_with(entry.first + "/");
            return isOrHolds &&
                   std::find(without.begin(), without.end(), entry.second.identity) != without.end();
        });
    };
    Platform::TreeSize size;
    for (const auto& [path, facts] : items) {
        const bool isInside = path == item.path() || path.starts_with(item.path() + "/");
        if (!isInside || isLeftOut(path)) {
            continue;
        }
        size.files += facts.kind == ItemKind::file ? 1 : 0;
        size.folders += facts.kind == ItemKind::folder ? 1 : 0;
        size.links += facts.kind == ItemKind::link ? 1 : 0;
        size.others += facts.kind == ItemKind::other ? 1 : 0;
        size.bytes += facts.kind == ItemKind::file ? facts.bytes : 0;
    }
    if (const auto unread = unreadIn.find(item.path()); unread != unreadIn.end()) {
        size.unread = unread->second;
    }
    counted(size);
    return size;
}

std::optional<bool> FakeLoadedExtensions::isLoaded(const std::string& bundleIdentifier,
                                                   Platform::Error& error) {
    if (failure) {
        error = *failure;
        return std::nullopt;
    }
    return loaded.contains(bundleIdentifier);
}

}  // namespace TestSupport
