#include <CommonCrypto/CommonDigest.h>

#include <algorithm>
#include <array>
#include <limits>

#include "Platform/Posix/Hexadecimal.h"
#include "Platform/Posix/SHA256.h"

namespace Platform::Posix {

struct SHA256::State {
    CC_SHA256_CTX context{};
    bool works = CC_SHA256_Init(&context) == 1;
};

SHA256::SHA256() : state_(std::make_unique<State>()) {}

SHA256::~SHA256() = default;

void SHA256::add(const void* bytes, std::size_t count) {
    // The library counts in 32 bits.
    constexpr std::size_t kMost = std::numeric_limits<CC_LONG>::max();
    const auto* next = static_cast<const unsigned char*>(bytes);
    while (count > 0) {
        const std::size_t part = std::min(count, kMost);
        state_->works =
            state_->works && CC_SHA256_Update(&state_->context, next, static_cast<CC_LONG>(part)) == 1;
        next += part;
        count -= part;
    }
}

std::string SHA256::finish() {
    std::array<unsigned char, CC_SHA256_DIGEST_LENGTH> digest{};
    if (!state_->works || CC_SHA256_Final(digest.data(), &state_->context) != 1) {
        return {};
    }
    return hexadecimal(digest);
}

}  // namespace Platform::Posix
