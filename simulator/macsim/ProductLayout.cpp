#include "macsim/ProductLayout.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>

#include "InstallCommon/ComponentPathProvider+Legacy.h"
#include "NorvikCommon/DaemonConnector.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"
#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "macsim/ProductBundles.h"
#include "macsim/ProductData.h"
#include "macsim/Refusal.h"
#include "macsim/SystemLayout.h"

namespace Simulator {

using NorvikCommon::ApplicationInfo;
using NorvikCommon::BundleDaemonInfo;
using NorvikCommon::BundleInfo;
using NorvikCommon::FeaturePathProvider;
using NorvikCommon::SystemPathProvider;
using Paths = InstallCommon::ComponentPathProvider;

namespace {

constexpr std::array<std::string_view, 7> kGenerations{"norvik-apps", "antivir",    "antivirus", "snt-plain",
                                                       "snt-folder",  "snt-bundle", "current"};

bool liesIn(const std::optional<BundleInfo>& bundle, const Base::URL& folder) {
    return bundle && bundle->location && bundle->location->deletingLastPathComponent() == folder;
}

class Generations {
  public:
    Generations(MacBuilder& mac, const CreateOptions& options)
        : mac_(mac), options_(options), bundles_(mac, options.shortVersion, options.build) {}

    void build(std::string_view generation) {
        if (generation == "norvik-apps") {
            applicationsIn(Paths::legacyNorvikApplications());
        } else if (generation == "antivir") {
            agentsIn(Paths::legacyAntiVirFolder());
        } else if (generation == "antivirus") {
            agentsIn(Paths::legacyAntivirusFolder());
            bundles_.daemon(Paths::legacyAntivirusDaemon());
        } else if (generation == "snt-plain") {
            plainDaemon();
        } else if (generation == "snt-folder") {
            agentsIn(Paths::legacyFileAccessDaemonFolder());
        } else if (generation == "snt-bundle") {
            bundleGeneration();
        } else {
            current();
        }
    }

    /// The parts that every generation has.
    void common() {
        for (const auto& tool : Paths::auxiliaryHelperTools()) {
            bundles_.helperTool(tool);
        }
        const bool earlier = std::any_of(options_.installed.begin(), options_.installed.end(),
                                         [](const std::string& name) { return name != "current"; });
        for (const Base::URL& workflow : Paths::legacyWorkflowPaths()) {
            if (earlier) {
                bundles_.workflow(workflow.path());
            }
        }
        buildProductData(mac_, options_);
    }

  private:
    void applicationsIn(const Base::URL& folder) {
        for (const ApplicationInfo& app : Paths::legacyVersionsGuiApps()) {
            if (liesIn(app.bundle, folder)) {
                bundles_.application(app, PropertyListForm::binary);
            }
        }
    }

    void agentsIn(const Base::URL& folder) {
        for (const BundleDaemonInfo& agent : Paths::legacyVersionsUserAgents()) {
            if (liesIn(agent.app.value().bundle, folder)) {
                bundles_.agent(agent);
            }
        }
    }

    void plainDaemon() {
        const auto daemon = Paths::legacySntDaemon();
        const std::string path = pathOf(daemon.executable.value().location);
        // The folder generation has a folder at this very place: then the daemon moves into it.
        const bool isFolder = std::find(options_.installed.begin(), options_.installed.end(), "snt-folder") !=
                              options_.installed.end();
        bundles_.daemon(daemon, isFolder ? path + "/" + daemon.executable->name.value() : "");
    }

    void bundleGeneration() {
        for (const BundleDaemonInfo& daemon : Paths::legacyVersionsBundleDaemons()) {
            bundles_.daemon(daemon);
        }
        agentsIn(Paths::legacySntApplications());
        applicationsIn(Paths::legacySntApplications());
        for (const auto& kext : Paths::legacyVersionsFileAccessFilterKexts()) {
            bundles_.kernelExtension(kext);
        }
    }

