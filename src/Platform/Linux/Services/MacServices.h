#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Platform::Linux {

/// Where process 1 of the simulated Mac answers what a Mac's security, kernel and launchd services would.
///
/// A SOCK_SEQPACKET socket; one request packet is answered by one reply packet. Both are fields joined by NUL
/// bytes, at most kMaximumPacket bytes. The server knows the sender by its kernel credentials. Requests and
/// replies:
///
///   authorize FLAGS RIGHT... [EMPTY NAME VALUE...]
///                              STATUS TOKEN       OSStatus in decimal, 0 if granted; token of the session.
///                                                 An empty field ends the rights; the environment's items
///                                                 follow it. With interaction (flag 1) the reply comes
///                                                 when the administrator has answered
///   release TOKEN              0
///   bless TOKEN LABEL          CODE TEXT          0, or the error's code and words
///   unload-kext BUNDLEID       CODE               kernel return code, decimal, signed
///   is-kext-loaded BUNDLEID    ANSWER             1 or 0
///   identify PID               STATUS IDENTIFIER  0 and the code's identifier (CFBundleIdentifier) of a
///                                                 running program whose executable and bundle only root
///                                                 could have written; else 1
///   lookup NAME                STATUS PID START   0, process id and start time (/proc) of the process that
///                                                 has registered the name of a distant object; else 1
///   executed ARGUMENT...       0                  records that the sending tool runs with these
///                                                 arguments
///   launchctl ARGUMENT...      STATUS OUT ERR     exit status, texts for standard output and error
inline constexpr std::string_view kServicesSocket = "/var/run/mac-services.socket";
inline constexpr std::size_t kMaximumPacket = 65536;

/// A packet of these fields, which hold no NUL bytes; not limited in length.
[[nodiscard]] std::string joinFields(const std::vector<std::string>& fields);
/// The fields of a packet, at least one.
[[nodiscard]] std::vector<std::string> splitFields(std::string_view packet);

/// The stream sockets of mach services: this folder, then the service's name. The owner is process 1, which
/// hands the listening descriptors to the job, starting at kFirstServiceDescriptor and named in order by
/// kServiceNamesVariable ("name:name").
inline constexpr std::string_view kMachServicesFolder = "/var/run/mach";
inline constexpr std::string_view kServiceNamesVariable = "MACH_SERVICE_NAMES";
inline constexpr int kFirstServiceDescriptor = 3;

/// The connection to process 1. Cheap to copy; opens a socket for each request. Usable on any thread.
class MacServices {
  public:
    /// `socket` is the path of the server's socket.
    explicit MacServices(std::string socket = std::string(kServicesSocket)) : socket_(std::move(socket)) {}

    /// Sends one request and waits for its reply's fields. Returns nothing if there is no server, it went
    /// away, or the request does not fit into a packet or has a NUL byte in a field.
    [[nodiscard]] std::optional<std::vector<std::string>> request(
        const std::vector<std::string>& fields) const;

  private:
    std::string socket_;
};

/// The base of a port that process 1 answers.
template <typename PortInterface>
class AnsweredByProcessOne : public PortInterface {
  public:
    explicit AnsweredByProcessOne(MacServices services = MacServices()) : services_(std::move(services)) {}

  protected:
    [[nodiscard]] const MacServices& services() const { return services_; }

  private:
    MacServices services_;
};

}  // namespace Platform::Linux
