#pragma once

#include <optional>
#include <string_view>

#include "inspect/explain/LogEntry.h"

namespace Inspect {

/// Reads a line that begins an entry, in any of the forms in which a Mac writes its log as text:
///   Nov 21 10:03:49 Mac Uninstall Sentrel[18]: TEXT /var/log/system.log 2026-11-21 10:03:49.123456+0100
///   localhost Uninstall Sentrel[18]: (Foundation) TEXT     log show --style syslog 2026-11-21
///   10:03:49.123456+0100 0x1b2c Default 0x0 18 0 Uninstall Sentrel: (Foundation) TEXT   log show, log stream
///   2026-11-21 10:03:49.123 Df Uninstall Sentrel[18:1b2c] (Foundation) TEXT                 log show --style
///   compact 2026-11-21 10:03:49.123 Uninstall Sentrel[18:1b2c] TEXT                                 NSLog on
///   standard error
/// The sender "(Foundation)" and a category "[subsystem:category]" before the text may be missing and are
/// dropped. Returns nothing for any other line: it continues an entry, or is none of a log. Sets everything
/// but `line`.
[[nodiscard]] std::optional<LogEntry> entryFromLine(std::string_view line);

/// The entry of one object of `log show --style json` or `ndjson`. Returns nothing when it is not JSON or
/// lacks the message or the program's path.
[[nodiscard]] std::optional<LogEntry> entryFromJson(std::string_view object);

}  // namespace Inspect
