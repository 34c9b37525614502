#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"

#include <utility>

#include "InstallCommon/InstallationUtils.h"

namespace InstallCommon {

namespace {

// Intentionally the kext command's key: both ends agree on it.
constexpr std::string_view kProcessKey = "kext";

}  // namespace

KillProcessCommand::KillProcessCommand(std::string commandDescription, std::string process)
    : CodedCommand(std::move(commandDescription)), process_(std::move(process)) {}

void KillProcessCommand::execute() const {
    InstallationUtils::killProcess(process_);
}

void KillProcessCommand::encode(Base::Coder& coder) const {
    coder.encodeString(kProcessKey, process_);
    CommandConcrete::encode(coder);
}

std::unique_ptr<Base::CodedObject> KillProcessCommand::decode(Base::Coder& coder) {
    std::optional<std::string> process = coder.decodeString(kProcessKey);
    if (!process) {
        return nullptr;
    }
    return decoded(coder, std::move(*process));
}

}  // namespace InstallCommon
