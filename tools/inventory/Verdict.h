#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Inventory.h"

namespace Inventory {

/// The conclusion from an inventory.
enum class Verdict : std::uint8_t {
    nothing,    ///< nothing of the product is there
    unknown,    ///< no installation was found, but not everything could be looked at
    installed,  ///< programs that the uninstaller removes, or refuses because they are newer
    leftovers,  ///< something that the uninstaller would not act on
    restart,    ///< only a loaded extension, or jobs whose files are gone, which a restart removes
};

[[nodiscard]] Verdict verdictOf(const Inventory& inventory, const Version& uninstaller);

/// 0, 1, 3, 4, 5, in the order above.
[[nodiscard]] int exitStatusOf(Verdict verdict);

/// "nothing", "unknown", "installed", "leftovers", "restart".
[[nodiscard]] std::string_view nameOf(Verdict verdict);

/// Whether an uninstaller of this version would do its work.
enum class UninstallerAnswer : std::uint8_t {
    uninstalls,
    refusesAbsent,  ///< neither a folder of an installation nor the console is there
    refusesNewer,   ///< the console is newer
};

[[nodiscard]] UninstallerAnswer uninstallerAnswer(const Inventory& inventory, const Version& uninstaller);

/// "uninstalls", "refuses: not installed", "refuses: newer version installed".
[[nodiscard]] std::string_view nameOf(UninstallerAnswer answer);

/// The generations that exist, in order of release.
[[nodiscard]] std::vector<std::string> generationsOf(const Inventory& inventory);

/// One thing that has to go, and the line of shell that removes it.
struct Leftover {
    std::string what;
    std::string line;
    /// "job", "process", "extension", "file", "folder", "link" or "item".
    std::string kind;
    /// Identifies it for its removal: domain and label, process id, bundle identifier or path.
    std::string target;

    friend bool operator==(const Leftover&, const Leftover&) = default;
};

/// The leftovers if the verdict is leftovers or restart, in the order in which the lines should be run: jobs,
/// processes, extensions, items. An item inside another one goes with it. Empty for any other verdict.
[[nodiscard]] std::vector<Leftover> leftoversOf(const Inventory& inventory, Verdict verdict);

/// `text` as one word for a POSIX shell, whatever it contains; unchanged if nothing in it needs quoting.
[[nodiscard]] std::string shellWord(std::string_view text);

}  // namespace Inventory
