#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Base/URL.h"
#include "UnarchiverCheck.h"

namespace {

// What every parsed URL promises: an absolute path without dot components, trailing slash or NUL, and a text
// that reads back as the same URL.
void checkParsed(const Base::URL& url) {
    const std::string& path = url.path();
    Fuzz::require(path.starts_with('/') && (path == "/" || !path.ends_with('/')));
    Fuzz::require(path.find('\0') == std::string::npos);
    const std::string closed = path + '/';
    Fuzz::require(closed.find("/../") == std::string::npos && closed.find("/./") == std::string::npos);
    const auto again = Base::URL::parse(url.absoluteString());
    Fuzz::require(again && *again == url);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto url = Base::URL::parse(text)) {
        checkParsed(*url);
    }
    // The first byte cuts the rest into a base and a text on it.
    if (size > 1) {
        const std::string_view rest = text.substr(1);
        const std::size_t cut = data[0] % rest.size();
        const auto base = Base::URL::parse("file:///" + std::string(rest.substr(0, cut)));
        if (base) {
            if (const auto url = Base::URL::parse(rest.substr(cut), *base, data[0] >= 0x80)) {
                checkParsed(*url);
            }
        }
    }
    // Any path without a NUL that does not look like a dot component survives its text.
    const Base::URL file = Base::URL::fileURL(text);
    if (const auto again = Base::URL::parse(file.absoluteString())) {
        Fuzz::require(*again == file);
    }
    return 0;
}
