#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/FileFacts.h"
#include "Platform/LoadedExtensions.h"

namespace TestSupport {

/// Items in memory. Each gets its own identity; the folders above it are created along with it.
class FakeFileFacts final : public Platform::FileFacts {
  public:
    void add(const std::string& path, Platform::ItemKind kind = Platform::ItemKind::file,
             std::uint64_t bytes = 0);
    void addFolder(const std::string& path) { add(path, Platform::ItemKind::folder); }
    /// Makes `path` another spelling of an item that is there.
    void addSpelling(const std::string& path, const std::string& of) { items[path] = items.at(of); }
    void remove(const std::string& path) { items.erase(path); }

    [[nodiscard]] std::optional<Platform::ItemFacts> look(const Base::URL& item,
                                                          Platform::Error& error) override;
    /// Counts every added item except those in `without`; `unread` of it comes from `unreadIn`.
    [[nodiscard]] Platform::TreeSize measure(
        const Base::URL& item, const std::vector<Platform::ItemIdentity>& without,
        const std::function<void(const Platform::TreeSize&)>& counted) override;

    std::map<std::string, Platform::ItemFacts> items;
    /// Errors of look, by path.
    std::map<std::string, Platform::Error> failures;
    std::map<std::string, std::uint64_t> unreadIn;
    /// Called before each look.
    std::function<void(const std::string&)> onLook;

  private:
    std::uint64_t next_ = 1;
};

class FakeLoadedExtensions final : public Platform::LoadedExtensions {
  public:
    [[nodiscard]] std::optional<bool> isLoaded(const std::string& bundleIdentifier,
                                               Platform::Error& error) override;

    std::set<std::string> loaded;
    /// The error of every question.
    std::optional<Platform::Error> failure;
};

}  // namespace TestSupport
