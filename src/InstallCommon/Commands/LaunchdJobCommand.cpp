#include "InstallCommon/Commands/LaunchdJobCommand.h"

#include <utility>

#include "NorvikCommon/UIDUtil.h"

namespace InstallCommon {

namespace {

// Intentionally also the key of a daemon's job.
constexpr std::string_view kJobKey = "agent";
constexpr std::string_view kIsDaemonKey = "isDaemon";

}  // namespace

LaunchdJobCommand::LaunchdJobCommand(std::string commandDescription, NorvikCommon::LaunchdInfo launchdJob,
                                     bool isDaemon)
    : CodedCommand(std::move(commandDescription)), launchdJob_(std::move(launchdJob)), isDaemon_(isDaemon) {}

void LaunchdJobCommand::encode(Base::Coder& coder) const {
    coder.encodeObject(kJobKey, Base::CodedRecord(launchdJob_));
    coder.encodeBool(kIsDaemonKey, isDaemon_);
    CommandConcrete::encode(coder);
}

std::optional<LaunchdJobCommand::Fields> LaunchdJobCommand::decodeFields(Base::Coder& coder) {
    std::optional<NorvikCommon::LaunchdInfo> launchdJob =
        NorvikCommon::decodeRecord<NorvikCommon::LaunchdInfo>(coder, kJobKey);
    if (!launchdJob) {
        return std::nullopt;
    }
    const bool isDaemon = coder.decodeBool(kIsDaemonKey);
    std::optional<std::string> description = decodeDescription(coder);
    if (!description) {
        return std::nullopt;
    }
    return Fields{std::move(*launchdJob), isDaemon, std::move(*description)};
}

void LaunchdJobCommand::forEachUser(const std::function<void(std::uint32_t userId)>& block) {
    for (const std::uint32_t userId : NorvikCommon::UIDUtil::allUsers()) {
        NorvikCommon::UIDUtil::performWithUid(userId, [&] { block(userId); });
    }
}

}  // namespace InstallCommon
