#pragma once

#include <optional>

#include "inspect/explain/LineCursor.h"

namespace Inspect {

/// Takes "2026-11-21 10:03:49.123456+0100" (fraction and zone may be missing; "T" may replace the blank) from
/// the front of a line and returns it as seconds since 1970. Returns nothing for anything else; the cursor is
/// then useless.
[[nodiscard]] std::optional<double> takeTimestamp(LineCursor& cursor);

/// Takes "Nov 21 10:03:49" likewise and returns the seconds since 1970 as if the year were 2000, a leap year.
[[nodiscard]] std::optional<double> takeShortTimestamp(LineCursor& cursor);

}  // namespace Inspect
