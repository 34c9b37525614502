#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"

#include <array>
#include <charconv>
#include <utility>

#include "NorvikCommon/InstallerLog.h"
#include "Platform/SystemPorts.h"

namespace InstallCommon {

namespace {

constexpr std::string_view kKextKey = "kext";

/// Signed: a code with the top bit set prints with a minus sign.
std::string signedHexadecimal(std::int32_t code) {
    std::array<char, 16> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), code, 16);
    return {text.data(), end};
}

}  // namespace

UnloadKextCommand::UnloadKextCommand(std::string commandDescription, NorvikCommon::KextInfo kext)
    : CodedCommand(std::move(commandDescription)), kext_(std::move(kext)) {}

void UnloadKextCommand::execute() const {
    if (!kext_.bundle || !kext_.bundle->bundleId) {
        return;
    }
    const std::int32_t result =
        Platform::SystemPorts::current().kernelExtensions->unload(*kext_.bundle->bundleId);
    if (result != 0) {
        NorvikCommon::logInstallerLine("Kext " + kext_.bundle->name.value_or("") +
                                       " unload failed. Return code: " + signedHexadecimal(result));
    }
}

void UnloadKextCommand::encode(Base::Coder& coder) const {
    coder.encodeObject(kKextKey, Base::CodedRecord(kext_));
    CommandConcrete::encode(coder);
}

std::unique_ptr<Base::CodedObject> UnloadKextCommand::decode(Base::Coder& coder) {
    std::optional<NorvikCommon::KextInfo> kext =
        NorvikCommon::decodeRecord<NorvikCommon::KextInfo>(coder, kKextKey);
    if (!kext) {
        return nullptr;
    }
    return decoded(coder, std::move(*kext));
}

}  // namespace InstallCommon
