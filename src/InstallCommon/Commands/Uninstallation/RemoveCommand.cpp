#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"

#include <algorithm>
#include <utility>

#include "InstallCommon/FileSystemUtil.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"

namespace InstallCommon {

namespace {

// Intentionally the copy command's keys: both ends agree on them.
constexpr std::string_view kPathsKey = "source";
constexpr std::string_view kFlagsKey = "destination";

std::vector<RemoveCommand::Item> unconditional(const std::vector<Base::URL>& urls) {
    std::vector<RemoveCommand::Item> items;
    items.reserve(urls.size());
    for (const Base::URL& url : urls) {
        items.push_back({url, false});
    }
    return items;
}

}  // namespace

RemoveCommand::RemoveCommand(std::string commandDescription, std::vector<Item> items)
    : CodedCommand(std::move(commandDescription)), itemsToRemove_(std::move(items)) {}

RemoveCommand::RemoveCommand(std::string commandDescription, const std::vector<Base::URL>& items)
    : RemoveCommand(std::move(commandDescription), unconditional(items)) {}

RemoveCommand::RemoveCommand(std::string commandDescription, const Base::URL& item)
    : RemoveCommand(std::move(commandDescription), std::vector<Item>{{item, false}}) {}

void RemoveCommand::execute() const {
    for (const Item& item : itemsToRemove_) {
        if (item.removeIfEmpty && !FileSystemUtil::isEmpty(item.path)) {
            continue;
        }
        FileSystemUtil::remove(item.path);
        const Base::URL repairFolder = NorvikCommon::FeaturePathProvider::repairFolder();
        FileSystemUtil::remove(repairFolder.appendingPathComponent(item.path.path()));
    }
}

void RemoveCommand::encode(Base::Coder& coder) const {
    std::vector<Base::URL> paths;
    std::vector<bool> flags;
    paths.reserve(itemsToRemove_.size());
    flags.reserve(itemsToRemove_.size());
    for (const Item& item : itemsToRemove_) {
        paths.push_back(item.path);
        flags.push_back(item.removeIfEmpty);
    }
    coder.encodeURLs(kPathsKey, paths);
    coder.encodeBools(kFlagsKey, flags);
    CommandConcrete::encode(coder);
}

std::unique_ptr<Base::CodedObject> RemoveCommand::decode(Base::Coder& coder) {
    std::optional<std::vector<Base::URL>> paths = coder.decodeURLs(kPathsKey);
    if (!paths) {
        return nullptr;
    }
    const std::optional<std::vector<bool>> flags = coder.decodeBools(kFlagsKey);
    if (!flags) {
        return nullptr;
    }
    // Extra elements of the longer array are ignored.
    const std::size_t count = std::min(paths->size(), flags->size());
    std::vector<Item> items;
    items.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        items.push_back({std::move((*paths)[i]), (*flags)[i]});
    }
    return decoded(coder, std::move(items));
}

}  // namespace InstallCommon
