#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <vector>

namespace Platform::Darwin {

/// The reason why the peer of `connection` must not be served; nothing if it may be.
///
/// The peer is identified by its audit token, which names one process for good; never by its process id,
/// which may have gone to another program meanwhile. Its running code has to be valid, to satisfy one of
/// `requirements` (code-signing requirements: identifier, certificate, team and oldest version) and to be
/// signed with the hardened runtime and without an entitlement that opens it again, so that nobody can have
/// put other code into it. The text names the unmet condition. Where the system offers it (macOS 13), it
/// receives the requirements as well and then checks the sender of every message by itself. Call this on the
/// delivery of the new connection, before it is resumed.
[[nodiscard]] std::optional<std::string> refusalOfPeer(NSXPCConnection* connection,
                                                       const std::vector<std::string>& requirements);

}  // namespace Platform::Darwin
