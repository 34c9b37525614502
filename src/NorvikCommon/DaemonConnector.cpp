#include "NorvikCommon/DaemonConnector.h"

#include <string>

#include "Platform/ProcessOnce.h"
#include "Platform/SystemPorts.h"

namespace NorvikCommon {

namespace {

using Proxy = std::shared_ptr<Platform::DistantObject>;

/// The proxies that the process keeps.
struct KeptProxies {
    Proxy root;
    Proxy onDemandScanner;
};

Platform::ProcessOnce<std::shared_ptr<KeptProxies>> keptProxies;

KeptProxies& kept() {
    return *keptProxies.get([] { return std::make_shared<KeptProxies>(); });
}

bool isValid(const Proxy& proxy) {
    return proxy != nullptr && proxy->isConnectionValid() && proxy->isSendPortValid() &&
           proxy->isReceivePortValid();
}

void lookUp(std::string_view name, Proxy& proxy) {
    proxy = nullptr;
    proxy = Platform::SystemPorts::current().distantObjects->rootProxy(std::string(name));
    if (proxy != nullptr) {
        proxy->addCommonRequestModes();
    }
}

}  // namespace

std::shared_ptr<Platform::DistantObject> DaemonConnector::rootObject() {
    if (!isValid(kept().root)) {
        lookUp(rootName, kept().root);
    }
    return kept().root;
}

std::shared_ptr<Platform::DistantObject> DaemonConnector::onDemandScannerObject() {
    // Intentionally the root's validity stands for the scanner's.
    if (!isValid(kept().root)) {
        lookUp(onDemandScannerRootName, kept().onDemandScanner);
    }
    return kept().onDemandScanner;
}

}  // namespace NorvikCommon
