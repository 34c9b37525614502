#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "Platform/Bundles.h"
#include "Platform/CodeModules.h"
#include "support/Call.h"

namespace TestSupport {

class FakeBundle final : public Platform::Bundle {
  public:
    FakeBundle(Base::URL location, std::map<std::string, std::string> info, std::set<std::string> resources)
        : url_(std::move(location)), info_(std::move(info)), resources_(std::move(resources)) {}

    [[nodiscard]] Base::URL url() const override { return url_; }
    [[nodiscard]] std::optional<std::string> infoString(const std::string& key) const override;
    [[nodiscard]] std::optional<Base::URL> resource(const std::string& name,
                                                    const std::string& type) const override;
    [[nodiscard]] std::optional<std::string> localizedString(const std::string& key,
                                                             const std::string& table) const override;

    /// Texts of the string tables, by table and key.
    std::map<std::pair<std::string, std::string>, std::string> texts;

  private:
    Base::URL url_;
    std::map<std::string, std::string> info_;
    std::set<std::string> resources_;
};

class FakeBundles final : public Platform::Bundles {
  public:
    explicit FakeBundles(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::unique_ptr<Platform::Bundle> open(const Base::URL& location) override;
    [[nodiscard]] std::unique_ptr<Platform::Bundle> mainBundle() override;

    /// Installs a bundle with these two versions at a path.
    void install(const std::string& path, const std::string& shortVersion, const std::string& build);

    std::map<std::string, std::map<std::string, std::string>> infoByPath;
    std::map<std::string, std::string> mainInfo;
    std::set<std::string> mainResources;
    /// Texts of the main bundle's string tables, by table and key.
    std::map<std::pair<std::string, std::string>, std::string> mainTexts;

  private:
    CallList& calls_;
};

class FakeCodeModules final : public Platform::CodeModules {
  public:
    explicit FakeCodeModules(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::optional<Platform::Error> load(const Base::URL& module, const std::string& symbol,
                                                      void*& address) override;

    /// The address of every symbol; null when nothing can be loaded.
    void* symbolAddress = nullptr;

  private:
    CallList& calls_;
};

}  // namespace TestSupport
