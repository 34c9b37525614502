#include "Platform/Linux/XPC/LinuxXPC.h"

#include <sys/socket.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "Platform/Linux/XPC/LinuxXPCConnection.h"
#include "Platform/Linux/XPC/LinuxXPCListener.h"

namespace Platform::Linux {

namespace {

/// The descriptor that process 1 handed over for this service.
Posix::Descriptor descriptorOfService(std::string_view service) {
    const char* variable = std::getenv(std::string(kServiceNamesVariable).c_str());
    std::string_view names = variable == nullptr ? "" : variable;
    for (int descriptor = kFirstServiceDescriptor; !names.empty(); ++descriptor) {
        const std::string_view name = names.substr(0, names.find(':'));
        if (name == service) {
            int listens = 0;
            socklen_t size = sizeof listens;
            const bool isListening =
                ::getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listens, &size) == 0 && listens == 1;
            return isListening ? Posix::Descriptor(descriptor) : Posix::Descriptor();
        }
        names.remove_prefix(std::min(name.size() + 1, names.size()));
    }
    return {};
}

std::optional<std::string> identityOfProcess(const MacServices& services, std::int32_t pid) {
    const auto answer = services.request({"identify", std::to_string(pid)});
    if (!answer || answer->size() != 2 || answer->front() != "0") {
        return std::nullopt;
    }
    return answer->back();
}

}  // namespace

std::shared_ptr<XPCConnection> LinuxXPC::makeConnection(const std::string& machServiceName,
                                                        std::uint32_t /*options*/) {
    // All services of this Mac live in one domain, so the privileged option makes no difference here.
    return std::make_shared<LinuxXPCConnection>(machServiceName, servicesFolder_ + "/" + machServiceName);
}

std::unique_ptr<XPCListener> LinuxXPC::makeListener(const std::string& machServiceName,
                                                    const std::vector<std::string>& clientRequirements) {
    Posix::Descriptor socket = descriptorOfService(machServiceName);
    if (!socket) {
        return nullptr;
    }
    return std::make_unique<LinuxXPCListener>(
        std::move(socket), clientRequirements,
        [services = services_](std::int32_t pid) { return identityOfProcess(services, pid); });
}

}  // namespace Platform::Linux
