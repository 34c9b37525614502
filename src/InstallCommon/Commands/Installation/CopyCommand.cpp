#include "InstallCommon/Commands/Installation/CopyCommand.h"

#include <algorithm>
#include <utility>

#include "InstallCommon/FileSystemUtil.h"
#include "InstallCommon/RepairItemsUtil.h"

namespace InstallCommon {

namespace {

constexpr std::string_view kSourcesKey = "source";
constexpr std::string_view kDestinationsKey = "destination";

}  // namespace

CopyCommand::CopyCommand(std::string commandDescription, std::vector<Item> items)
    : CodedCommand(std::move(commandDescription)), itemsToCopy_(std::move(items)) {}

CopyCommand::CopyCommand(std::string commandDescription, const Base::URL& source,
                         const Base::URL& destination)
    : CopyCommand(std::move(commandDescription), std::vector<Item>{{source, destination}}) {}

void CopyCommand::execute() const {
    for (const Item& item : itemsToCopy_) {
        FileSystemUtil::copy(item.source, item.destination);
        RepairItemsUtil::backup(item.destination);
    }
}

void CopyCommand::encode(Base::Coder& coder) const {
    std::vector<Base::URL> sources;
    std::vector<Base::URL> destinations;
    sources.reserve(itemsToCopy_.size());
    destinations.reserve(itemsToCopy_.size());
    for (const Item& item : itemsToCopy_) {
        sources.push_back(item.source);
        destinations.push_back(item.destination);
    }
    coder.encodeURLs(kSourcesKey, sources);
    coder.encodeURLs(kDestinationsKey, destinations);
    CommandConcrete::encode(coder);
}

std::unique_ptr<Base::CodedObject> CopyCommand::decode(Base::Coder& coder) {
    std::optional<std::vector<Base::URL>> sources = coder.decodeURLs(kSourcesKey);
    if (!sources) {
        return nullptr;
    }
    std::optional<std::vector<Base::URL>> destinations = coder.decodeURLs(kDestinationsKey);
    if (!destinations) {
        return nullptr;
    }
    // Extra elements of the longer array are ignored.
    const std::size_t count = std::min(sources->size(), destinations->size());
    std::vector<Item> items;
    items.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        items.push_back({std::move((*sources)[i]), std::move((*destinations)[i])});
    }
    return decoded(coder, std::move(items));
}

}  // namespace InstallCommon
