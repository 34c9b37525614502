#pragma once

#include "Row.h"

namespace Torture {

/// The commands of an uninstallation.
inline constexpr int kCommands = 75;

// One function a row of the table. Each does its rounds and counts what came of them.

void killAfterEachCommand(Row& row);
void killAtRandomMoments(Row& row);
void blessAgain(Row& row);
void refuseAgain(Row& row);
void uninstallAtOnce(Row& row, int uninstallers);
void disturbFolders(Row& row);
void foreignPeers(Row& row);

}  // namespace Torture
