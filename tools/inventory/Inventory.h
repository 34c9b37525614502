#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "KnownProduct.h"
#include "Platform/FileFacts.h"

namespace Inventory {

/// An existing item of the product.
struct Place {
    /// Its location. On a disk that ignores case, several spellings of the catalogue are one item; the first
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
    /// As launchd remembers them; empty if it does not say.
    std::string plist;
    std::string program;
    /// Neither property list nor program exists any more: the job stays until the next restart.
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

/// A label of the product that somebody has enabled or disabled by hand. launchd remembers it for good, even
/// without the product; it does no harm.
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

    /// The version as it is compared: both, or one if they are the same.
    [[nodiscard]] std::string text() const {
        return shortVersion == build ? shortVersion : shortVersion + "." + build;
    }
    friend bool operator==(const Version&, const Version&) = default;
};

/// The parts of the product on a Mac.
struct Inventory {
    /// The folder that was looked at instead of this Mac; empty for this Mac.
    std::string root;
    /// The console exists. Its version is empty if its property list does not say.
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
    /// The runtime support package's folder exists; it stays by design.
    bool hasRuntimeSupport = false;
    /// Left out intentionally, or without influence: one phrase each.
    std::vector<std::string> notLookedAt;
    /// Not possible to look at, and why: one line each. While there is any, nothing may be called absent.
    std::vector<std::string> blind;

    friend bool operator==(const Inventory&, const Inventory&) = default;
};

}  // namespace Inventory
