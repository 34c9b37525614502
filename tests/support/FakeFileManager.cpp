#include "support/FakeFileManager.h"

#include <cerrno>
#include <cstring>
#include <iterator>
#include <set>

namespace TestSupport {

namespace {

std::string parentOf(const std::string& path) {
    return Base::URL::fileURL(path).deletingLastPathComponent().path();
}

bool isBelow(const std::string& path, const std::string& folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

Platform::Error missing(const std::string& path) {
    return {"\"" + path + "\" does not exist", ENOENT};
}

Platform::Error notRemoved(const std::string& path, int code) {
    return {"\"" + path + "\" could not be removed: " + std::strerror(code), code};
}

/// Whether nobody but root can have put an entry into this folder, or taken its place.
bool isRootsAlone(const FakeFileManager::Node& node) {
    constexpr std::uint16_t kWritableByOthers = 022;
    return node.owner == 0 && (node.mode & kWritableByOthers) == 0;
}

}  // namespace

void FakeFileManager::addFolder(const std::string& path) {
    for (std::string each = path; each != "/"; each = parentOf(each)) {
        nodes.try_emplace(each, Node{Node::Kind::folder, "", 0755, 0, 0, "", ++inodes_});
    }
}

void FakeFileManager::addFile(const std::string& path, const std::string& contents) {
    addFolder(parentOf(path));
    nodes[path] = Node{};
    nodes[path].contents = contents;
    nodes[path].inode = ++inodes_;
}

void FakeFileManager::addLink(const std::string& path, const std::string& target) {
    addFolder(parentOf(path));
    nodes[path] = Node{Node::Kind::link, target, 0755, 501, 20, "", ++inodes_};
}

void FakeFileManager::failOn(const std::string& operation, const std::string& path, Platform::Error error) {
    failures_[{operation, path}] = std::move(error);
}

std::optional<Platform::Error> FakeFileManager::failure(const std::string& operation,
                                                        const std::string& path) {
    const auto found = failures_.find({operation, path});
    if (found == failures_.end()) {
        return std::nullopt;
    }
    Platform::Error error = found->second;
    failures_.erase(found);
    return error;
}

std::optional<Platform::Error> FakeFileManager::injected(const std::string& operation,
                                                         const std::string& path) {
    calls_.push_back({operation, path});
    return failure(operation, path);
}

std::optional<Platform::FileIdentity> FakeFileManager::identity(const Base::URL& item) {
    const auto found = nodes.find(item.path());
    return found == nodes.end() ? std::nullopt
                                : std::optional(Platform::FileIdentity{1, found->second.inode, 0, 0});
}

std::optional<Platform::Error> FakeFileManager::createDirectory(const Base::URL& directory,
                                                                bool withIntermediates) {
    const std::string& path = directory.path();
    if (auto error = injected(withIntermediates ? "create all" : "create", path)) {
        return error;
    }
    if (!withIntermediates && (has(path) || !has(parentOf(path)))) {
        return Platform::Error{"\"" + path + "\" could not be created", EEXIST};
    }
    addFolder(path);
    return std::nullopt;
}

std::optional<bool> FakeFileManager::hasVisibleEntries(const Base::URL& directory, Platform::Error& error) {
    const std::string& folder = directory.path();
    if (const auto injectedError = injected("list", folder)) {
        error = *injectedError;
        return std::nullopt;
    }
    if (!has(folder) || at(folder).kind != Node::Kind::folder) {
        error = {"\"" + folder + "\" could not be listed", ENOENT};
        return std::nullopt;
    }
    for (const auto& [path, node] : nodes) {
        if (isBelow(path, folder) && path[folder.size() + 1] != '.') {
            return true;
        }
    }
    return false;
}

std::optional<Platform::Error> FakeFileManager::removeItem(const Base::URL& item) {
    const std::string& path = item.path();
    if (auto error = injected("remove", path)) {
        return error;
    }
    std::string resolved;
    if (auto error = resolveWay(path, resolved)) {
        return error;
    }
    return has(resolved) ? removeTree(resolved) : missing(path);
}

std::optional<Platform::Error> FakeFileManager::resolveWay(const std::string& path,
                                                           std::string& resolved) const {
    resolved.clear();
    bool holderIsRootsAlone = true;
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        const std::size_t begin = path.rfind('/', slash - 1);
        resolved += path.substr(begin, slash - begin);
        const auto found = nodes.find(resolved);
        if (found == nodes.end()) {
            return missing(path);
        }
        if (found->second.kind == Node::Kind::file) {
            return notRemoved(path, ENOTDIR);
        }
        if (found->second.kind == Node::Kind::link) {
            if (!holderIsRootsAlone || found->second.owner != 0) {
                return notRemoved(path, ELOOP);
            }
            resolved = found->second.target;
        }
        holderIsRootsAlone = has(resolved) && isRootsAlone(at(resolved));
    }
    resolved += path.substr(path.rfind('/'));
    return std::nullopt;
}

std::optional<Platform::Error> FakeFileManager::removeTree(const std::string& path) {
    // Everything below the folder lies between these two, parents before what they hold.
    const auto contents = nodes.lower_bound(path + "/");
    const auto end = nodes.lower_bound(path + "0");
    std::vector<std::string> items{path};
    for (auto node = contents; node != end; ++node) {
        items.push_back(node->first);
    }
    std::optional<Platform::Error> failed;
    std::set<std::string> kept;
    for (auto item = items.rbegin(); item != items.rend(); ++item) {
        const auto resists = resisting.find(*item);
        if (resists == resisting.end() && !kept.contains(*item)) {
            nodes.erase(*item);
            continue;
        }
        if (resists != resisting.end()) {
            failed = notRemoved(*item, resists->second);
        }
        kept.insert(parentOf(*item));
    }
    return failed;
}

std::optional<Platform::Error> FakeFileManager::copyItem(const Base::URL& source,
                                                         const Base::URL& destination) {
    const std::string& from = source.path();
    const std::string& to = destination.path();
    if (auto error = injected("copy", from)) {
        return error;
    }
    if (!has(from)) {
        return missing(from);
    }
    if (has(to)) {
        return Platform::Error{"\"" + to + "\" exists already", EEXIST};
    }
    std::map<std::string, Node> copies;
    for (const auto& [path, node] : nodes) {
        if (path == from || isBelow(path, from)) {
            copies[to + path.substr(from.size())] = node;
        }
    }
    nodes.merge(copies);
    return std::nullopt;
}

bool FakeFileManager::itemExists(const Base::URL& item) {
    const std::string& path = item.path();
    existenceTests.push_back(path);
    if (!has(path)) {
        return path == "/";
    }
    return at(path).kind != Node::Kind::link || has(at(path).target);
}

int FakeFileManager::setMode(const Base::URL& item, std::uint16_t mode) {
    calls_.push_back({"chmod", item.path(), mode});
    if (const auto error = failure("chmod", item.path())) {
        return error->code;
    }
    if (!has(item.path())) {
        return EBADF;
    }
    nodes[item.path()].mode = mode;
    return 0;
}

int FakeFileManager::setOwner(const Base::URL& item, std::uint32_t owner, std::uint32_t group) {
    if (const auto error = injected("chown", item.path())) {
        return error->code;
    }
    if (!has(item.path())) {
        return EBADF;
    }
    nodes[item.path()].owner = owner;
    nodes[item.path()].group = group;
    return 0;
}

void FakeFileManager::setOwnerOfContents(
    const Base::URL& directory, std::uint32_t owner, std::uint32_t group,
    const std::function<void(const Base::URL& item, int error)>& failed) {
    calls_.push_back({"chown contents of", directory.path()});
    for (auto& [path, node] : nodes) {
        if (!isBelow(path, directory.path())) {
            continue;
        }
        const auto failure = ownerFailures.find(path);
        if (failure != ownerFailures.end()) {
            failed(Base::URL::fileURL(path), failure->second);
        } else {
            node.owner = owner;
            node.group = group;
        }
    }
}

}  // namespace TestSupport
