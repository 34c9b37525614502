#import "ListService.h"

#include "Base/Archive/KeyedArchiver.h"
#include "InstallCommon/CommandSuitsProvider.h"

namespace Selftest {

using namespace InstallCommon;

void ListService::executeWithCommands(CommandList commands,
                                      std::shared_ptr<CommandExecutingDelegate> delegate) {
    {
        const std::lock_guard lock(mutex_);
        archive_ = archiveOf(commands);
    }
    events_->add("list of " + std::to_string(commands.size()) + " commands");
    for (const std::unique_ptr<Command>& command : commands) {
        delegate->commandExecutingDidExecuteCommand(command->commandDescription(), command->weight());
    }
}

std::vector<std::uint8_t> ListService::archive() {
    const std::lock_guard lock(mutex_);
    return archive_;
}

void Reports::commandExecutingDidExecuteCommand(const std::string& description, std::int32_t withWeight) {
    {
        const std::lock_guard lock(mutex_);
        reports_.emplace_back(description, withWeight);
    }
    events_.add(description);
}

std::vector<Report> Reports::all() {
    const std::lock_guard lock(mutex_);
    return reports_;
}

std::unique_ptr<Loopback> makeListLoopback(const std::shared_ptr<Events>& events,
                                           const std::shared_ptr<ListService>& service) {
    return std::make_unique<Loopback>(
        events, [events, service](NSXPCConnection*, const std::shared_ptr<Platform::XPCConnection>& taken) {
            taken->setExportedObject(CreateCommandExecutingXPCInterface(),
                                     exportedCommandExecuting(service, [events](const std::string& why) {
                                         events->add("service: refused: " + why);
                                     }));
        });
}

CommandList uninstallCommands() {
    CommandList commands = CommandSuitsProvider::makeUninstallCommands();
    CommandList cleanup = CommandSuitsProvider::makeCleanupCommands();
    std::move(cleanup.begin(), cleanup.end(), std::back_inserter(commands));
    return commands;
}

std::vector<std::uint8_t> archiveOf(const CommandList& commands) {
    std::vector<const Base::CodedObject*> objects;
    objects.reserve(commands.size());
    for (const std::unique_ptr<Command>& command : commands) {
        objects.push_back(command.get());
    }
    return Base::archivedArray(objects);
}

void sendList(Platform::XPCConnection& client, CommandList commands,
              std::shared_ptr<CommandExecutingDelegate> delegate) {
    commandExecutingProxy(client.remoteObjectProxy())
        ->executeWithCommands(std::move(commands), std::move(delegate));
}

}  // namespace Selftest
