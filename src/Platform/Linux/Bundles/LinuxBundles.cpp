#include "Platform/Linux/Bundles/LinuxBundles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "Platform/Linux/Bundles/Localizations.h"
#include "Platform/Linux/Bundles/PropertyListFile.h"
#include "Platform/Linux/Bundles/StringTables.h"
#include "Platform/Linux/Processes/ProcessFiles.h"
#include "Platform/Posix/Descriptor.h"

namespace Platform::Linux {

namespace {

class FolderBundle final : public Bundle {
  public:
    FolderBundle(Base::URL url, PropertyListStrings info, std::shared_ptr<StringTables> tables)
        : url_(std::move(url)), info_(std::move(info)), tables_(std::move(tables)) {}

    Base::URL url() const override { return url_; }

    std::optional<std::string> infoString(const std::string& key) const override {
        const auto found = info_.find(key);
        return found != info_.end() ? std::optional(found->second) : std::nullopt;
    }

    std::optional<Base::URL> resource(const std::string& name, const std::string& type) const override {
        Base::URL file = url_.appendingPathComponent("Contents/Resources").appendingPathComponent(name);
        if (!type.empty()) {
            file = file.appendingPathExtension(type);
        }
        struct stat status {};
        return ::stat(file.path().c_str(), &status) == 0 ? std::optional(file) : std::nullopt;
    }

    std::optional<std::string> localizedString(const std::string& key,
                                               const std::string& table) const override {
        return tables_->text(key, table);
    }

  private:
    const Base::URL url_;
    const PropertyListStrings info_;
    const std::shared_ptr<StringTables> tables_;
};

PropertyListStrings readInfo(int folder) {
    return readPropertyListStrings(folder, "Contents/Info.plist").value_or(PropertyListStrings());
}

std::shared_ptr<StringTables> makeTables(const Base::URL& bundle, const PropertyListStrings& info,
                                         const std::string& preferencesFile) {
    const auto region = info.find("CFBundleDevelopmentRegion");
    return std::make_shared<StringTables>(bundle, region != info.end() ? region->second : std::string(),
                                          preferencesFile);
}

Posix::Descriptor openFolder(const Base::URL& location) {
    return Posix::Descriptor(::open(location.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

}  // namespace

LinuxBundles::LinuxBundles() : LinuxBundles(executablePath(::getpid()), globalPreferencesFile()) {}

LinuxBundles::LinuxBundles(std::string executable, std::string preferencesFile)
    : executable_(std::move(executable)), preferencesFile_(std::move(preferencesFile)) {}

std::unique_ptr<Bundle> LinuxBundles::open(const Base::URL& location) {
    const Posix::Descriptor folder = openFolder(location);
    if (!folder) {
        return nullptr;
    }
    PropertyListStrings info = readInfo(folder.get());
    auto tables = makeTables(location, info, preferencesFile_);
    return std::make_unique<FolderBundle>(location, std::move(info), std::move(tables));
}

std::unique_ptr<Bundle> LinuxBundles::mainBundle() {
    const Base::URL folder = Base::URL::fileURL(executable_).deletingLastPathComponent();
    const Base::URL contents = folder.deletingLastPathComponent();
    const Base::URL application = contents.deletingLastPathComponent();
    const bool bundled = folder.lastPathComponent() == "MacOS" &&
                         contents.lastPathComponent() == "Contents" && application.path().ends_with(".app");
    const Base::URL& location = bundled ? application : folder;
    const Posix::Descriptor opened = openFolder(location);
    PropertyListStrings info = opened ? readInfo(opened.get()) : PropertyListStrings();
    const std::lock_guard lock(mutex_);
    if (!mainTables_) {
        mainTables_ = makeTables(location, info, preferencesFile_);
    }
    return std::make_unique<FolderBundle>(location, std::move(info), mainTables_);
}

}  // namespace Platform::Linux
