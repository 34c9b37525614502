#include <CoreFoundation/CoreFoundation.h>

#include "Platform/PropertyListForms.h"

namespace Platform {

namespace {

/// Owns an object of Core Foundation's, or nothing.
class Owned {
  public:
    explicit Owned(CFTypeRef object) : object_(object) {}
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() {
        if (object_ != nullptr) {
            ::CFRelease(object_);
        }
    }

    template <class Reference>
    [[nodiscard]] Reference as() const {
        return static_cast<Reference>(object_);
    }

  private:
    CFTypeRef object_;
};

}  // namespace

std::optional<std::vector<std::uint8_t>> binaryPropertyList(std::string_view xml) {
    const Owned text(::CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(xml.data()),
                                    static_cast<CFIndex>(xml.size())));
    CFPropertyListFormat format = kCFPropertyListXMLFormat_v1_0;
    // It makes references of dictionaries with CF$UID by itself.
    const Owned list(text.as<CFDataRef>() == nullptr
                         ? nullptr
                         : ::CFPropertyListCreateWithData(kCFAllocatorDefault, text.as<CFDataRef>(),
                                                          kCFPropertyListImmutable, &format, nullptr));
    if (list.as<CFPropertyListRef>() == nullptr || format != kCFPropertyListXMLFormat_v1_0) {
        return std::nullopt;
    }
    const Owned binary(::CFPropertyListCreateData(kCFAllocatorDefault, list.as<CFPropertyListRef>(),
                                                  kCFPropertyListBinaryFormat_v1_0, 0, nullptr));
    const auto data = binary.as<CFDataRef>();
    if (data == nullptr) {
        return std::nullopt;
    }
    const UInt8* const bytes = ::CFDataGetBytePtr(data);
    return std::vector<std::uint8_t>(bytes, bytes + ::CFDataGetLength(data));
}

}  // namespace Platform
