#include "Platform/Darwin/DarwinBundles.h"

#include <fcntl.h>

#include "Platform/Darwin/BundleLayout.h"
#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/Foundation/ExceptionGuard.h"
#include "Platform/Posix/Descriptor.h"
#include "Platform/Posix/TamePropertyList.h"

namespace Platform::Darwin {

namespace {

/// The dictionary of a property list; none when there is no file or it holds something else.
Retained<NSDictionary*> readInfo(const Base::URL& bundle) {
    const std::optional<std::string> bytes =
        Posix::readTamePropertyList(AT_FDCWD, bundle.appendingPathComponent("Contents/Info.plist").path());
    if (!bytes) {
        return {};
    }
    Retained<NSDictionary*> info;
    // A parser that meets nonsense may raise.
    const bool parsed = Foundation::runGuarded([&] {
        id plist = [NSPropertyListSerialization propertyListWithData:[NSData dataWithBytes:bytes->data()
                                                                                    length:bytes->size()]
                                                             options:NSPropertyListImmutable
                                                              format:nullptr
                                                               error:nullptr];
        if ([plist isKindOfClass:[NSDictionary class]]) {
            info = Retained<NSDictionary*>::of(plist);
        }
    });
    return parsed ? std::move(info) : Retained<NSDictionary*>();
}

class FoundationBundle final : public Bundle {
  public:
    FoundationBundle(Base::URL url, bool isMain)
        : url_(std::move(url)), isMain_(isMain), info_(readInfo(url_)) {}

    Base::URL url() const override { return url_; }

    std::optional<std::string> infoString(const std::string& key) const override {
        const Pool pool;
        id value = [info_.get() objectForKey:foundationString(key)];
        return [value isKindOfClass:[NSString class]] ? std::optional(text(value)) : std::nullopt;
    }

    std::optional<Base::URL> resource(const std::string& name, const std::string& type) const override {
        const Pool pool;
        return fileURL([bundle() URLForResource:foundationString(name) withExtension:foundationString(type)]);
    }

    std::optional<std::string> localizedString(const std::string& key,
                                               const std::string& table) const override {
        const Pool pool;
        // What comes back instead of a text that is not there; an empty one would bring the key.
        NSString* const none = @"\x01no text";
        NSString* const found = [bundle() localizedStringForKey:foundationString(key)
                                                          value:none
                                                          table:foundationString(table)];
        return found != nil && ![found isEqualToString:none] ? std::optional(text(found)) : std::nullopt;
    }

  private:
    /// Only when something is looked up: Foundation reads a bundle's dictionary without asking whether it is
    /// safe to read.
    [[nodiscard]] NSBundle* bundle() const {
        return isMain_ ? [NSBundle mainBundle] : foundationBundle(foundationURL(url_, true));
    }

    const Base::URL url_;
    const bool isMain_;
    Retained<NSDictionary*> info_;
};

}  // namespace

std::unique_ptr<Bundle> DarwinBundles::open(const Base::URL& location) {
    const Pool pool;
    const Posix::Descriptor folder(::open(location.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder ? std::make_unique<FoundationBundle>(location, false) : nullptr;
}

std::unique_ptr<Bundle> DarwinBundles::mainBundle() {
    const Pool pool;
    const std::optional<Base::URL> url = fileURL([[NSBundle mainBundle] bundleURL]);
    return std::make_unique<FoundationBundle>(url.value_or(Base::URL::fileURL("/")), true);
}

}  // namespace Platform::Darwin
