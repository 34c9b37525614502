#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/SimulatedMac.h"

namespace Torture {

/// The uninstaller where no command list reaches it, as on a disk image.
inline const std::string kUninstaller =
    "/Volumes/Uninstall/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel";
/// Where the programs of this folder lie in a Mac.
inline const std::string kTools = "/tmp/torture";

/// Every item below the places that matter: kind, mode, owner and contents (or target), by path.
using Inventory = std::map<std::string, std::string>;

/// What an uninstallation left.
struct End {
    enum class Kind {
        /// Exactly what it leaves on an identical Mac where nothing interferes.
        clean,
        /// The same, and the items that go after the product's last folder:
        /// files or jobs of the privileged helpers, the maker's emptied
        /// folders.
        helpersLeft,
        /// Anything else.
        lost,
    };
    Kind kind = Kind::lost;
    /// The differences, for people.
    std::string differences;
};

/// A simulated Mac with every generation of the product, three users, everything running, files of other
/// makers beside every place of the product, and the uninstaller outside the product. Throws when it cannot
/// be made.
class TortureMac : public TestSupport::SimulatedMac {
  public:
    /// `installed` false: the same Mac without the product.
    explicit TortureMac(bool installed = true);

    /// Runs a line of shell as root under these faults. Throws when the Mac does not come up.
    TestSupport::ProgramResult shellWith(const std::vector<std::string>& faults, const std::string& line);
    /// Runs the uninstaller to its end.
    TestSupport::ProgramResult uninstall(const std::vector<std::string>& faults = {});
    /// Makes the program `name` of this folder the uninstaller's: it gets the uninstaller's identity.
    void putInUninstallersPlace(const std::string& name) const;

    /// What the uninstallers said last: "Uninstallation finished.", "Uninstallation failed." or something
    /// else.
    [[nodiscard]] std::string lastWord() const;
    /// Whether the last uninstaller found nothing to uninstall.
    [[nodiscard]] bool foundNothing() const;

    /// The last lines of the system log, one per line.
    [[nodiscard]] std::string endOfLog() const;
    [[nodiscard]] Inventory inventory() const;
    /// Items here that are missing in the inventory of a Mac whose uninstallation nobody disturbed.
    [[nodiscard]] std::vector<std::string> left(const Inventory& undisturbed) const;
    /// Items of that inventory that are missing or changed here, for people; empty if there are none.
    [[nodiscard]] std::string harmed(const Inventory& undisturbed) const;
    /// Compares with the inventory of a Mac whose uninstallation nobody disturbed.
    [[nodiscard]] End end(const Inventory& undisturbed) const;

  private:
    /// By a separate program: a file that this one had open for writing while another thread starts a Mac
    /// could not be executed there.
    void copy(const std::string& hostItem, const std::string& macPath) const;
    void putBystanders() const;
};

/// The inventory after an undisturbed uninstallation of a TortureMac. Throws when that run does not end well.
[[nodiscard]] Inventory undisturbedInventory();

/// Whether this is the place of a privileged helper's tool or of its property list.
[[nodiscard]] bool isHelperFile(const std::string& path);

/// A word of a line of shell.
[[nodiscard]] std::string quoted(const std::string& text);

}  // namespace Torture
