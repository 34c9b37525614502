// The coded form of the records. Every key is the property's name; the order of encoding is fixed.

#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace NorvikCommon {

namespace {

void encodeString(Base::Coder& coder, std::string_view key, const std::optional<std::string>& value) {
    if (value) {
        coder.encodeString(key, *value);
    } else {
        coder.encodeNil(key);
    }
}

void encodeURL(Base::Coder& coder, std::string_view key, const std::optional<Base::URL>& value) {
    if (value) {
        coder.encodeURL(key, *value);
    } else {
        coder.encodeNil(key);
    }
}

}  // namespace

const Base::CodedClass& FilesystemItemInfo::codedClass() {
    static constexpr Base::CodedClass kClass{"FilesystemItemInfo", nullptr,
                                             &Base::CodedRecord<FilesystemItemInfo>::make};
    return kClass;
}

void FilesystemItemInfo::encode(Base::Coder& coder) const {
    encodeString(coder, "name", name);
    encodeURL(coder, "location", location);
}

std::optional<FilesystemItemInfo> FilesystemItemInfo::decode(Base::Coder& coder) {
    FilesystemItemInfo record;
    record.name = coder.decodeString("name");
    record.location = coder.decodeURL("location");
    return record;
}

const Base::CodedClass& BundleInfo::codedClass() {
    static const Base::CodedClass kClass{"BundleInfo", &FilesystemItemInfo::codedClass(),
                                         &Base::CodedRecord<BundleInfo>::make};
    return kClass;
}

void BundleInfo::encode(Base::Coder& coder) const {
    FilesystemItemInfo::encode(coder);
    encodeString(coder, "bundleId", bundleId);
}

std::optional<BundleInfo> BundleInfo::decode(Base::Coder& coder) {
    std::optional<FilesystemItemInfo> item = FilesystemItemInfo::decode(coder);
    if (!item) {
        return std::nullopt;
    }
    return BundleInfo{std::move(*item), coder.decodeString("bundleId")};
}

const Base::CodedClass& LaunchdInfo::codedClass() {
    static constexpr Base::CodedClass kClass{"LaunchdInfo", nullptr, &Base::CodedRecord<LaunchdInfo>::make};
    return kClass;
}

void LaunchdInfo::encode(Base::Coder& coder) const {
    encodeString(coder, "label", label);
    encodeRecord(coder, "plist", plist);
}

std::optional<LaunchdInfo> LaunchdInfo::decode(Base::Coder& coder) {
    LaunchdInfo record;
    record.label = coder.decodeString("label");
    record.plist = decodeRecord<FilesystemItemInfo>(coder, "plist");
    return record;
}

const Base::CodedClass& ApplicationInfo::codedClass() {
    static constexpr Base::CodedClass kClass{"ApplicationInfo", nullptr,
                                             &Base::CodedRecord<ApplicationInfo>::make};
    return kClass;
}

void ApplicationInfo::encode(Base::Coder& coder) const {
    encodeRecord(coder, "bundle", bundle);
    encodeRecord(coder, "executable", executable);
}

std::optional<ApplicationInfo> ApplicationInfo::decode(Base::Coder& coder) {
    ApplicationInfo record;
    record.bundle = decodeRecord<BundleInfo>(coder, "bundle");
    record.executable = decodeRecord<FilesystemItemInfo>(coder, "executable");
    return record;
}

const Base::CodedClass& DaemonInfo::codedClass() {
    static constexpr Base::CodedClass kClass{"DaemonInfo", nullptr, &Base::CodedRecord<DaemonInfo>::make};
    return kClass;
}

void DaemonInfo::encode(Base::Coder& coder) const {
    encodeRecord(coder, "launchd", launchd);
    encodeRecord(coder, "executable", executable);
}

std::optional<DaemonInfo> DaemonInfo::decode(Base::Coder& coder) {
    DaemonInfo record;
    record.launchd = decodeRecord<LaunchdInfo>(coder, "launchd");
    record.executable = decodeRecord<FilesystemItemInfo>(coder, "executable");
    return record;
}

const Base::CodedClass& BundleDaemonInfo::codedClass() {
    static constexpr Base::CodedClass kClass{"BundleDaemonInfo", nullptr,
                                             &Base::CodedRecord<BundleDaemonInfo>::make};
    return kClass;
}

void BundleDaemonInfo::encode(Base::Coder& coder) const {
    encodeRecord(coder, "launchd", launchd);
    encodeRecord(coder, "app", app);
}

std::optional<BundleDaemonInfo> BundleDaemonInfo::decode(Base::Coder& coder) {
    BundleDaemonInfo record;
    record.launchd = decodeRecord<LaunchdInfo>(coder, "launchd");
    record.app = decodeRecord<ApplicationInfo>(coder, "app");
    return record;
}

const Base::CodedClass& KextInfo::codedClass() {
    static constexpr Base::CodedClass kClass{"KextInfo", nullptr, &Base::CodedRecord<KextInfo>::make};
    return kClass;
}

void KextInfo::encode(Base::Coder& coder) const {
    encodeRecord(coder, "bundle", bundle);
    encodeString(coder, "ioClassName", ioClassName);
}

std::optional<KextInfo> KextInfo::decode(Base::Coder& coder) {
    KextInfo record;
    record.bundle = decodeRecord<BundleInfo>(coder, "bundle");
    record.ioClassName = coder.decodeString("ioClassName");
    return record;
}

template <>
std::optional<FilesystemItemInfo> decodeRecord<FilesystemItemInfo>(Base::Coder& coder, std::string_view key) {
    const std::unique_ptr<Base::CodedObject> object =
        coder.decodeObject(key, FilesystemItemInfo::codedClass());
    if (auto* item = dynamic_cast<Base::CodedRecord<FilesystemItemInfo>*>(object.get())) {
        return item->take();
    }
    if (const auto* bundle = dynamic_cast<const Base::CodedRecord<BundleInfo>*>(object.get())) {
        return FilesystemItemInfo(bundle->value());
    }
    return std::nullopt;
}

}  // namespace NorvikCommon
