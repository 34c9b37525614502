#pragma once

#include <string>

#include "Support/Machine.h"
#include "macsim/MacRoot.h"

namespace Simulator {

/// Gives the session a display of the host: its DISPLAY, and a copy of the display's cookie that only the
/// session's user can read. `text` is ":N", or "host" for the one in macsim's own environment. Throws a
/// Refusal if there is no such display that could be reached through a file.
void useDisplay(const MacRoot& mac, const User& user, const std::string& text, Session& session);

/// Where X displays are, on the host and in a Mac.
inline constexpr const char* kDisplaysFolder = "/tmp/.X11-unix";

/// The socket of the session's display; empty if it has none.
[[nodiscard]] std::string displaySocket(const Session& session);

/// The cookies for display number `display` in an X authority file, as entries that hold for any host: a Mac
/// has another name than the host.
[[nodiscard]] std::string cookiesForAnyHost(const std::string& authority, const std::string& display);

}  // namespace Simulator
