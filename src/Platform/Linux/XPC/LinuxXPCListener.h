#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Posix/Descriptor.h"
#include "Platform/XPC.h"

namespace Platform::Linux {

/// The timeout of poll(2), in milliseconds, that waits this long, or as long as poll can.
[[nodiscard]] int pollTimeout(std::uint32_t seconds);

/// A mach service's listener: the stream socket that process 1 handed to this job.
class LinuxXPCListener final : public XPCListener {
  public:
    /// Returns the code-signing identifier of a running process, or nothing if it has no trustworthy one.
    using Identify = std::function<std::optional<std::string>(std::int32_t pid)>;

    /// Connections that may be in use at once; one more is refused.
    static constexpr int kMostConnections = 64;

    LinuxXPCListener(Posix::Descriptor socket, std::vector<std::string> clientRequirements,
                     Identify identify);

    void run(const Accept& accept, const Refused& refused, std::uint32_t idleSeconds) override;
    [[nodiscard]] std::shared_ptr<void> transaction() override;
    void disregardPeers() override;
    void stop() override;

  private:
    struct Activity;

    [[nodiscard]] std::shared_ptr<void> connectionInUse();
    void acceptOne(const Accept& accept, const Refused& refused);
    [[nodiscard]] std::optional<std::string> refusalOf(const XPCPeer& peer) const;

    Posix::Descriptor socket_;
    std::vector<std::string> clientRequirements_;
    Identify identify_;
    std::shared_ptr<Activity> activity_;
};

/// The identifier in a code-signing requirement: X in `identifier "X" and ...`. Returns nothing if it has
/// none.
[[nodiscard]] std::optional<std::string> identifierOfRequirement(std::string_view requirement);

}  // namespace Platform::Linux
