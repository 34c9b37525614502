#include "Helpers/CommandExecutor.h"

#include <utility>

#include "Platform/SystemPorts.h"

namespace Helpers {

CommandExecutor::CommandExecutor(Platform::XPCListener& listener)
    : listener_(listener),
      queue_(
          Platform::SystemPorts::current().dispatch.makeSerialQueue("com.norvik.InstallerHelper.commands")) {}

void CommandExecutor::executeWithCommands(InstallCommon::CommandList commands,
                                          std::shared_ptr<InstallCommon::CommandExecutingDelegate> delegate) {
    auto list = std::make_shared<const InstallCommon::CommandList>(std::move(commands));
    queue_->async([list, delegate = std::move(delegate), transaction = listener_.transaction()] {
        for (const std::unique_ptr<InstallCommon::Command>& command : *list) {
            command->execute();
            delegate->commandExecutingDidExecuteCommand(command->commandDescription(), command->weight());
        }
    });
}

}  // namespace Helpers
