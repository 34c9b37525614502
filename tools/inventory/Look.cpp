#include "Look.h"

#include <algorithm>

#include "JobLook.h"
#include "NorvikCommon/PMProcessUtil.h"
#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"
#include "PlaceLook.h"
#include "Platform/SystemPorts.h"

namespace Inventory {

namespace {

constexpr int kMostLooks = 5;

bool isAtOrBelow(const std::string& path, const std::string& folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

void lookAtProcess(std::int32_t pid, const std::vector<KnownItem>& known, const std::set<std::string>& names,
                   Inventory& inventory) {
    const auto& util = NorvikCommon::PMProcessUtil::shared();
    const auto uid = util.processUidForPid(pid);
    const auto path = util.processLocationForPid(pid);
    if (path) {
        if (std::any_of(known.begin(), known.end(), [&path](const KnownItem& item) {
                return isAtOrBelow(path->path(), item.path.path());
            })) {
            inventory.processes.push_back({pid, uid.value_or(0), path->path()});
        }
        return;
    }
    const auto name = util.processNameForPid(pid);
    // A process that has ended in between has no user any more.
    if (name && names.contains(*name) && util.processUidForPid(pid)) {
        inventory.blind.push_back("process " + std::to_string(pid) + " is called \"" + *name +
                                  "\", but its program could not be looked up");
    }
}

void lookAtProcesses(const Viewpoint& viewpoint, Inventory& inventory) {
    const auto pids = NorvikCommon::PMProcessUtil::shared().collectPidsForUser(NorvikCommon::kAllUsersId);
    if (pids.empty()) {
        inventory.blind.emplace_back("the processes could not be listed");
    }
    const auto known = knownItems();
    const auto names = knownProcessNames();
    for (const std::int32_t pid : pids) {
        if (pid != viewpoint.self) {
            lookAtProcess(pid, known, names, inventory);
        }
    }
}

void lookAtExtensions(const Viewpoint& viewpoint, Inventory& inventory) {
    for (const std::string& identifier : knownExtensions()) {
        Platform::Error error;
        const auto isLoaded = viewpoint.extensions.isLoaded(identifier, error);
        if (!isLoaded) {
            inventory.blind.push_back(error.description);
        } else if (*isLoaded) {
            inventory.extensions.push_back(identifier);
        }
    }
}

void lookAtVersion(Inventory& inventory) {
    const std::string console =
        NorvikCommon::ComponentPathProvider::managementConsole().bundle->location->path();
    inventory.hasConsole =
        std::any_of(inventory.places.begin(), inventory.places.end(), [&console](const Place& place) {
            return std::find(place.paths.begin(), place.paths.end(), console) != place.paths.end();
        });
    const auto bundle =
        inventory.hasConsole
            ? Platform::SystemPorts::current().bundles->open(Base::URL::fileURL(inventory.root + console))
            : nullptr;
    const auto shortVersion = bundle ? bundle->infoString("CFBundleShortVersionString") : std::nullopt;
    const auto build = bundle ? bundle->infoString("CFBundleVersion") : std::nullopt;
    if (shortVersion && build) {
        inventory.version = Version{*shortVersion, *build};
    }
}

}  // namespace

Inventory look(const Viewpoint& viewpoint) {
    Inventory inventory;
    inventory.root = viewpoint.root;
    if (viewpoint.root.empty()) {
        lookAtJobs(viewpoint, inventory);
        lookAtProcesses(viewpoint, inventory);
        lookAtExtensions(viewpoint, inventory);
    } else {
        inventory.notLookedAt = {"jobs", "processes", "loaded kernel extensions", "launchd overrides"};
    }
    // Files come last: anything that starts meanwhile has its files, and anything that ends leaves them.
    lookAtPlaces(viewpoint, inventory);
    lookAtVersion(inventory);
    return inventory;
}

Inventory settledLook(const std::function<Inventory()>& lookOnce) {
    Inventory last = lookOnce();
    for (int looks = 1; looks < kMostLooks; ++looks) {
        Inventory next = lookOnce();
        if (next == last) {
            return next;
        }
        last = std::move(next);
    }
    last.blind.emplace_back("this Mac kept changing while it was looked at");
    return last;
}

bool helperRuns(const Inventory& inventory) {
    const auto& labels = uninstallersHelpers();
    const auto isHelpers = [&labels](const std::string& name) {
        return std::find(labels.begin(), labels.end(), name) != labels.end();
    };
    return std::any_of(inventory.jobs.begin(), inventory.jobs.end(),
                       [&](const RegisteredJob& job) { return job.pid && isHelpers(job.label); }) ||
           std::any_of(inventory.processes.begin(), inventory.processes.end(),
                       [&](const RunningProcess& process) {
                           return isHelpers(Base::URL::fileURL(process.path).lastPathComponent());
                       });
}

}  // namespace Inventory
