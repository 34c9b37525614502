#include "NorvikCommon/Product Paths Information/ProductComponents.h"

#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"

namespace NorvikCommon {

namespace {

std::optional<Base::URL> appending(const std::optional<Base::URL>& url, std::string_view component) {
    return url ? std::optional(url->appendingPathComponent(component)) : std::nullopt;
}

std::string withExtension(std::string_view name, std::string_view extension) {
    return std::string(name).append(".").append(extension);
}

}  // namespace

FilesystemItemInfo FilesystemItemInfo::itemWithPath(const Base::URL& path) {
    return {path.lastPathComponent(), path};
}

BundleInfo BundleInfo::bundleWithPath(const Base::URL& path, std::string_view bundleId) {
    return {FilesystemItemInfo::itemWithPath(path), std::string(bundleId)};
}

std::optional<Base::URL> BundleInfo::contents() const {
    return appending(location, "Contents");
}
std::optional<Base::URL> BundleInfo::executables() const {
    return contentsSubdirectory("MacOS");
}
std::optional<Base::URL> BundleInfo::resources() const {
    return contentsSubdirectory("Resources");
}
std::optional<Base::URL> BundleInfo::contentsSubdirectory(std::string_view component) const {
    return appending(contents(), component);
}
std::optional<Base::URL> BundleInfo::applications() const {
    return contentsSubdirectory("Applications");
}
std::optional<Base::URL> BundleInfo::privateItems() const {
    return contentsSubdirectory("Private");
}

LaunchdInfo LaunchdInfo::launchdWithLabel(std::string_view label, const Base::URL& launchdPlist) {
    return {std::string(label), FilesystemItemInfo::itemWithPath(launchdPlist)};
}

LaunchdInfo LaunchdInfo::launchdWithName(std::string_view name, const Base::URL& plistsLocation) {
    const std::string label = std::string("com.norvik.").append(name);
    return launchdWithLabel(label, plistsLocation.appendingPathComponent(withExtension(label, "plist")));
}

std::optional<Base::URL> LaunchdInfo::plistLocation() const {
    return plist ? plist->location : std::nullopt;
}

ApplicationInfo ApplicationInfo::appWithName(std::string_view name, const Base::URL& bundle,
                                             std::string_view bundleId) {
    BundleInfo info = BundleInfo::bundleWithPath(bundle, bundleId);
    const Base::URL executable = info.executables()->appendingPathComponent(name);
    return {std::move(info), FilesystemItemInfo::itemWithPath(executable)};
}

ApplicationInfo ApplicationInfo::appWithName(std::string_view name, std::string_view bundleId,
                                             const Base::URL& inDirectory) {
    return appWithName(name, inDirectory.appendingPathComponent(withExtension(name, "app")), bundleId);
}

DaemonInfo DaemonInfo::daemonWithExecutable(const FilesystemItemInfo& executable,
                                            const LaunchdInfo& launchdInfo) {
    return {launchdInfo, executable};
}

DaemonInfo DaemonInfo::daemonWithName(std::string_view name, const Base::URL& executableDir,
                                      const Base::URL& plistLocation) {
    return daemonWithExecutable(FilesystemItemInfo::itemWithPath(executableDir.appendingPathComponent(name)),
                                LaunchdInfo::launchdWithName(name, plistLocation));
}

DaemonInfo DaemonInfo::daemonWithName(std::string_view name, const Base::URL& executableDir) {
    return daemonWithName(name, executableDir, SystemPathProvider::daemonsPlists());
}

DaemonInfo DaemonInfo::agentWithName(std::string_view name, const Base::URL& executableDir) {
    return daemonWithName(name, executableDir, SystemPathProvider::userAgentsPlists());
}

BundleDaemonInfo BundleDaemonInfo::daemonWithName(std::string_view name, const Base::URL& bundle,
                                                  std::string_view bundleId, const Base::URL& plistLocation) {
    return {LaunchdInfo::launchdWithName(name, plistLocation),
            ApplicationInfo::appWithName(name, bundle, bundleId)};
}

BundleDaemonInfo BundleDaemonInfo::daemonWithName(std::string_view name, const Base::URL& bundle,
                                                  std::string_view bundleId) {
    return daemonWithName(name, bundle, bundleId, SystemPathProvider::daemonsPlists());
}

BundleDaemonInfo BundleDaemonInfo::guiAgentWithName(std::string_view name, const Base::URL& bundleDir,
                                                    std::string_view bundleId) {
    return daemonWithName(name, bundleDir.appendingPathComponent(withExtension(name, "app")), bundleId,
                          SystemPathProvider::userAgentsPlists());
}

KextInfo KextInfo::kextWithName(std::string_view name, std::string_view ioClassName,
                                const Base::URL& bundleLocation, std::string_view bundleId) {
    const Base::URL bundle = bundleLocation.appendingPathComponent(name).appendingPathExtension("kext");
    return {BundleInfo::bundleWithPath(bundle, bundleId), std::string(ioClassName)};
}

KextInfo KextInfo::kextWithName(std::string_view name, std::string_view bundleId) {
    return kextWithName(name, name, SystemPathProvider::extensions(), bundleId);
}

}  // namespace NorvikCommon
