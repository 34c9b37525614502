#include "Platform/Darwin/FoundationBridge.h"

#include "Base/UTF8.h"

namespace Platform::Darwin {

NSString* foundationPath(const std::string& path) {
    const bool possible = path.find('\0') == std::string::npos && Base::isValidUTF8(path);
    return possible ? foundationString(path) : nil;
}

NSURL* foundationURL(const Base::URL& url, bool isFolder) {
    NSString* const path = foundationPath(url.path());
    return path != nil ? [NSURL fileURLWithPath:path isDirectory:isFolder ? YES : NO] : nil;
}

std::optional<Base::URL> fileURL(NSURL* url) {
    NSString* const path = [url path];
    return path != nil ? std::optional(Base::URL::fileURL(text(path))) : std::nullopt;
}

}  // namespace Platform::Darwin
