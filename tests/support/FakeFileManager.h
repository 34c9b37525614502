#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/FileManager.h"
#include "Platform/FolderNames.h"
#include "support/Call.h"

namespace TestSupport {

/// A file system in memory. Paths are absolute; parents need not be made by hand. Removal follows a link on
/// the way to the item only if nobody but root could have made it; the other operations use every path
/// unchanged.
class FakeFileManager final : public Platform::FileManager {
  public:
    struct Node {
        enum class Kind : std::uint8_t { folder, file, link } kind = Kind::file;
        std::string target;
        std::uint16_t mode = 0644;
        std::uint32_t owner = 501;
        std::uint32_t group = 20;
        std::string contents{};
        /// Another one for each node that was added.
        std::uint64_t inode = 0;

        friend bool operator==(const Node&, const Node&) = default;
    };

    explicit FakeFileManager(CallList& calls) : calls_(calls) {}

    void addFolder(const std::string& path);
    void addFile(const std::string& path, const std::string& contents = "");
    void addLink(const std::string& path, const std::string& target);
    [[nodiscard]] bool has(const std::string& path) const { return nodes.contains(path); }
    [[nodiscard]] const Node& at(const std::string& path) const { return nodes.at(path); }
    /// The next call of this operation ("copy", "create", "chmod", ...) on this path fails with this error.
    void failOn(const std::string& operation, const std::string& path, Platform::Error error);

    [[nodiscard]] std::optional<Platform::Error> createDirectory(const Base::URL& directory,
                                                                 bool withIntermediates) override;
    [[nodiscard]] std::optional<bool> hasVisibleEntries(const Base::URL& directory,
                                                        Platform::Error& error) override;
    [[nodiscard]] std::optional<Platform::Error> removeItem(const Base::URL& item) override;
    [[nodiscard]] std::optional<Platform::Error> copyItem(const Base::URL& source,
                                                          const Base::URL& destination) override;
    [[nodiscard]] bool itemExists(const Base::URL& item) override;
    [[nodiscard]] std::optional<Platform::FileIdentity> identity(const Base::URL& item) override;
    [[nodiscard]] int setMode(const Base::URL& item, std::uint16_t mode) override;
    [[nodiscard]] int setOwner(const Base::URL& item, std::uint32_t owner, std::uint32_t group) override;
    void setOwnerOfContents(const Base::URL& directory, std::uint32_t owner, std::uint32_t group,
                            const std::function<void(const Base::URL& item, int error)>& failed) override;

    std::map<std::string, Node> nodes;
    /// Errno that removeItem meets at these paths, every time: the item stays, and with it the folders above.
    std::map<std::string, int> resisting;
    /// Errno that setOwnerOfContents meets, by path.
    std::map<std::string, int> ownerFailures;
    /// The paths that itemExists was asked about, in order; these questions are not among the calls.
    std::vector<std::string> existenceTests;

  private:
    [[nodiscard]] std::optional<Platform::Error> failure(const std::string& operation,
                                                         const std::string& path);
    [[nodiscard]] std::optional<Platform::Error> injected(const std::string& operation,
                                                          const std::string& path);
    [[nodiscard]] std::optional<Platform::Error> resolveWay(const std::string& path,
                                                            std::string& resolved) const;
    [[nodiscard]] std::optional<Platform::Error> removeTree(const std::string& path);

    CallList& calls_;
    std::uint64_t inodes_ = 0;
    std::map<std::pair<std::string, std::string>, Platform::Error> failures_;
};

/// The folders of a Mac, named and never created.
class FakeStandardFolders final : public Platform::StandardFolders {
  public:
    [[nodiscard]] Base::URL folder(Platform::StandardFolder purpose) override {
        if (purpose != Platform::StandardFolder::users) {
            return names_.folder(purpose);
        }
        ++usersQuestions;
        return Base::URL::fileURL(users);
    }

    std::string users = "/Users";
    int usersQuestions = 0;

  private:
    Platform::FolderNames names_;
};

}  // namespace TestSupport
