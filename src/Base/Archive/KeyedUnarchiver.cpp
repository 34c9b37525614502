#include "Base/Archive/KeyedUnarchiver.h"

#include "Base/Archive/ArchiveObjects.h"
#include "Base/Archive/Unarchiver.h"

namespace Base {

std::optional<CodedObjectList> unarchivedArray(std::span<const std::uint8_t> archive,
                                               const AllowedClasses& allowed, std::string& refusal,
                                               const UnarchivingLimits& limits) {
    const auto objects = ArchiveObjects::open(archive, allowed, limits, refusal);
    if (!objects) {
        return std::nullopt;
    }
    Unarchiver unarchiver(*objects, allowed, limits);
    auto list = unarchiver.list();
    if (!list) {
        refusal = unarchiver.takeRefusal();
    }
    return list;
}

}  // namespace Base
