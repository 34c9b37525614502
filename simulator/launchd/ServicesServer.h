#pragma once

#include <map>
#include <string>
#include <vector>

#include "launchd/Authorizations.h"
#include "launchd/Blessing.h"
#include "launchd/DistantNames.h"
#include "launchd/LaunchctlVerbs.h"
#include "launchd/LoadedExtensions.h"
#include "launchd/Transcript.h"

namespace Simulator {

/// The services socket (Platform/Linux/Services/MacServices.h): reads requests, hands each to its service,
/// sends the reply. An invalid request ends its connection.
class ServicesServer {
  public:
    struct Services {
        Authorizations& authorizations;
        Blessing& blessing;
        LoadedExtensions& extensions;
        LaunchctlVerbs& launchctl;
        const DistantNames& distantNames;
        Transcript& transcript;
    };

    ServicesServer(EventLoop& loop, const Services& services) : loop_(loop), services_(services) {}

    [[nodiscard]] bool open();

  private:
    struct Connection {
        Descriptor socket;
        Caller caller;
    };
    using ConnectionId = std::uint64_t;
    using Fields = std::vector<std::string>;

    void accept();
    void receive(ConnectionId id);
    void close(ConnectionId id);
    /// Whether the request was valid; its reply may come later.
    [[nodiscard]] bool handle(ConnectionId id, const Caller& caller, const Fields& request);
    /// The same for verbs with one word.
    [[nodiscard]] bool handleWord(ConnectionId id, const Caller& caller, const std::string& verb,
                                  const std::string& word);
    /// A call of a tool, which the transcript keeps; launchctl's is carried out, too.
    void record(ConnectionId id, const Caller& caller, const Fields& request);
    [[nodiscard]] bool authorize(ConnectionId id, const Caller& caller, const Fields& request);
    void identify(ConnectionId id, const std::string& process);
    void lookUp(ConnectionId id, const std::string& name);
    void reply(ConnectionId id, const Fields& fields);

    EventLoop& loop_;
    Services services_;
    Descriptor listener_;
    std::map<ConnectionId, Connection> connections_;
    ConnectionId next_ = 1;
};

}  // namespace Simulator
