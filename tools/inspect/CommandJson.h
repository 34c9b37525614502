#pragma once

#include "InstallCommon/Command.h"
#include "RecordJson.h"

namespace Inspect {

/// A command list in JSON: an array of objects with `number` (from 1), `class`, `runtimeName`, `description`,
/// `weight` and then the class's own fields:
///   RemoveCommand                     items: objects with path, removeIfEmpty
///   CopyCommand                       items: objects with source, destination
///   Start-, StopLaunchdJobCommand     launchdJob (a LaunchdInfo), isDaemon
///   KillProcessCommand                process
///   UnloadKextCommand                 kext (a KextInfo)
///   UpdateLaunchServices              none
[[nodiscard]] Json toJson(const InstallCommon::CommandList& commands);

}  // namespace Inspect
