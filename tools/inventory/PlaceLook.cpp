#include "PlaceLook.h"

#include <algorithm>
#include <cerrno>

namespace Inventory {

namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalButForCase(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char left, char right) { return lower(left) == lower(right); });
}

/// The place that this item is under another spelling. A second name of a file (a hard link) is a separate
/// item: removing one of them leaves the other.
Place* sameItem(std::vector<Place>& places, const std::string& path, const Platform::ItemFacts& facts) {
    const auto same = std::find_if(places.begin(), places.end(), [&](const Place& place) {
        return place.identity == facts.identity && equalButForCase(place.paths.front(), path);
    });
    return same == places.end() ? nullptr : &*same;
}

/// Adds the meaning of `records` for an item of this kind. A program's meaning takes precedence.
void addMeaning(Place& place, const std::vector<KnownRecord>& records) {
    for (const KnownRecord& record : records) {
        if (record.onlyAs && *record.onlyAs != place.kind) {
            continue;
        }
        if (isProgram(record.role)) {
            place.role = record.role;
        }
        const std::string generation(record.generation);
        if (!generation.empty() && std::find(place.generations.begin(), place.generations.end(),
                                             generation) == place.generations.end()) {
            place.generations.push_back(generation);
        }
    }
}

void addPlace(const KnownItem& item, const Platform::ItemFacts& facts, Inventory& inventory) {
    const std::string& path = item.path.path();
    if (Place* const same = sameItem(inventory.places, path, facts)) {
        same->paths.push_back(path);
        addMeaning(*same, item.records);
        return;
    }
    const auto first = std::find_if(
        item.records.begin(), item.records.end(),
        [&facts](const KnownRecord& record) { return !record.onlyAs || *record.onlyAs == facts.kind; });
    const Role role = first == item.records.end() ? Role::data : first->role;
    inventory.places.push_back({{path}, facts.kind, facts.identity, role, {}});
    addMeaning(inventory.places.back(), item.records);
}

}  // namespace

bool meansAbsent(const Platform::Error& error) {
    return error.code == ENOENT || error.code == ENOTDIR;
}

void lookAtPlaces(const Viewpoint& viewpoint, Inventory& inventory) {
    const std::vector<Base::URL> folders = installationFolders();
    for (const KnownItem& item : knownItems()) {
        Platform::Error error;
        const auto facts = viewpoint.files.look(item.path, error);
        if (facts) {
            addPlace(item, *facts, inventory);
            inventory.hasInstallationFolder =
                inventory.hasInstallationFolder ||
                std::find(folders.begin(), folders.end(), item.path) != folders.end();
        } else if (!meansAbsent(error)) {
            inventory.blind.push_back(error.description);
        }
    }
    Platform::Error ignored;
    inventory.hasRuntimeSupport = viewpoint.files.look(runtimeSupport(), ignored).has_value();
}

}  // namespace Inventory
