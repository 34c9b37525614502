#include "InstallCommon/ComponentLists.h"

#include "InstallCommon/ComponentPathProvider+Legacy.h"
#include "Platform/ProcessOnce.h"

namespace InstallCommon {

namespace {

Platform::ProcessOnce<std::vector<NorvikCommon::LaunchdInfo>> daemonJobList;
Platform::ProcessOnce<std::vector<NorvikCommon::LaunchdInfo>> agentJobList;
Platform::ProcessOnce<std::vector<NorvikCommon::KextInfo>> kextList;
Platform::ProcessOnce<std::vector<NorvikCommon::KextInfo>> legacyKextList;
Platform::ProcessOnce<std::vector<NorvikCommon::ApplicationInfo>> applicationList;
Platform::ProcessOnce<std::vector<Base::URL>> workflowList;
Platform::ProcessOnce<std::vector<NorvikCommon::BundleDaemonInfo>> legacyAgentList;
Platform::ProcessOnce<std::vector<NorvikCommon::BundleDaemonInfo>> legacyBundleDaemonList;
Platform::ProcessOnce<std::vector<NorvikCommon::DaemonInfo>> legacyDaemonList;

template <class Component>
void appendJobs(std::vector<NorvikCommon::LaunchdInfo>& jobs, const std::vector<Component>& components) {
    for (const Component& component : components) {
        jobs.push_back(*component.launchd);
    }
}

template <class Item>
void append(std::vector<Item>& list, const std::vector<Item>& more) {
    list.insert(list.end(), more.begin(), more.end());
}

}  // namespace

const std::vector<NorvikCommon::LaunchdInfo>& ComponentLists::daemonJobs() {
    return daemonJobList.get([] {
        std::vector jobs{*ComponentPathProvider::containmentDaemon().launchd,
                         *ComponentPathProvider::fileAccessDaemon().launchd};
        appendJobs(jobs, ComponentPathProvider::legacyVersionsDaemons());
        appendJobs(jobs, ComponentPathProvider::legacyVersionsBundleDaemons());
        return jobs;
    });
}

const std::vector<NorvikCommon::LaunchdInfo>& ComponentLists::agentJobs() {
    return agentJobList.get([] {
        std::vector jobs{*ComponentPathProvider::trayMenu().launchd,
                         *ComponentPathProvider::userAgent().launchd};
        appendJobs(jobs, ComponentPathProvider::legacyVersionsUserAgents());
        return jobs;
    });
}

const std::vector<NorvikCommon::KextInfo>& ComponentLists::allKexts() {
    return kextList.get([] {
        std::vector kexts = ComponentPathProvider::legacyVersionsFileAccessFilterKexts();
        kexts.push_back(ComponentPathProvider::fileAccessFilterKext());
        return kexts;
    });
}

const std::vector<NorvikCommon::KextInfo>& ComponentLists::legacyKexts() {
    return legacyKextList.get([] { return ComponentPathProvider::legacyVersionsFileAccessFilterKexts(); });
}

const std::vector<NorvikCommon::ApplicationInfo>& ComponentLists::applications() {
    return applicationList.get([] {
        std::vector apps{ComponentPathProvider::managementConsole()};
        append(apps, ComponentPathProvider::legacyVersionsGuiApps());
        return apps;
    });
}

const std::vector<Base::URL>& ComponentLists::workflows() {
    return workflowList.get([] {
        std::vector workflows{ComponentPathProvider::workflow()};
        append(workflows, ComponentPathProvider::legacyWorkflowPaths());
        return workflows;
    });
}

const std::vector<NorvikCommon::BundleDaemonInfo>& ComponentLists::legacyAgents() {
    return legacyAgentList.get([] { return ComponentPathProvider::legacyVersionsUserAgents(); });
}

const std::vector<NorvikCommon::BundleDaemonInfo>& ComponentLists::legacyBundleDaemons() {
    return legacyBundleDaemonList.get([] { return ComponentPathProvider::legacyVersionsBundleDaemons(); });
}

const std::vector<NorvikCommon::DaemonInfo>& ComponentLists::legacyDaemons() {
    return legacyDaemonList.get([] { return ComponentPathProvider::legacyVersionsDaemons(); });
}

}  // namespace InstallCommon
