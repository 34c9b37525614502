#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "InstallCommon/Command.h"
#include "Platform/XPC.h"

namespace InstallCommon {

/// Offered to the helper by the client of a command list.
class CommandExecutingDelegate {
  public:
    virtual ~CommandExecutingDelegate() = default;

    /// Called once per executed command, in list order, after the command ran, with its description and
    /// weight; also for a command whose work failed. Arrives on the connection's own thread.
    virtual void commandExecutingDidExecuteCommand(const std::string& description,
                                                   std::int32_t withWeight) = 0;
};

/// Offered by the installer helper.
class CommandExecuting {
  public:
    virtual ~CommandExecuting() = default;

    /// Executes the commands in order and reports each to the delegate. One-way: returns at once, has no
    /// completion; the client knows the end by the weights.
    virtual void executeWithCommands(CommandList commands,
                                     std::shared_ptr<CommandExecutingDelegate> delegate) = 0;
};

/// A new interface for CommandExecuting: exactly the seven concrete commands, the seven records and the
/// containers and values that they need may travel in argument 0 of executeWithCommands:delegate:; argument 1
/// is a proxy of CommandExecutingDelegate. The abstract bases are left out intentionally.
[[nodiscard]] Platform::XPCInterface CreateCommandExecutingXPCInterface();

/// The classes allowed in a command list, as in the interface.
[[nodiscard]] Base::AllowedClasses allowedCommandListClasses();

/// Registers those classes with the system. A program that sends or takes lists does this first, before it
/// loads anybody else's code (see Platform::XPC::registerClasses).
void registerCommandListClasses();

/// Turns decoded objects into commands. Returns nothing if any object is not a command. Always consumes
/// `objects`.
[[nodiscard]] std::optional<CommandList> commandList(Base::CodedObjectList objects);

/// `executor` as an object that a connection can export. A list that contains an object that is not a command
/// is dropped whole, and so is a message with any other selector, each with a call of `refused`.
[[nodiscard]] std::shared_ptr<Platform::XPCObject> exportedCommandExecuting(
    std::shared_ptr<CommandExecuting> executor, std::function<void(const std::string& why)> refused);

/// `proxy` as CommandExecuting; null if it is null or understands another protocol.
[[nodiscard]] std::shared_ptr<CommandExecuting> commandExecutingProxy(
    std::shared_ptr<Platform::XPCObject> proxy);

}  // namespace InstallCommon
