#pragma once

#include <optional>
#include <string_view>

#include "inspect/explain/LogEntry.h"

namespace Inspect {

/// Reads a line that begins an entry, in any of the forms in which a Mac writes its
/// log as text: system.log    Nov 21 10:03:49 Mac Uninstall Sentrel[18]: TEXT log,
/// syslog   2026-11-21 10:03:49.123456+0100  localhost Uninstall Sentrel[18]:
/// (Foundation) TEXT log, default  2026-11-21 10:03:49.123456+0100 0x1b2c Default 0x0
/// 18 0 Uninstall Sentrel: TEXT log, compact  2026-11-21 10:03:49.123 Df Uninstall
/// Sentrel[18:1b2c] (Foundation) TEXT NSLog         2026-11-21 10:03:49.123 Uninstall
/// Sentrel[18:1b2c] TEXT The sender "(Foundation)" and a category
/// "[subsystem:category]" before the text are dropped, and may be missing. Returns
/// nothing for any other line: it continues an entry, or does not belong to a log.
/// Sets everything but `line`.
[[nodiscard]] std::optional<LogEntry> entryFromLine(std::string_view line);

/// The entry of one object of `log show --style json` or `ndjson`. Returns nothing if it is not JSON or lacks
/// the message or the program's path.
[[nodiscard]] std::optional<LogEntry> entryFromJson(std::string_view object);

}  // namespace Inspect
