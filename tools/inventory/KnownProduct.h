#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Base/URL.h"
#include "Platform/FileFacts.h"

namespace Inventory {

/// The purpose of an item of the product.
enum class Role : std::uint8_t {
    application,
    agent,
    daemon,
    kernelExtension,
    finderService,
    launchdJob,
    data,
    helperTool,
};

/// "application", "agent", "daemon", "kernel extension", "Finder service", "launchd job", "data",
/// "helper tool".
[[nodiscard]] std::string_view nameOf(Role role);

/// Whether items of this role are programs, which distinguish an installation from the leftovers of
/// one.
[[nodiscard]] bool isProgram(Role role);

/// One meaning of a path.
struct KnownRecord {
    Role role = Role::data;
    /// The generation that alone has this item: "current", or one of the earlier ones "norvik-apps",
    /// "antivir", "antivirus", "snt-plain", "snt-folder", "snt-bundle". Empty if several have it.
    std::string_view generation{};
    /// The kind that the item must have for this meaning to hold; nothing if its kind does not matter.
    std::optional<Platform::ItemKind> onlyAs{};
};

/// A path where the product puts something.
struct KnownItem {
    Base::URL path;
    std::vector<KnownRecord> records;
};

/// Everything that any version of the product leaves on a Mac, from the catalogue, each path once. The
/// console's contents are not listed: they exist only with the console. The helper that installs the runtime
/// package, which is in no command list, is included.
[[nodiscard]] std::vector<KnownItem> knownItems();

/// The folders one of which makes the uninstaller find an installation.
[[nodiscard]] std::vector<Base::URL> installationFolders();

/// Labels of all jobs: daemons, agents and helper tools.
[[nodiscard]] std::set<std::string> knownLabels();

/// Names of all programs of the product.
[[nodiscard]] std::set<std::string> knownProcessNames();

/// Bundle identifiers of the kernel extensions.
[[nodiscard]] std::set<std::string> knownExtensions();

/// The labels of the helpers that work for the uninstaller.
[[nodiscard]] const std::vector<std::string>& uninstallersHelpers();

/// The folder of the runtime support package's libraries. They stay: other programs may use them.
[[nodiscard]] Base::URL runtimeSupport();

}  // namespace Inventory
