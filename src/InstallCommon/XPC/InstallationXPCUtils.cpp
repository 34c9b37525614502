#include "InstallCommon/XPC/InstallationXPCUtils.h"

#include <array>
#include <utility>

#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"
#include "Platform/SystemPorts.h"
#include "Platform/XPCMethod.h"

namespace InstallCommon {

namespace {

constexpr std::string_view kCommandExecuting = "CommandExecuting";
constexpr std::string_view kCommandExecutingDelegate = "CommandExecutingDelegate";
constexpr Platform::XPCTypedMethod<Base::CodedObjectList, std::shared_ptr<Platform::XPCObject>> kExecute{
    "executeWithCommands:delegate:"};
constexpr Platform::XPCTypedMethod<std::string, std::int32_t> kDidExecute{
    "commandExecutingDidExecuteCommand:withWeight:"};

/// The delegate of a list, as the client exports it.
class ExportedDelegate final : public Platform::XPCObject {
  public:
    explicit ExportedDelegate(std::shared_ptr<CommandExecutingDelegate> delegate)
        : delegate_(std::move(delegate)) {}

    [[nodiscard]] std::string_view protocolName() const override { return kCommandExecutingDelegate; }

    void message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                 Platform::XPCReply /*reply*/) override {
        if (const auto report = kDidExecute.received(selector, arguments)) {
            const auto& [description, weight] = *report;
            delegate_->commandExecutingDidExecuteCommand(description, weight);
        }
    }

  private:
    std::shared_ptr<CommandExecutingDelegate> delegate_;
};

/// The same delegate, as the helper sees it. Null for a client that wants no reports.
class DelegateProxy final : public CommandExecutingDelegate {
  public:
    explicit DelegateProxy(std::shared_ptr<Platform::XPCObject> proxy) : proxy_(std::move(proxy)) {}

    void commandExecutingDidExecuteCommand(const std::string& description, std::int32_t withWeight) override {
        if (proxy_ != nullptr) {
            kDidExecute.send(*proxy_, description, withWeight);
        }
    }

  private:
    std::shared_ptr<Platform::XPCObject> proxy_;
};

class ExportedExecutor final : public Platform::XPCObject {
  public:
    ExportedExecutor(std::shared_ptr<CommandExecuting> executor,
                     std::function<void(const std::string&)> refused)
        : executor_(std::move(executor)), refused_(std::move(refused)) {}

    [[nodiscard]] std::string_view protocolName() const override { return kCommandExecuting; }

    void message(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                 Platform::XPCReply /*reply*/) override {
        auto list = kExecute.received(selector, arguments);
        if (!list) {
            refused_("a message that nothing here understands: " + std::string(selector));
            return;
        }
        auto& [objects, delegate] = *list;
        std::optional<CommandList> commands = commandList(std::move(objects));
        if (!commands) {
            refused_("a list: it contains an object that is not a command");
            return;
        }
        executor_->executeWithCommands(std::move(*commands), std::make_shared<DelegateProxy>(delegate));
    }

  private:
    std::shared_ptr<CommandExecuting> executor_;
    std::function<void(const std::string&)> refused_;
};

class ExecutorProxy final : public CommandExecuting {
  public:
    explicit ExecutorProxy(std::shared_ptr<Platform::XPCObject> proxy) : proxy_(std::move(proxy)) {}

    void executeWithCommands(CommandList commands,
                             std::shared_ptr<CommandExecutingDelegate> delegate) override {
        Base::CodedObjectList objects;
        objects.reserve(commands.size());
        for (std::unique_ptr<Command>& command : commands) {
            objects.push_back(std::move(command));
        }
        kExecute.send(*proxy_, std::move(objects), std::make_shared<ExportedDelegate>(std::move(delegate)));
    }

  private:
    std::shared_ptr<Platform::XPCObject> proxy_;
};

}  // namespace

Base::AllowedClasses allowedCommandListClasses() {
    static const std::array<const Base::CodedClass*, 14> kObjects{
        &CopyCommand::staticClass(),
        &StartLaunchdJobCommand::staticClass(),
        &UpdateLaunchServices::staticClass(),
        &RemoveCommand::staticClass(),
        &UnloadKextCommand::staticClass(),
        &KillProcessCommand::staticClass(),
        &StopLaunchdJobCommand::staticClass(),
        &NorvikCommon::FilesystemItemInfo::codedClass(),
        &NorvikCommon::BundleInfo::codedClass(),
        &NorvikCommon::LaunchdInfo::codedClass(),
        &NorvikCommon::ApplicationInfo::codedClass(),
        &NorvikCommon::DaemonInfo::codedClass(),
        &NorvikCommon::BundleDaemonInfo::codedClass(),
        &NorvikCommon::KextInfo::codedClass()};
    static constexpr std::array<std::string_view, 4> kValues{"NSArray", "NSURL", "NSString", "NSNumber"};
    return {kObjects, kValues};
}

void registerCommandListClasses() {
    Platform::SystemPorts::current().xpc->registerClasses(allowedCommandListClasses());
}

Platform::XPCInterface CreateCommandExecutingXPCInterface() {
    Platform::XPCMethod execute = kExecute.declaration();
    execute.arguments[0].allowed = allowedCommandListClasses();
    execute.arguments[1].proxy = std::make_shared<const Platform::XPCInterface>(
        Platform::XPCInterface{kCommandExecutingDelegate, {kDidExecute.declaration()}});
    return {kCommandExecuting, {std::move(execute)}};
}

std::optional<CommandList> commandList(Base::CodedObjectList objects) {
    CommandList commands;
    commands.reserve(objects.size());
    for (std::unique_ptr<Base::CodedObject>& object : objects) {
        auto* command = dynamic_cast<Command*>(object.get());
        if (command == nullptr) {
            return std::nullopt;
        }
        static_cast<void>(object.release());
        commands.emplace_back(command);
    }
    return commands;
}

std::shared_ptr<Platform::XPCObject> exportedCommandExecuting(
    std::shared_ptr<CommandExecuting> executor, std::function<void(const std::string& why)> refused) {
    return std::make_shared<ExportedExecutor>(std::move(executor), std::move(refused));
}

std::shared_ptr<CommandExecuting> commandExecutingProxy(std::shared_ptr<Platform::XPCObject> proxy) {
    if (proxy == nullptr || proxy->protocolName() != kCommandExecuting) {
        return nullptr;
    }
    return std::make_shared<ExecutorProxy>(std::move(proxy));
}

}  // namespace InstallCommon
