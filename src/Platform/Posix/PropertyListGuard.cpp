#include "Platform/Posix/PropertyListGuard.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Platform::Posix {

namespace {

constexpr std::string_view kBinaryMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kDeepestNesting = 64;
constexpr std::size_t kMostObjects = std::size_t{1} << 16;
/// Each opening tag of a container may nest one level deeper; comments make it hard to say which do.
constexpr std::size_t kMostXMLContainers = 4096;

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes) {
        value = value << 8U | static_cast<unsigned char>(byte);
    }
    return value;
}

/// Walks through the containers of a binary property list along its references, with an explicit stack.
class BinaryNesting {
  public:
    explicit BinaryNesting(std::string_view bytes) : bytes_(bytes) {}

    [[nodiscard]] bool isTame();

  private:
    /// References that are still to be followed in one container.
    struct References {
        std::size_t position;
        std::uint64_t count;
    };

    [[nodiscard]] bool readTrailer();
    [[nodiscard]] bool enter(std::uint64_t object);
    [[nodiscard]] std::optional<References> referencesAt(std::size_t position) const;
    [[nodiscard]] bool fits(std::uint64_t position, std::uint64_t size) const {
        return position <= bytes_.size() && size <= bytes_.size() - position;
    }

    std::string_view bytes_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t topObject_ = 0;
    std::uint64_t offsetTable_ = 0;
    std::vector<References> stack_;
};

bool BinaryNesting::readTrailer() {
    if (bytes_.size() < kBinaryMagic.size() + kTrailerSize) {
        return false;
    }
    const std::string_view trailer = bytes_.substr(bytes_.size() - kTrailerSize);
    offsetSize_ = static_cast<unsigned char>(trailer[6]);
    referenceSize_ = static_cast<unsigned char>(trailer[7]);
    objectCount_ = bigEndian(trailer.substr(8, 8));
    topObject_ = bigEndian(trailer.substr(16, 8));
    offsetTable_ = bigEndian(trailer.substr(24, 8));
    return offsetSize_ >= 1 && offsetSize_ <= 8 && referenceSize_ >= 1 && referenceSize_ <= 8 &&
           objectCount_ <= bytes_.size() && fits(offsetTable_, objectCount_ * offsetSize_);
}

/// Array, set and dictionary: a marker, the count, and as many references (twice as many for a dictionary).
/// Other objects have none. Returns nothing if the container extends beyond the file.
std::optional<BinaryNesting::References> BinaryNesting::referencesAt(std::size_t position) const {
    const auto marker = static_cast<unsigned char>(bytes_[position]);
    const unsigned kind = marker >> 4U;
    const bool dictionary = kind == 0xD;
    if (kind != 0xA && kind != 0xC && !dictionary) {
        return References{position, 0};
    }
    std::uint64_t count = marker & 0xFU;
    std::size_t start = position + 1;
    if (count == 0xF) {
        if (!fits(start, 1)) {
            return std::nullopt;
        }
        const std::size_t size = std::size_t{1} << (static_cast<unsigned char>(bytes_[start]) & 0x7U);
        if (size > 8 || !fits(start + 1, size)) {
            return std::nullopt;
        }
        count = bigEndian(bytes_.substr(start + 1, size));
        start += 1 + size;
    }
    const std::uint64_t width = referenceSize_ * (dictionary ? 2U : 1U);
    if (count > bytes_.size() || !fits(start, count * width)) {
        return std::nullopt;
    }
    return References{start, dictionary ? count * 2 : count};
}

bool BinaryNesting::enter(std::uint64_t object) {
    if (object >= objectCount_) {
        return false;
    }
    const std::uint64_t offset = bigEndian(bytes_.substr(offsetTable_ + object * offsetSize_, offsetSize_));
    if (!fits(offset, 1)) {
        return false;
    }
    const std::optional<References> references = referencesAt(offset);
    if (!references) {
        return false;
    }
    if (references->count > 0) {
        stack_.push_back(*references);
    }
    return stack_.size() <= kDeepestNesting;
}

bool BinaryNesting::isTame() {
    if (!readTrailer() || !enter(topObject_)) {
        return false;
    }
    std::size_t visited = 1;
    while (!stack_.empty()) {
        References& references = stack_.back();
        if (references.count == 0) {
            stack_.pop_back();
            continue;
        }
        const std::uint64_t object = bigEndian(bytes_.substr(references.position, referenceSize_));
        references.position += referenceSize_;
        --references.count;
        if (++visited > kMostObjects || !enter(object)) {
            return false;
        }
    }
    return true;
}

bool isTameXML(std::string_view text) {
    constexpr std::array<std::string_view, 3> kContainers = {"<array", "<dict", "<plist"};
    std::size_t count = 0;
    for (const std::string_view container : kContainers) {
        for (std::size_t at = text.find(container); at != std::string_view::npos;
             at = text.find(container, at + 1)) {
            ++count;
        }
    }
    return count <= kMostXMLContainers;
}

}  // namespace

bool isBinaryPropertyList(std::string_view bytes) {
    return bytes.starts_with(kBinaryMagic);
}

bool isTamePropertyList(std::string_view bytes) {
    return isBinaryPropertyList(bytes) ? BinaryNesting(bytes).isTame() : isTameXML(bytes);
}

}  // namespace Platform::Posix