    void current() {
        bundles_.application(Paths::managementConsole(), PropertyListForm::xml);
        const std::string contents = pathOf(Paths::managementConsole().bundle.value().contents());
        if (kHasDialogs) {
            for (const char* name : {"NorvikCustomUI.framework", "NorvikGuiCommon.framework"}) {
                mac_.programFolder(name, contents + "/Frameworks/" + name);
            }
        }
        bundles_.application(Paths::diagnostics(), PropertyListForm::binary);
        bundles_.application(Paths::viewLogs(), PropertyListForm::binary);
        bundles_.application(Paths::scanner(), PropertyListForm::xml);
        bundles_.daemon(Paths::fileAccessDaemon());
        bundles_.daemon(Paths::containmentDaemon());
        bundles_.agent(Paths::userAgent());
        bundles_.agent(Paths::trayMenu());
        bundles_.kernelExtension(Paths::fileAccessFilterKext());
        bundles_.workflow(Paths::workflow().path());
        const ApplicationInfo uninstaller = Paths::uninstaller();
        if (options_.withoutUninstaller) {
            return;
        }
        std::error_code ignored;
        if (!std::filesystem::is_directory(options_.uninstaller + "/Contents", ignored)) {
            throw Refusal("there is no uninstaller at " + options_.uninstaller +
                          " (--uninstaller PATH names another, --without-uninstaller does without)");
        }
        mac_.copyFolder(options_.uninstaller, pathOf(uninstaller.bundle.value().location));
    }

    MacBuilder& mac_;
    const CreateOptions& options_;
    ProductBundles bundles_;
};

}  // namespace

std::span<const std::string_view> generations() {
    return kGenerations;
}

void buildProduct(MacBuilder& mac, const CreateOptions& options) {
    if (options.installed.empty()) {
        return;
    }
    Generations product(mac, options);
    for (const std::string_view generation : kGenerations) {
        if (std::find(options.installed.begin(), options.installed.end(), generation) !=
            options.installed.end()) {
            product.build(generation);
        }
    }
    product.common();
}

void buildInstallableProduct(MacBuilder& mac, const CreateOptions& options) {
    Generations(mac, options).build("current");
    buildInstallableData(mac, options.realSize);
}

std::vector<std::string> installedApplications(const MacBuilder& mac, const std::string& name) {
    std::vector<ApplicationInfo> apps{Paths::managementConsole(), Paths::diagnostics(), Paths::viewLogs(),
                                      Paths::scanner()};
    const auto legacy = Paths::legacyVersionsGuiApps();
    apps.insert(apps.end(), legacy.begin(), legacy.end());
    std::vector<std::string> found;
    for (const ApplicationInfo& app : apps) {
        const std::string path = pathOf(app.executable.value().location);
        if ((name == "all" || name == app.executable->name) && mac.exists(path)) {
            found.push_back(path);
        }
    }
    return found;
}

std::map<std::string, std::vector<std::string>> distantObjects() {
    using Daemon = NorvikCommon::DaemonConnector;
    return {{Paths::fileAccessDaemon().launchd.value().label.value(),
             {std::string(Daemon::rootName), std::string(Daemon::onDemandScannerRootName)}}};
}

std::vector<std::string> extensionFolders() {
    return {SystemPathProvider::extensions().path(),
            pathOf(Paths::fileAccessDaemon().app.value().bundle.value().resources())};
}

std::vector<std::string> productPaths() {
    std::set<std::string> paths{Paths::managementConsole().bundle.value().location.value().path(),
                                Paths::workflow().path(), Paths::productAppSupport().path(),
                                Paths::allNorvikProductsAppSupport().path(),
                                FeaturePathProvider::preferencesFolder().path()};
    for (const auto* list :
         {&Paths::legacyInstallationPaths(), &Paths::legacyProductsPaths(), &Paths::legacyWorkflowPaths()}) {
        for (const Base::URL& url : *list) {
            paths.insert(url.path());
        }
    }
    for (const auto& kext : Paths::legacyVersionsFileAccessFilterKexts()) {
        paths.insert(pathOf(kext.bundle.value().location));
    }
    for (const auto& app : Paths::legacyVersionsGuiApps()) {
        paths.insert(pathOf(app.bundle.value().location));
    }
    std::vector<BundleDaemonInfo> bundles{Paths::fileAccessDaemon(), Paths::containmentDaemon(),
                                          Paths::userAgent(), Paths::trayMenu()};
    for (const auto& more : {Paths::legacyVersionsBundleDaemons(), Paths::legacyVersionsUserAgents()}) {
        bundles.insert(bundles.end(), more.begin(), more.end());
    }
    for (const BundleDaemonInfo& daemon : bundles) {
        paths.insert(pathOf(daemon.app.value().bundle.value().location));
        paths.insert(pathOf(daemon.launchd.value().plistLocation()));
    }
    for (const auto& list : {Paths::legacyVersionsDaemons(), Paths::auxiliaryHelperTools()}) {
        for (const auto& daemon : list) {
            paths.insert(pathOf(daemon.executable.value().location));
            paths.insert(pathOf(daemon.launchd.value().plistLocation()));
        }
    }
    return {paths.begin(), paths.end()};
}

}  // namespace Simulator
