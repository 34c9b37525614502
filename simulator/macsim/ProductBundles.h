#pragma once

#include <string>

#include "NorvikCommon/Product Paths Information/ProductComponents.h"
#include "macsim/MacBuilder.h"

namespace Simulator {

/// Lays down single components of the product as their records describe them.
class ProductBundles {
  public:
    ProductBundles(MacBuilder& mac, std::string shortVersion, std::string build)
        : mac_(mac), shortVersion_(std::move(shortVersion)), build_(std::move(build)) {}

    void application(const NorvikCommon::ApplicationInfo& app, PropertyListForm form);
    /// With its job, a daemon that is kept alive.
    void daemon(const NorvikCommon::BundleDaemonInfo& daemon);
    /// The same for a plain executable, which lies at `executable` instead of its own place if that is not
    /// empty.
    void daemon(const NorvikCommon::DaemonInfo& daemon, const std::string& executable = "");
    /// With its job, which is kept alive until it exits successfully.
    void agent(const NorvikCommon::BundleDaemonInfo& agent);
    /// A privileged helper tool with its on-demand job.
    void helperTool(const NorvikCommon::DaemonInfo& tool);
    void kernelExtension(const NorvikCommon::KextInfo& kext);
    void workflow(const std::string& path);

  private:
    [[nodiscard]] PropertyList information(const std::string& identifier, const std::string& name,
                                           const std::string& type) const;
    void job(const NorvikCommon::LaunchdInfo& launchd, const std::string& program, PropertyList extra);

    MacBuilder& mac_;
    std::string shortVersion_;
    std::string build_;
};

/// The path of a catalogue's URL, which always has one.
[[nodiscard]] std::string pathOf(const std::optional<Base::URL>& url);

}  // namespace Simulator
