#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Base/URL.h"
#include "NorvikCommon/PMProcessUtil.h"

namespace NorvikCommon {

/// The record of one running process.
struct PMProcess {
    std::int32_t pid = 0;
    /// Effective user id.
    std::uint32_t uid = 0;
    std::string name;
    /// Full path of the executable.
    Base::URL location;

    /// Returns nothing if user id, name or location (asked in this order) cannot be determined: such a
    /// process is never listed.
    [[nodiscard]] static std::optional<PMProcess> processWithPid(std::int32_t pid);
    [[nodiscard]] static std::optional<PMProcess> processWithPid(std::int32_t pid,
                                                                 const PMProcessUtil& processUtil);

    friend bool operator==(const PMProcess&, const PMProcess&) = default;
};

}  // namespace NorvikCommon
