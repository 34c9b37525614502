#pragma once

#include <string_view>
#include <variant>

#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"

namespace Inspect {

/// A command as its concrete class, for std::visit: a printer is one set of overloads, and one that forgets a
/// class does not compile. The pointers are never null and do not own.
using ConcreteCommand =
    std::variant<const InstallCommon::RemoveCommand*, const InstallCommon::CopyCommand*,
                 const InstallCommon::StartLaunchdJobCommand*, const InstallCommon::StopLaunchdJobCommand*,
                 const InstallCommon::KillProcessCommand*, const InstallCommon::UnloadKextCommand*,
                 const InstallCommon::UpdateLaunchServices*>;

/// A class of commands that a list may hold.
struct CommandKind {
    /// The class's name, without its module: "RemoveCommand".
    std::string_view className;
    const Base::CodedClass& (*codedClass)();
    /// `command` must be of this class.
    ConcreteCommand (*narrow)(const InstallCommon::Command& command);
};

/// The kind of a command that was decoded or that a suite has made. A command of another class is a
/// programming error that ends the process.
[[nodiscard]] const CommandKind& kindOf(const InstallCommon::Command& command);

}  // namespace Inspect
