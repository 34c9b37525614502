#include "macsim/ProductBundles.h"

namespace Simulator {

using NorvikCommon::ApplicationInfo;
using NorvikCommon::BundleDaemonInfo;
using NorvikCommon::DaemonInfo;
using NorvikCommon::KextInfo;
using NorvikCommon::LaunchdInfo;

namespace {

constexpr const char* kProgram = "simulated-app";

}  // namespace

std::string pathOf(const std::optional<Base::URL>& url) {
    return url.value().path();
}

PropertyList ProductBundles::information(const std::string& identifier, const std::string& name,
                                         const std::string& type) const {
    return {{"CFBundleIdentifier", identifier},
            {"CFBundleExecutable", name},
            {"CFBundleName", name},
            {"CFBundlePackageType", type},
            {"CFBundleShortVersionString", shortVersion_},
            {"CFBundleVersion", build_}};
}

void ProductBundles::application(const ApplicationInfo& app, PropertyListForm form) {
    const std::string contents = pathOf(app.bundle.value().contents());
    const std::string name = app.executable.value().name.value();
    mac_.program(kProgram, pathOf(app.executable->location));
    mac_.propertyList(contents + "/Info.plist", information(app.bundle->bundleId.value(), name, "APPL"),
                      form);
    mac_.file(contents + "/PkgInfo", "APPL????");
    mac_.file(contents + "/Resources/en.lproj/Localizable.strings", "\"title\" = \"" + name + "\";\n");
}

void ProductBundles::job(const LaunchdInfo& launchd, const std::string& program, PropertyList extra) {
    extra["Label"] = launchd.label.value();
    extra["ProgramArguments"] = PropertyList::array({program});
    mac_.propertyList(pathOf(launchd.plistLocation()), extra, PropertyListForm::xml);
}

void ProductBundles::daemon(const BundleDaemonInfo& daemon) {
    application(daemon.app.value(), PropertyListForm::xml);
    job(daemon.launchd.value(), pathOf(daemon.app->executable.value().location),
        {{"RunAtLoad", true}, {"KeepAlive", true}});
}

void ProductBundles::daemon(const DaemonInfo& daemon, const std::string& executable) {
    const std::string program = executable.empty() ? pathOf(daemon.executable.value().location) : executable;
    mac_.program(kProgram, program);
    job(daemon.launchd.value(), program, {{"RunAtLoad", true}, {"KeepAlive", true}});
}

void ProductBundles::agent(const BundleDaemonInfo& agent) {
    application(agent.app.value(), PropertyListForm::binary);
    job(agent.launchd.value(), pathOf(agent.app->executable.value().location),
        {{"RunAtLoad", true},
         {"KeepAlive", {{"SuccessfulExit", false}}},
         {"LimitLoadToSessionType", "Aqua"}});
}

void ProductBundles::helperTool(const DaemonInfo& tool) {
    const std::string program = pathOf(tool.executable.value().location);
    mac_.program(kProgram, program, {0544});
    job(tool.launchd.value(), program, {{"MachServices", {{tool.launchd->label.value(), true}}}});
}

void ProductBundles::kernelExtension(const KextInfo& kext) {
    const std::string name = kext.ioClassName.value();
    const std::string contents = pathOf(kext.bundle.value().contents());
    mac_.propertyList(contents + "/Info.plist", information(kext.bundle->bundleId.value(), name, "KEXT"),
                      PropertyListForm::xml);
    mac_.file(contents + "/MacOS/" + name, std::string(65536, '\x90'), {0755});
}

void ProductBundles::workflow(const std::string& path) {
    mac_.propertyList(path + "/Contents/Info.plist", {{"NSServices", PropertyList::array()}},
                      PropertyListForm::xml);
    mac_.propertyList(path + "/Contents/document.wflow", {{"AMApplicationVersion", "2.8"}},
                      PropertyListForm::binary);
}

}  // namespace Simulator
