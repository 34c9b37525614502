#include "macsim/Payload.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>

#include "InstallCommon/CommandLists.h"
#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"
#include "Support/Files.h"
#include "Support/PayloadFolders.h"
#include "Support/PropertyList.h"
#include "macsim/Commands.h"
#include "macsim/HostPrograms.h"
#include "macsim/MacBuilder.h"
#include "macsim/ProductBundles.h"
#include "macsim/ProductLayout.h"
#include "macsim/Refusal.h"
#include "macsim/Trees.h"
#include "macsim/Workshop.h"

namespace Simulator {

namespace fs = std::filesystem;

namespace {

constexpr const char* kShortVersion = "CFBundleShortVersionString";
constexpr const char* kBuild = "CFBundleVersion";
/// Where the product is laid down before its parts move to their places in the payload.
constexpr const char* kStaging = "/.staging";

/// The console's Info.plist in a payload.
std::string consoleInformation(const std::string& folder) {
    const auto console = NorvikCommon::ComponentPathProvider::managementConsole().bundle.value();
    return folder + "/" + kApplicationsFolder + "/" + console.name.value() + "/Contents/Info.plist";
}

void takeToPayload(const std::string& root, const PayloadItem& item) {
    const std::string place = root + item.inPayload;
    std::error_code error;
    fs::create_directories(fs::path(place).parent_path(), error);
    if (!error) {
        fs::rename(root + kStaging + item.installed, place, error);
    }
    if (error) {
        throw Refusal("cannot make " + item.inPayload + ": " + error.message());
    }
}

}  // namespace

std::vector<PayloadItem> payloadItems() {
    const auto payload = InstallCommon::PayloadLocations::inDirectory(
        Base::URL::fileURL("/"), kApplicationsFolder, kLaunchdJobsFolder, kSupportFilesFolder);
    std::vector<PayloadItem> items;
    for (const auto& command : InstallCommon::CommandLists::cleanInstallation(payload)) {
        if (const auto* copy = dynamic_cast<const InstallCommon::CopyCommand*>(command.get())) {
            for (const auto& item : copy->itemsToCopy()) {
                items.push_back({item.destination.path(), item.source.path()});
            }
        }
    }
    return items;
}

BundleVersion versionOfPayload(const std::string& folder) {
    std::error_code error;
    if (!fs::is_directory(folder, error)) {
        throw Refusal(folder + " is not a folder");
    }
    for (const PayloadItem& item : payloadItems()) {
        if (!fs::exists(folder + item.inPayload, error)) {
            throw Refusal(folder + " is not a payload: " + item.inPayload.substr(1) + " is missing");
        }
    }
    const auto bytes = readFile(consoleInformation(folder));
    const auto information = bytes ? parseHostilePropertyList(*bytes) : std::nullopt;
    BundleVersion version =
        information ? BundleVersion{stringOf(*information, kShortVersion), stringOf(*information, kBuild)}
                    : BundleVersion{};
    if (version.shortVersion.empty() || version.build.empty()) {
        throw Refusal(folder + " is not a payload: its application has no version");
    }
    return version;
}

void setBundleVersion(const std::string& bundle, const BundleVersion& version) {
    const std::string path = bundle + "/Contents/Info.plist";
    const auto bytes = readFile(path);
    auto information = bytes ? parsePropertyList(*bytes) : std::nullopt;
    if (!information) {
        throw Refusal(path + " cannot be read");
    }
    (*information)[kShortVersion] = version.shortVersion;
    (*information)[kBuild] = version.build;
    if (!replaceFile(path, writePropertyList(*information, PropertyListForm::xml), 0644)) {
        throw Refusal("cannot write " + path + ": " + std::strerror(errno));
    }
}

int makePayload(const PayloadOptions& options) {
    Workshop workshop(options.folder);
    MacBuilder staging(workshop.root() + kStaging, simulatorPrograms());
    CreateOptions product;
    product.shortVersion = options.shortVersion;
    product.build = options.build;
    product.realSize = options.realSize;
    product.uninstaller = ownBundle("Uninstall Sentrel.app");
    buildInstallableProduct(staging, product);
    // The uninstaller built beside macsim has the build's version; in the product all parts have the same.
    const auto uninstaller = NorvikCommon::ComponentPathProvider::uninstaller().bundle.value();
    setBundleVersion(staging.hostPath(pathOf(uninstaller.location)), {options.shortVersion, options.build});
    for (const PayloadItem& item : payloadItems()) {
        takeToPayload(workshop.root(), item);
    }
    if (!removeTree(workshop.root() + kStaging)) {
        throw Refusal("cannot make " + options.folder);
    }
    workshop.finish();
    return 0;
}

}  // namespace Simulator
