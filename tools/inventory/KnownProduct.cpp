#include "KnownProduct.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Base/FatalError.h"
#include "InstallCommon/ComponentLists.h"
#include "InstallCommon/ComponentPathProvider+Legacy.h"
#include "InstallCommon/IntallHelper.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"
#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"

namespace Inventory {

namespace {

using InstallCommon::ComponentLists;
using InstallCommon::ComponentPathProvider;
using Platform::ItemKind;

constexpr std::string_view kCurrent = "current";
constexpr std::string_view kSntBundle = "snt-bundle";
constexpr std::string_view kAntivirus = "antivirus";

/// The generation that this is an installation folder of.
std::string_view generationOf(const Base::URL& folder) {
    const std::array<std::pair<Base::URL, std::string_view>, 4> generations{
        {{ComponentPathProvider::legacyAntiVirFolder(), "antivir"},
         {ComponentPathProvider::legacyAntivirusFolder(), kAntivirus},
         {ComponentPathProvider::legacyFileAccessDaemonFolder(), "snt-folder"},
         {ComponentPathProvider::legacySntApplications(), kSntBundle}}};
    const auto* const found = std::find_if(generations.begin(), generations.end(),
                                           [&folder](const auto& each) { return each.first == folder; });
    if (found == generations.end()) {
        Base::fatalError("no generation has the folder " + folder.path());
    }
    return found->second;
}

class Items {
  public:
    void add(const Base::URL& path, KnownRecord record) {
        const auto same = std::find_if(items_.begin(), items_.end(),
                                       [&path](const KnownItem& item) { return item.path == path; });
        if (same != items_.end()) {
            same->records.push_back(record);
        } else {
            items_.push_back({path, {record}});
        }
    }
    void addAll(const std::vector<Base::URL>& paths, Role role) {
        for (const Base::URL& path : paths) {
            add(path, {role});
        }
    }

    [[nodiscard]] std::vector<KnownItem> take() { return std::move(items_); }

