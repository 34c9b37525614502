#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "InstallCommon/XPC/InstallationHelperClient.h"

namespace Uninstall_Sentrel {

/// How long silent mode waits for the final progress report once the list was handed over.
inline constexpr std::chrono::seconds kUninstallationTimeout{60};

/// The helper client of a silent run. Null until runSilently sets it, and never released.
[[nodiscard]] std::shared_ptr<InstallCommon::InstallationHelperClient>& client();

/// Whether the command line asks for silent mode: "-s" or "--silent", as a whole argument, anywhere.
[[nodiscard]] bool isSilent(const std::vector<std::string>& args);

/// Runs the silent sequence with `client()`: authorizes without interaction, blesses both helpers, has the
/// runtime support package installed, checks that the product may be removed, sends the list and waits. True
/// if the helper reported the last command in time. The first step that fails logs its line, without the
/// module's prefix, and ends the sequence; a time-out logs nothing. Blocks the calling thread.
[[nodiscard]] bool silentUninstall();

/// The whole of silent mode: makes the client, runs the sequence and logs the result, "[SNTM Installer]
/// Uninstallation finished." or "[SNTM Installer] Uninstallation failed.".
void runSilently();

}  // namespace Uninstall_Sentrel
