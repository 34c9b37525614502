#include "InstallCommon/Command.h"

#include <utility>

#include "Base/FatalError.h"

namespace InstallCommon {

CommandConcrete::CommandConcrete(std::string commandDescription)
    : commandDescription_(std::move(commandDescription)) {}

void CommandConcrete::execute() const {
    Base::fatalError("Should be overriden by subclasses.");
}

constinit const Base::CodedClass CommandConcrete::kClass{"_TtC13InstallCommon15CommandConcrete", nullptr,
                                                         &decode};

void CommandConcrete::encode(Base::Coder& coder) const {
    coder.encodeString(CodingKey::commandDescription, commandDescription_);
}

std::optional<std::string> CommandConcrete::decodeDescription(Base::Coder& coder) {
    return coder.decodeString(CodingKey::commandDescription);
}

std::unique_ptr<Base::CodedObject> CommandConcrete::decode(Base::Coder& coder) {
    std::optional<std::string> description = decodeDescription(coder);
    return description ? std::make_unique<CommandConcrete>(std::move(*description)) : nullptr;
}

}  // namespace InstallCommon
