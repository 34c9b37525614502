#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>
#include <string>

#include "Events.h"
#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/XPC.h"

@class SelftestListenerDelegate;

namespace Selftest {

/// A service that only this process can reach, and its clients: an anonymous NSXPCListener whose connections
/// are the program's own, as the helpers have them, and clients connected to its endpoint, as the uninstaller
/// has them. What is left out is launchd, which hands out the mach service, and the second process.
///
/// `events` hears: "service: refused: WHY" for a message that was refused, "service: invalid" when the
/// connection of the service became so, "service: released" when nothing keeps it in use.
class Loopback {
  public:
    /// Sets up each new connection before it is resumed. `native` is the system's own.
    using Accept =
        std::function<void(NSXPCConnection* native, std::shared_ptr<Platform::XPCConnection> connection)>;

    Loopback(std::shared_ptr<Events> events, Accept accept);
    Loopback(const Loopback&) = delete;
    Loopback& operator=(const Loopback&) = delete;
    ~Loopback();

    /// A new client, not yet resumed. `events` hears "client: invalid" and "client: interrupted".
    [[nodiscard]] std::shared_ptr<Platform::XPCConnection> makeClient(Platform::XPCInterface remote);
    /// The same without anything of the program's: what somebody else's client is. Resumed.
    [[nodiscard]] NSXPCConnection* makeForeignClient(const Platform::XPCInterface& remote);
    /// Ends the listener; clients that come later find nobody.
    void close();

  private:
    [[nodiscard]] NSXPCConnection* newNativeClient() const;

    std::shared_ptr<Events> events_;
    Platform::Darwin::Retained<SelftestListenerDelegate*> delegate_;
    Platform::Darwin::Retained<NSXPCListener*> listener_;
    Platform::Darwin::Retained<NSXPCListenerEndpoint*> endpoint_;
};

}  // namespace Selftest
