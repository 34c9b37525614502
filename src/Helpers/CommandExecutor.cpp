#include "Helpers/CommandExecutor.h"

#include <utility>

#include "Platform/SystemPorts.h"

namespace Helpers {

CommandExecutor::CommandExecutor(Platform::XPCListener& listener, ListObserver& observer)
    : listener_(listener),
      observer_(observer),
      queue_(
          Platform::SystemPorts::current().dispatch->makeSerialQueue("com.norvik.InstallerHelper.commands")) {
}

void CommandExecutor::executeWithCommands(InstallCommon::CommandList commands,
                                          std::shared_ptr<InstallCommon::CommandExecutingDelegate> delegate) {
    ++lists_;
    auto list = std::make_shared<const InstallCommon::CommandList>(std::move(commands));
    queue_->async([this, list, delegate = std::move(delegate), transaction = listener_.transaction()] {
        execute(*list, *delegate);
        --lists_;
    });
}

void CommandExecutor::execute(const InstallCommon::CommandList& commands,
                              InstallCommon::CommandExecutingDelegate& delegate) {
    observer_.listBegins();
    for (const std::unique_ptr<InstallCommon::Command>& command : commands) {
        command->execute();
        if (&command == &commands.back()) {
            observer_.listEnds([this] { return lists_ > 1; });
        }
        delegate.commandExecutingDidExecuteCommand(command->commandDescription(), command->weight());
    }
}

}  // namespace Helpers
