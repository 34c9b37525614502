#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string_view>

namespace Platform::Darwin {

/// Owns a CFString made of a UTF-8 text; null when the text is not valid UTF-8.
class CoreFoundationString {
  public:
    explicit CoreFoundationString(std::string_view text)
        : string_(::CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                            static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8,
                                            false)) {}
    CoreFoundationString(const CoreFoundationString&) = delete;
    CoreFoundationString& operator=(const CoreFoundationString&) = delete;
    ~CoreFoundationString() {
        if (string_ != nullptr) {
            ::CFRelease(string_);
        }
    }

    [[nodiscard]] CFStringRef get() const { return string_; }

  private:
    CFStringRef string_;
};

}  // namespace Platform::Darwin