  private:
    std::vector<KnownItem> items_;
};

void addApplications(Items& items) {
    items.add(*ComponentPathProvider::managementConsole().bundle->location, {Role::application, kCurrent});
    const Base::URL earliest = ComponentPathProvider::legacyNorvikApplications();
    for (const NorvikCommon::ApplicationInfo& app : ComponentPathProvider::legacyVersionsGuiApps()) {
        const Base::URL& path = *app.bundle->location;
        const bool isEarliest = path.deletingLastPathComponent() == earliest;
        items.add(path, {Role::application, isEarliest ? "norvik-apps" : kSntBundle});
    }
    items.add(ComponentPathProvider::workflow(), {Role::finderService});
    items.addAll(ComponentPathProvider::legacyWorkflowPaths(), Role::finderService);
}

void addBackgroundPrograms(Items& items) {
    for (const NorvikCommon::KextInfo& kext : ComponentLists::legacyKexts()) {
        items.add(*kext.bundle->location, {Role::kernelExtension, kSntBundle});
    }
    for (const NorvikCommon::BundleDaemonInfo& agent : ComponentLists::legacyAgents()) {
        const Base::URL& location = *agent.app->bundle->location;
        items.add(location, {Role::agent, generationOf(location.deletingLastPathComponent())});
    }
    for (const NorvikCommon::BundleDaemonInfo& daemon : ComponentLists::legacyBundleDaemons()) {
        items.add(*daemon.app->bundle->location, {Role::daemon, kSntBundle});
    }
    items.add(*ComponentPathProvider::legacyAntivirusDaemon().executable->location,
              {Role::daemon, kAntivirus});
    // A folder at the same place belongs to another generation.
    items.add(*ComponentPathProvider::legacySntDaemon().executable->location,
              {Role::daemon, "snt-plain", ItemKind::file});
}

void addJobs(Items& items) {
    for (const auto* jobs : {&ComponentLists::daemonJobs(), &ComponentLists::agentJobs()}) {
        for (const NorvikCommon::LaunchdInfo& job : *jobs) {
            items.add(*job.plistLocation(), {Role::launchdJob});
        }
    }
}

void addHelpers(Items& items) {
    for (const NorvikCommon::DaemonInfo& tool : ComponentPathProvider::auxiliaryHelperTools()) {
        items.add(*tool.executable->location, {Role::helperTool});
        items.add(*tool.launchd->plistLocation(), {Role::launchdJob});
    }
    const Base::URL tools = NorvikCommon::SystemPathProvider::privilegedHelperTools();
    const std::string& support = uninstallersHelpers().back();
    items.add(tools.appendingPathComponent(support), {Role::helperTool});
    // The copy's location for the runtime package; it is gone again unless the helper was ended in between.
    items.add(tools.appendingPathComponent(support + ".package"), {Role::data});
    items.add(NorvikCommon::SystemPathProvider::daemonsPlists().appendingPathComponent(support + ".plist"),
              {Role::launchdJob});
}

void addFolders(Items& items) {
    items.addAll(
        {ComponentPathProvider::productAppSupport(), NorvikCommon::FeaturePathProvider::preferencesFolder(),
         ComponentPathProvider::allNorvikProductsAppSupport()},
        Role::data);
    items.addAll(ComponentPathProvider::legacyInstallationPaths(), Role::data);
    items.addAll(ComponentPathProvider::legacyProductsPaths(), Role::data);
}

/// Calls `take` with every program's name; nested ones included.
template <class Take>
void forEachProgram(const Take& take) {
    for (const auto& app : {ComponentPathProvider::diagnostics(), ComponentPathProvider::viewLogs(),
                            ComponentPathProvider::scanner()}) {
        take(*app.executable->name);
    }
    for (const auto& app : ComponentLists::applications()) {
        take(*app.executable->name);
    }
    for (const auto& daemon :
         {ComponentPathProvider::fileAccessDaemon(), ComponentPathProvider::containmentDaemon(),
          ComponentPathProvider::userAgent(), ComponentPathProvider::trayMenu()}) {
        take(*daemon.app->executable->name);
    }
    for (const auto* daemons : {&ComponentLists::legacyAgents(), &ComponentLists::legacyBundleDaemons()}) {
        for (const auto& daemon : *daemons) {
            take(*daemon.app->executable->name);
        }
    }
    for (const auto& daemon : ComponentLists::legacyDaemons()) {
        take(*daemon.executable->name);
    }
    for (const auto& tool : ComponentPathProvider::auxiliaryHelperTools()) {
        take(*tool.executable->name);
    }
}

}  // namespace

std::string_view nameOf(Role role) {
    switch (role) {
        case Role::application:
            return "application";
        case Role::agent:
            return "agent";
        case Role::daemon:
            return "daemon";
        case Role::kernelExtension:
            return "kernel extension";
        case Role::finderService:
            return "Finder service";
        case Role::launchdJob:
            return "launchd job";
        case Role::data:
            return "data";
        case Role::helperTool:
            return "helper tool";
    }
    Base::fatalError("unexpected enumeration value");
}

bool isProgram(Role role) {
    return role == Role::application || role == Role::agent || role == Role::daemon ||
           role == Role::kernelExtension;
}

std::vector<KnownItem> knownItems() {
    Items items;
    addApplications(items);
    addBackgroundPrograms(items);
    addJobs(items);
    addHelpers(items);
    addFolders(items);
    return items.take();
}

std::vector<Base::URL> installationFolders() {
    std::vector<Base::URL> folders{ComponentPathProvider::productAppSupport()};
    const auto& earlier = ComponentPathProvider::legacyInstallationPaths();
    folders.insert(folders.end(), earlier.begin(), earlier.end());
    return folders;
}

std::set<std::string> knownLabels() {
    std::set<std::string> labels;
    for (const auto* jobs : {&ComponentLists::daemonJobs(), &ComponentLists::agentJobs()}) {
        for (const NorvikCommon::LaunchdInfo& job : *jobs) {
            labels.insert(*job.label);
        }
    }
    for (const NorvikCommon::DaemonInfo& tool : ComponentPathProvider::auxiliaryHelperTools()) {
        labels.insert(*tool.launchd->label);
    }
    labels.insert(uninstallersHelpers().begin(), uninstallersHelpers().end());
    return labels;
}

std::set<std::string> knownProcessNames() {
    std::set<std::string> names(uninstallersHelpers().begin(), uninstallersHelpers().end());
    forEachProgram([&names](const std::string& name) { names.insert(name); });
    return names;
}

std::set<std::string> knownExtensions() {
    std::set<std::string> identifiers;
    for (const NorvikCommon::KextInfo& kext : ComponentLists::allKexts()) {
        identifiers.insert(*kext.bundle->bundleId);
    }
    return identifiers;
}

const std::vector<std::string>& uninstallersHelpers() {
    static const std::vector<std::string> labels{
        std::string(InstallCommon::InstallHelper::machServiceName),
        std::string(InstallCommon::SupportPrivilegedHelperClient::machServiceName)};
    return labels;
}

Base::URL runtimeSupport() {
    return Base::URL::fileURL("/usr/local/lib/swift");
}

}  // namespace Inventory
