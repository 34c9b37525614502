#pragma once

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "Base/Archive/KeyedArchiver.h"
#include "Base/Archive/KeyedUnarchiver.h"

namespace Fuzz {

/// Ends the process when `holds` is false, so that the fuzzer keeps the input.
inline void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

inline std::vector<std::uint8_t> archiveOf(const Base::CodedObjectList& objects) {
    std::vector<const Base::CodedObject*> pointers;
    pointers.reserve(objects.size());
    for (const auto& each : objects) {
        pointers.push_back(each.get());
    }
    return Base::archivedArray(pointers);
}

/// Reads `input` under `allowed` and checks what the unarchiver promises: a refusal that is not endless, or
/// objects that survive being archived and read again. Works for any set of classes.
inline void checkUnarchiver(std::span<const std::uint8_t> input, const Base::AllowedClasses& allowed) {
    // Small limits let the fuzzer reach them.
    Base::UnarchivingLimits limits;
    limits.objects = 5000;
    limits.textBytes = 1 << 20;
    std::string refusal;
    const auto objects = Base::unarchivedArray(input, allowed, refusal, limits);
    if (!objects) {
        require(!refusal.empty() && refusal.size() < 8000);
        return;
    }
    require(refusal.empty());
    const std::vector<std::uint8_t> once = archiveOf(*objects);
    const auto again = Base::unarchivedArray(once, allowed, refusal);
    require(again.has_value());
    require(archiveOf(*again) == once);
}

}  // namespace Fuzz
