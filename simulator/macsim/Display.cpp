#include "macsim/Display.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include <sys/stat.h>

#include "Support/Files.h"
#include "macsim/Refusal.h"
#include "macsim/SystemLayout.h"

namespace Simulator {

namespace {

constexpr const char* kHost = "host";
constexpr std::string_view kAnyHost = "\xff\xff";

/// Parses X authority entries: a family, then four texts with their lengths, all numbers in two bytes.
class Cookies {
  public:
    explicit Cookies(std::string_view bytes) : bytes_(bytes) {}

    /// The next entry's address, display number, kind and cookie. False at the end or if the file is broken.
    bool next(std::string_view (&texts)[4]) {
        if (bytes_.size() < 2) {
            return false;
        }
        bytes_.remove_prefix(2);
        return std::all_of(std::begin(texts), std::end(texts),
                           [this](std::string_view& text) { return take(text); });
    }

  private:
    bool take(std::string_view& text) {
        if (bytes_.size() < 2) {
            return false;
        }
        const auto high = static_cast<unsigned char>(bytes_[0]);
        const auto low = static_cast<unsigned char>(bytes_[1]);
        const std::size_t length = static_cast<std::size_t>(high) << 8U | low;
        if (bytes_.size() - 2 < length) {
            return false;
        }
        text = bytes_.substr(2, length);
        bytes_.remove_prefix(2 + length);
        return true;
    }

    std::string_view bytes_;
};

void addText(std::string& entry, std::string_view text) {
    entry += static_cast<char>(text.size() >> 8U);
    entry += static_cast<char>(text.size() & 0xFFU);
    entry += text;
}

std::string authorityFile() {
    if (const char* file = std::getenv("XAUTHORITY"); file != nullptr && *file != '\0') {
        return file;
    }
    const char* home = std::getenv("HOME");
    return home != nullptr ? std::string(home) + "/.Xauthority" : "";
}

/// The N of ":N" or ":N.SCREEN"; empty for anything else.
std::string displayNumber(const std::string& display) {
    std::string number = display.starts_with(':') ? display.substr(1, display.find('.') - 1) : "";
    const bool isNumber = std::all_of(number.begin(), number.end(),
                                      [](unsigned char character) { return std::isdigit(character) != 0; });
    return isNumber && number.size() <= 5 ? number : "";
}

}  // namespace

std::string cookiesForAnyHost(const std::string& authority, const std::string& display) {
    Cookies cookies(authority);
    std::string entries;
    std::string_view texts[4];
    while (cookies.next(texts)) {
        const auto& [address, number, kind, cookie] = texts;
        if (number == display || number.empty()) {
            entries += kAnyHost;
            for (const std::string_view text : {std::string_view(), number, kind, cookie}) {
                addText(entries, text);
            }
        }
    }
    return entries;
}

std::string displaySocket(const Session& session) {
    const auto display = session.environment.find("DISPLAY");
    return display == session.environment.end()
               ? ""
               : std::string(kDisplaysFolder) + "/X" + displayNumber(display->second);
}

void useDisplay(const MacRoot& mac, const User& user, const std::string& text, Session& session) {
    if (!kHasDialogs) {
        throw Refusal("this macsim is built without windows (SENTREL_WINDOW=OFF)");
    }
    std::string display = text;
    if (text == kHost) {
        const char* hosts = std::getenv("DISPLAY");
        if (hosts == nullptr || *hosts == '\0') {
            throw Refusal("there is no DISPLAY in the environment");
        }
        display = hosts;
    }
    const std::string number = displayNumber(display);
    if (number.empty()) {
        throw Refusal("'" + display + "' is not a display of this machine (like :0)", Refusal::kMisuse);
    }
    session.environment["DISPLAY"] = ":" + number;
    struct stat status {};
    if (::stat(displaySocket(session).c_str(), &status) != 0 || !S_ISSOCK(status.st_mode)) {
        throw Refusal("there is no display :" + number);
    }
    const std::string cookies = cookiesForAnyHost(readFile(authorityFile()).value_or(""), number);
    if (cookies.empty()) {
        return;
    }
    if (!mac.write(kDisplayCookieFile, cookies, 0600, user.uid, user.uid == 0 ? 0 : kStaffGroup)) {
        throw Refusal("cannot write into " + mac.folder() + ": " + std::strerror(errno));
    }
    session.environment["XAUTHORITY"] = kDisplayCookieFile;
}

}  // namespace Simulator
