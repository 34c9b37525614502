#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Base/URL.h"
#include "Platform/FileFacts.h"

namespace Inventory {

/// What an item of the product is for.
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

/// Whether items of this role are programs: what makes the difference between an installation and what is
/// only left of one.
[[nodiscard]] bool isProgram(Role role);

/// One meaning of a path.
struct KnownRecord {
    Role role = Role::data;
    /// The generation that alone has this item: "current", or one of the earlier ones "norvik-apps",
    /// "antivir", "antivirus", "snt-plain", "snt-folder", "snt-bundle". Empty when several have it.
    std::string_view generation{};
    /// What the item has to be for this meaning to hold; nothing when its kind does not matter.
    std::optional<Platform::ItemKind> onlyAs{};
};

/// A path where the product puts something.
struct KnownItem {
    Base::URL path;
    std::vector<KnownRecord> records;
};

/// Everything that any version of the product leaves on a Mac, from the catalogue, each path once. What lies
/// inside the console is not listed: it is there only with the console. The helper that installs the runtime
/// package, which is in no command list, is in here.
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

/// Where the runtime support package puts its libraries. They stay: other programs may use them.
[[nodiscard]] Base::URL runtimeSupport();

}  // namespace Inventory
