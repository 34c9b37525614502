#pragma once

#include <set>
#include <string>
#include <vector>

#include "support/InstallerLine.h"
#include "support/SimulatedMac.h"

namespace SystemTests {

using TestSupport::installerLine;

/// The uninstaller where the current product keeps it.
inline const std::string kInstalledUninstaller =
    "/Applications/Sentrel.app/Contents/Applications/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel";

/// The same beside the product.
inline const std::string kElsewhere =
    "/Users/alice/Downloads/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel";

inline const std::string kFound = installerLine("found installed version true, updatable: true");
inline const std::string kFinished = installerLine("Uninstallation finished.");
inline const std::string kFailed = installerLine("Uninstallation failed.");

/// The entries of the log that the uninstaller writes when everything went well.
inline const std::vector<std::string> kSuccess{kFound, "Uninstallation finished", kFinished};

/// What a program wrote to standard error without the entries of the log that it writes there too.
[[nodiscard]] std::string withoutLogEntries(const std::string& standardError);

class ProductMac : public TestSupport::SimulatedMac {
  public:
    /// Makes the Mac; a failure to do so fails the test.
    explicit ProductMac(const std::vector<std::string>& options);

    /// Runs "Uninstall Sentrel --silent" from its place in the product.
    TestSupport::ProgramResult uninstall(const std::vector<std::string>& faults = {},
                                         const std::string& user = "root");
    /// Makes a payload of that version ("6.4/640") beside the Mac and returns its folder; a failure fails the
    /// test.
    [[nodiscard]] std::string makePayload(const std::string& version) const;
    /// macsim install of a payload, with more options. Standard error without entries of the log.
    TestSupport::ProgramResult install(const std::string& payload,
                                       const std::vector<std::string>& options = {});
    /// What the installer logged.
    [[nodiscard]] std::vector<std::string> installerLog() const { return messages("Install Sentrel"); }
    /// What the uninstaller logged.
    [[nodiscard]] std::vector<std::string> uninstallerLog() const { return messages("Uninstall Sentrel"); }
    /// What the installer helper logged.
    [[nodiscard]] std::vector<std::string> helperLog() const {
        return messages("com.norvik.InstallerHelper");
    }
    /// The calls of the Mac's tools in its last run, "REAL/EFFECTIVE PROGRAM ARGUMENT...", in order.
    [[nodiscard]] std::vector<std::string> transcript() const;

    /// Copies the built uninstaller bundle to this folder of the Mac, readable for everybody.
    void putUninstaller(const std::string& folder) const;
    /// Puts files, links and jobs of other makers beside the product's.
    void putBystanders() const;
    /// Every file, folder and link below these places of the Mac, with its kind.
    [[nodiscard]] std::set<std::string> inventory() const;

    /// Fails the test when a job, process, kernel extension or path of the product is left.
    void expectClean() const;
    /// Fails the test when the product's main parts are not all there.
    void expectInstalled() const;
};

}  // namespace SystemTests
