#include "RecordJson.h"

namespace Inspect {

namespace {

template <class Value>
Json toJson(const std::optional<Value>& value) {
    return value ? Inspect::toJson(*value) : Json(nullptr);
}

}  // namespace

Json toJson(const std::string& text) {
    return text;
}

Json toJson(const Base::URL& url) {
    return url.path();
}

Json toJson(const NorvikCommon::FilesystemItemInfo& item) {
    return {{"name", toJson(item.name)}, {"location", toJson(item.location)}};
}

Json toJson(const NorvikCommon::BundleInfo& bundle) {
    return {{"name", toJson(bundle.name)},
            {"location", toJson(bundle.location)},
            {"bundleId", toJson(bundle.bundleId)}};
}

Json toJson(const NorvikCommon::LaunchdInfo& job) {
    return {{"label", toJson(job.label)}, {"plist", toJson(job.plist)}};
}

Json toJson(const NorvikCommon::ApplicationInfo& application) {
    return {{"bundle", toJson(application.bundle)}, {"executable", toJson(application.executable)}};
}

Json toJson(const NorvikCommon::DaemonInfo& daemon) {
    return {{"launchd", toJson(daemon.launchd)}, {"executable", toJson(daemon.executable)}};
}

Json toJson(const NorvikCommon::BundleDaemonInfo& daemon) {
    return {{"launchd", toJson(daemon.launchd)}, {"app", toJson(daemon.app)}};
}

Json toJson(const NorvikCommon::KextInfo& kext) {
    return {{"bundle", toJson(kext.bundle)}, {"ioClassName", toJson(kext.ioClassName)}};
}

std::string jsonText(const Json& document) {
    constexpr int kIndent = 2;
    return document.dump(kIndent, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace Inspect
