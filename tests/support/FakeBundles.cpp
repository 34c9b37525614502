#include "support/FakeBundles.h"

namespace TestSupport {

std::optional<std::string> FakeBundle::infoString(const std::string& key) const {
    const auto found = info_.find(key);
    return found == info_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<Base::URL> FakeBundle::resource(const std::string& name, const std::string& type) const {
    const std::string file = name + "." + type;
    return resources_.contains(file)
               ? std::optional(url_.appendingPathComponent("Contents/Resources").appendingPathComponent(file))
               : std::nullopt;
}

std::optional<std::string> FakeBundle::localizedString(const std::string& key,
                                                       const std::string& table) const {
    const auto found = texts.find({table, key});
    return found == texts.end() ? std::nullopt : std::optional(found->second);
}

std::unique_ptr<Platform::Bundle> FakeBundles::open(const Base::URL& location) {
    calls_.push_back({"open bundle", location.path()});
    const auto found = infoByPath.find(location.path());
    return found == infoByPath.end()
               ? nullptr
               : std::make_unique<FakeBundle>(location, found->second, std::set<std::string>{});
}

std::unique_ptr<Platform::Bundle> FakeBundles::mainBundle() {
    auto bundle = std::make_unique<FakeBundle>(Base::URL::fileURL("/Applications/Uninstall Sentrel.app"),
                                               mainInfo, mainResources);
    bundle->texts = mainTexts;
    return bundle;
}

void FakeBundles::install(const std::string& path, const std::string& shortVersion,
                          const std::string& build) {
    infoByPath[path] = {{"CFBundleShortVersionString", shortVersion}, {"CFBundleVersion", build}};
}

std::optional<Platform::Error> FakeCodeModules::load(const Base::URL& module, const std::string& symbol,
                                                     void*& address) {
    calls_.push_back({"load", module.path(), symbol});
    if (symbolAddress == nullptr) {
        return Platform::Error{"no such library", 1};
    }
    address = symbolAddress;
    return std::nullopt;
}

}  // namespace TestSupport
