#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Base/Archive/Coder.h"
#include "Base/URL.h"

namespace NorvikCommon {

/// Records that describe components of the product: plain values, made by factories that derive paths from a
/// few names, and coded into archives under the keys that both ends agree on. No factory touches the disk,
/// validates or fails. A property is empty only if a record was decoded from an archive without its key;
/// properties derived from an empty one are empty too.

/// A file or folder.
struct FilesystemItemInfo {
    std::optional<std::string> name;
    std::optional<Base::URL> location;

    /// `name` is the last component of `path`.
    [[nodiscard]] static FilesystemItemInfo itemWithPath(const Base::URL& path);

    [[nodiscard]] static const Base::CodedClass& codedClass();
    void encode(Base::Coder& coder) const;
    [[nodiscard]] static std::optional<FilesystemItemInfo> decode(Base::Coder& coder);
    friend bool operator==(const FilesystemItemInfo&, const FilesystemItemInfo&) = default;
};

/// A bundle folder.
struct BundleInfo : FilesystemItemInfo {
    /// May be the empty string; nothing checks it.
    std::optional<std::string> bundleId;

    [[nodiscard]] static BundleInfo bundleWithPath(const Base::URL& path, std::string_view bundleId);

    /// `location` + "Contents".
    [[nodiscard]] std::optional<Base::URL> contents() const;
    /// `contents` + "MacOS".
    [[nodiscard]] std::optional<Base::URL> executables() const;
    /// `contents` + "Resources".
    [[nodiscard]] std::optional<Base::URL> resources() const;
    [[nodiscard]] std::optional<Base::URL> contentsSubdirectory(std::string_view component) const;
    /// `contents` + "Applications": where the console keeps the applications that a user may start.
    [[nodiscard]] std::optional<Base::URL> applications() const;
    /// `contents` + "Private": where the console keeps everything else.
    [[nodiscard]] std::optional<Base::URL> privateItems() const;

    [[nodiscard]] static const Base::CodedClass& codedClass();
    void encode(Base::Coder& coder) const;
    [[nodiscard]] static std::optional<BundleInfo> decode(Base::Coder& coder);
    friend bool operator==(const BundleInfo&, const BundleInfo&) = default;
};

/// A launchd job.
struct LaunchdInfo {
    std::optional<std::string> label;
    std::optional<FilesystemItemInfo> plist;

    [[nodiscard]] static LaunchdInfo launchdWithLabel(std::string_view label, const Base::URL& launchdPlist);
    /// Label "com.norvik." + `name`, plist `plistsLocation` + label + ".plist". The name keeps its case.
    [[nodiscard]] static LaunchdInfo launchdWithName(std::string_view name, const Base::URL& plistsLocation);

    /// The plist's place, empty if either part of the path is missing.
    [[nodiscard]] std::optional<Base::URL> plistLocation() const;

    [[nodiscard]] static const Base::CodedClass& codedClass();
    void encode(Base::Coder& coder) const;
    [[nodiscard]] static std::optional<LaunchdInfo> decode(Base::Coder& coder);
    friend bool operator==(const LaunchdInfo&, const LaunchdInfo&) = default;
};

/// An application with a window.
struct ApplicationInfo {
    std::optional<BundleInfo> bundle;
    std::optional<FilesystemItemInfo> executable;

    /// The executable inside the bundle is called `name`, whatever the bundle's file is called.
    [[nodiscard]] static ApplicationInfo appWithName(std::string_view name, const Base::URL& bundle,
                                                     std::string_view bundleId);
    /// The bundle is `inDirectory` + `name` + ".app".
    [[nodiscard]] static ApplicationInfo appWithName(std::string_view name, std::string_view bundleId,
                                                     const Base::URL& inDirectory);

    [[nodiscard]] static const Base::CodedClass& codedClass();
    void encode(Base::Coder& coder) const;
    [[nodiscard]] static std::optional<ApplicationInfo> decode(Base::Coder& coder);
    friend bool operator==(const ApplicationInfo&, const ApplicationInfo&) = default;
};

/// A daemon or agent that is a plain executable.
struct DaemonInfo {
    std::optional<LaunchdInfo> launchd;
    std::optional<FilesystemItemInfo> executable;

