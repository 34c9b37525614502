#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "KnownProduct.h"
#include "Platform/FileFacts.h"

namespace Inventory {

/// An item of the product that is there.
struct Place {
    /// Where it is. On a disk that ignores case, several spellings of the catalogue are one item; the first
    /// one is the catalogue's first.
    std::vector<std::string> paths;
    Platform::ItemKind kind = Platform::ItemKind::file;
    Platform::ItemIdentity identity;
    Role role = Role::data;
    /// The generations that alone have it, in the catalogue's order.
    std::vector<std::string> generations;

    friend bool operator==(const Place&, const Place&) = default;
};

/// A job under one of the product's labels.
struct RegisteredJob {
    /// "system" or "gui/501".
    std::string domain;
    std::string label;
    std::optional<std::int32_t> pid;
    /// As launchd remembers them; empty when it does not say.
    std::string plist;
    std::string program;
    /// Neither property list nor program are there any more: the job stays until the next restart.
    bool filesAreGone = false;

    [[nodiscard]] std::string target() const { return domain + "/" + label; }
    friend bool operator==(const RegisteredJob&, const RegisteredJob&) = default;
};

/// A process whose executable lies in one of the product's places.
struct RunningProcess {
    std::int32_t pid = 0;
    /// Effective user id.
    std::uint32_t uid = 0;
    std::string path;

    friend bool operator==(const RunningProcess&, const RunningProcess&) = default;
};

/// A label of the product's that somebody has enabled or disabled by hand. launchd remembers it for good,
/// also without the product; it does no harm.
struct JobOverride {
    std::string domain;
    std::string label;
    bool isDisabled = false;

    friend bool operator==(const JobOverride&, const JobOverride&) = default;
};

/// CFBundleShortVersionString and CFBundleVersion.
struct Version {
    std::string shortVersion;
    std::string build;

    /// As versions are compared: both, or one where they are the same.
    [[nodiscard]] std::string text() const {
        return shortVersion == build ? shortVersion : shortVersion + "." + build;
    }
    friend bool operator==(const Version&, const Version&) = default;
};

/// What is on a Mac of the product.
struct Inventory {
    /// The folder that was looked at in place of this Mac; empty for this Mac.
    std::string root;
    /// The console is there. Its version is empty when its property list does not say.
    bool hasConsole = false;
    std::optional<Version> version;
    /// The uninstaller would find a folder of an installation.
    bool hasInstallationFolder = false;
    std::vector<Place> places;
    std::vector<RegisteredJob> jobs;
    std::vector<RunningProcess> processes;
    /// Bundle identifiers of loaded kernel extensions.
    std::vector<std::string> extensions;
    std::vector<JobOverride> overrides;
    /// The runtime support package's folder is there; it stays by design.
    bool hasRuntimeSupport = false;
    /// What was left out on purpose, or makes no difference: one phrase each.
    std::vector<std::string> notLookedAt;
    /// What could not be looked at, and why: one line each. Nothing may be called absent while there is any.
    std::vector<std::string> blind;

    friend bool operator==(const Inventory&, const Inventory&) = default;
};

}  // namespace Inventory
