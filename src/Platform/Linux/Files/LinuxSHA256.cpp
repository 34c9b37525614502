#include <openssl/evp.h>

#include <array>

#include "Platform/Posix/Hexadecimal.h"
#include "Platform/Posix/SHA256.h"

namespace Platform::Posix {

struct SHA256::State {
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context{EVP_MD_CTX_new(), &EVP_MD_CTX_free};
    bool works = context != nullptr && EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) == 1;
};

SHA256::SHA256() : state_(std::make_unique<State>()) {}

SHA256::~SHA256() = default;

void SHA256::add(const void* bytes, std::size_t count) {
    state_->works = state_->works && EVP_DigestUpdate(state_->context.get(), bytes, count) == 1;
}

std::string SHA256::finish() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (!state_->works || EVP_DigestFinal_ex(state_->context.get(), digest.data(), &length) != 1) {
        return {};
    }
    return hexadecimal(std::span(digest).first(length));
}

}  // namespace Platform::Posix
