#pragma once

#import <Foundation/Foundation.h>

#include <memory>
#include <string>
#include <vector>

#include "Platform/Darwin/XPC/ListenerDoor.h"
#include "Platform/XPC.h"

namespace Platform::Darwin {

/// The NSXPCListener of this process's mach service, whose port launchd keeps while the process does not run.
///
/// A peer is checked before anything is exported to it (PeerIdentity.h). When `run` returns, the listener
/// stays suspended for the rest of the process's life: a peer that comes after that waits in launchd's port
/// and has the helper started anew. (One whose request the system had handed over already is refused and sees
/// an invalid connection.) A transaction is also one of the system's, so that the process is not killed at a
/// shutdown while it works; launchd respects that because the job's property list says that it has
/// transactions (EnableTransactions).
class DarwinXPCListener final : public XPCListener {
  public:
    DarwinXPCListener(const std::string& machServiceName, std::vector<std::string> clientRequirements);

    void run(const Accept& accept, const Refused& refused, std::uint32_t idleSeconds) override;
    [[nodiscard]] std::shared_ptr<void> transaction() override;
    void disregardPeers() override { door_->disregardPeers(); }
    void stop() override { door_->stop(); }

  private:
    void resumeListener();
    void suspendListener();
    [[nodiscard]] bool admit(NSXPCConnection* connection, const Accept& accept, const Refused& refused);

    std::vector<std::string> clientRequirements_;
    std::shared_ptr<ListenerDoor> door_;
    NSXPCListener* listener_;
};

}  // namespace Platform::Darwin
