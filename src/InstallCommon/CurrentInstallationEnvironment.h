#pragma once

#include <array>
#include <string_view>

#include "InstallCommon/InstallationEnvironment.h"

namespace InstallCommon {

/// The answers for the Mac that the program runs on; the constructor establishes the three facts.
class CurrentInstallationEnvironment final : public InstallationEnvironment {
  public:
    static constexpr std::array<std::string_view, 3> otherAntivirusesProcessNames{"kav_agent", "esets_gui",
                                                                                  "AntivirusforMac"};
    static constexpr std::array<std::string_view, 3> otherAntivirusesAppPaths{
        "/Applications/Kaspersky Anti-Virus For Mac.app", "/Applications/ESET Cyber Security.app",
        "/Library/Bitdefender/AVP/AntivirusforMac.app"};

    /// The one instance, made at the first use on the thread that asks.
    [[nodiscard]] static const InstallationEnvironment& shared();

    /// Logs "[SNTM Installer] found installed version true, updatable: " + "true" or "false" if a folder of
    /// the product exists, else nothing.
    CurrentInstallationEnvironment();

    [[nodiscard]] bool otherAntivirusInstalled() const override { return otherAntivirusInstalled_; }
    [[nodiscard]] InstallatedNorvikAntivirusType checkNorvikAntivirusInstallType(
        const Platform::Bundle& relativeToNew) const override;

  private:
    struct Installed {
        bool installed = false;
        bool updatable = false;
    };

    [[nodiscard]] static bool hasOtherAntivirusDirectory();
    [[nodiscard]] static bool isOtherAntivirusRunning();
    [[nodiscard]] static Installed checkNorvikAntivirusInstalled();

    bool otherAntivirusInstalled_;
    /// Some folder of the product, current or earlier, exists.
    bool norvikAntivirusPresent_;
    /// The installed product's console exists.
    bool norvikAntivirusSeemsToBeUpdateable_;
};

}  // namespace InstallCommon
