#include "Support/Passwords.h"

#include <array>
#include <memory>

#include <crypt.h>
#include <sys/random.h>

namespace Simulator {

namespace {

constexpr std::size_t kSaltLength = 16;

std::string newSetting() {
    constexpr char kLetters[] = "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    std::array<unsigned char, kSaltLength> bytes{};
    static_cast<void>(::getrandom(bytes.data(), bytes.size(), 0));
    std::string setting = "$6$";
    for (const unsigned char byte : bytes) {
        setting += kLetters[byte & 63U];
    }
    return setting;
}

std::string encrypted(const std::string& password, const std::string& setting) {
    // Far too large for a stack.
    const auto data = std::make_unique<crypt_data>();
    const char* hash = ::crypt_r(password.c_str(), setting.c_str(), data.get());
    return hash != nullptr && hash[0] == '$' ? hash : "";
}

}  // namespace

std::string hashPassword(const std::string& password) {
    return encrypted(password, newSetting());
}

bool isPassword(const std::string& password, const std::string& hash) {
    return !hash.empty() && password.find('\0') == std::string::npos && encrypted(password, hash) == hash;
}

}  // namespace Simulator
