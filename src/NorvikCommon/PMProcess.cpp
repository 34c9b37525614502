#include "NorvikCommon/PMProcess.h"

namespace NorvikCommon {

std::optional<PMProcess> PMProcess::processWithPid(std::int32_t pid) {
    return processWithPid(pid, PMProcessUtil::shared());
}

std::optional<PMProcess> PMProcess::processWithPid(std::int32_t pid, const PMProcessUtil& processUtil) {
    const std::optional<std::uint32_t> uid = processUtil.processUidForPid(pid);
    if (!uid) {
        return std::nullopt;
    }
    std::optional<std::string> name = processUtil.processNameForPid(pid);
    if (!name) {
        return std::nullopt;
    }
    std::optional<Base::URL> location = processUtil.processLocationForPid(pid);
    if (!location) {
        return std::nullopt;
    }
    return PMProcess{pid, *uid, std::move(*name), std::move(*location)};
}

}  // namespace NorvikCommon