    [[nodiscard]] static DaemonInfo daemonWithExecutable(const FilesystemItemInfo& executable,
                                                         const LaunchdInfo& launchdInfo);
    [[nodiscard]] static DaemonInfo daemonWithName(std::string_view name, const Base::URL& executableDir,
                                                   const Base::URL& plistLocation);
    /// With its plist in the system's daemons folder.
    [[nodiscard]] static DaemonInfo daemonWithName(std::string_view name, const Base::URL& executableDir);
    /// With its plist in the system's agents folder.
    [[nodiscard]] static DaemonInfo agentWithName(std::string_view name, const Base::URL& executableDir);

    [[nodiscard]] static const Base::CodedClass& codedClass();
    void encode(Base::Coder& coder) const;
    [[nodiscard]] static std::optional<DaemonInfo> decode(Base::Coder& coder);
    friend bool operator==(const DaemonInfo&, const DaemonInfo&) = default;
};

/// A daemon or agent packaged as a bundle.
struct BundleDaemonInfo {
    std::optional<LaunchdInfo> launchd;
    std::optional<ApplicationInfo> app;

    /// `bundle` is used as given; its extension need not be "app".
    [[nodiscard]] static BundleDaemonInfo daemonWithName(std::string_view name, const Base::URL& bundle,
                                                         std::string_view bundleId,
                                                         const Base::URL& plistLocation);
    /// With its plist in the system's daemons folder.
    [[nodiscard]] static BundleDaemonInfo daemonWithName(std::string_view name, const Base::URL& bundle,
                                                         std::string_view bundleId);
    /// The bundle is `bundleDir` + `name` + ".app", the plist lies in the system's agents folder.
    [[nodiscard]] static BundleDaemonInfo guiAgentWithName(std::string_view name, const Base::URL& bundleDir,
                                                           std::string_view bundleId);

    [[nodiscard]] static const Base::CodedClass& codedClass();
    void encode(Base::Coder& coder) const;
    [[nodiscard]] static std::optional<BundleDaemonInfo> decode(Base::Coder& coder);
    friend bool operator==(const BundleDaemonInfo&, const BundleDaemonInfo&) = default;
};

/// A kernel extension.
struct KextInfo {
    std::optional<BundleInfo> bundle;
    std::optional<std::string> ioClassName;

    /// The bundle is `bundleLocation` + `name` + ".kext".
    [[nodiscard]] static KextInfo kextWithName(std::string_view name, std::string_view ioClassName,
                                               const Base::URL& bundleLocation, std::string_view bundleId);
    /// With the name as its IOKit class name, in the system's extensions folder.
    [[nodiscard]] static KextInfo kextWithName(std::string_view name, std::string_view bundleId);

    [[nodiscard]] static const Base::CodedClass& codedClass();
    void encode(Base::Coder& coder) const;
    [[nodiscard]] static std::optional<KextInfo> decode(Base::Coder& coder);
    friend bool operator==(const KextInfo&, const KextInfo&) = default;
};

/// Reads a nested record. Empty if the key is missing (not a fault) or of another class (the archive is
/// refused).
template <class Record>
[[nodiscard]] std::optional<Record> decodeRecord(Base::Coder& coder, std::string_view key) {
    const std::unique_ptr<Base::CodedObject> object = coder.decodeObject(key, Record::codedClass());
    if (auto* record = dynamic_cast<Base::CodedRecord<Record>*>(object.get())) {
        return record->take();
    }
    return std::nullopt;
}

/// A bundle is an item too: where an item is expected, the item part of a bundle is taken.
template <>
[[nodiscard]] std::optional<FilesystemItemInfo> decodeRecord<FilesystemItemInfo>(Base::Coder& coder,
                                                                                 std::string_view key);

/// Writes a nested record, or nil if it is empty.
template <class Record>
void encodeRecord(Base::Coder& coder, std::string_view key, const std::optional<Record>& record) {
    if (record) {
        coder.encodeObject(key, Base::CodedRecord<Record>(*record));
    } else {
        coder.encodeNil(key);
    }
}

}  // namespace NorvikCommon
