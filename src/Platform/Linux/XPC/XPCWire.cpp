#include "Platform/Linux/XPC/XPCWire.h"

namespace Platform::Linux {

namespace {

constexpr std::size_t kLengthSize = 4;

std::uint32_t bigEndian(std::span<const std::uint8_t> bytes) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : bytes) {
        value = (value << 8U) | byte;
    }
    return value;
}

}  // namespace

FrameWriter::FrameWriter(FrameKind kind) : bytes_{0, 0, 0, 0, static_cast<std::uint8_t>(kind)} {}

void FrameWriter::u16(std::uint16_t value) {
    u8(static_cast<std::uint8_t>(value >> 8U));
    u8(static_cast<std::uint8_t>(value));
}

void FrameWriter::u32(std::uint32_t value) {
    u16(static_cast<std::uint16_t>(value >> 16U));
    u16(static_cast<std::uint16_t>(value));
}

void FrameWriter::raw(std::span<const std::uint8_t> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

void FrameWriter::sized(std::span<const std::uint8_t> bytes) {
    u32(static_cast<std::uint32_t>(bytes.size()));
    raw(bytes);
}

void FrameWriter::sized(std::string_view text) {
    sized(asBytes(text));
}

void FrameWriter::shortText(std::string_view text) {
    u16(static_cast<std::uint16_t>(text.size()));
    raw(asBytes(text));
}

std::vector<std::uint8_t> FrameWriter::finish() {
    const std::size_t length = bytes_.size() - kLengthSize;
    for (std::size_t i = 0; i < kLengthSize; ++i) {
        bytes_[i] = static_cast<std::uint8_t>(length >> (8U * (kLengthSize - 1 - i)));
    }
    return std::move(bytes_);
}

std::optional<std::span<const std::uint8_t>> FrameReader::raw(std::size_t length) {
    if (length > rest_.size()) {
        return std::nullopt;
    }
    const std::span<const std::uint8_t> bytes = rest_.first(length);
    rest_ = rest_.subspan(length);
    return bytes;
}

std::optional<std::uint8_t> FrameReader::u8() {
    const auto bytes = raw(1);
    return bytes ? std::optional(bytes->front()) : std::nullopt;
}

std::optional<std::uint16_t> FrameReader::u16() {
    const auto bytes = raw(2);
    return bytes ? std::optional(static_cast<std::uint16_t>(bigEndian(*bytes))) : std::nullopt;
}

std::optional<std::uint32_t> FrameReader::u32() {
    const auto bytes = raw(4);
    return bytes ? std::optional(bigEndian(*bytes)) : std::nullopt;
}

std::optional<std::span<const std::uint8_t>> FrameReader::sized() {
    const auto length = u32();
    return length ? raw(*length) : std::nullopt;
}

std::optional<std::string_view> FrameReader::shortText() {
    const auto length = u16();
    const auto bytes = length ? raw(*length) : std::nullopt;
    return bytes ? std::optional(asText(*bytes)) : std::nullopt;
}

void FrameBuffer::append(std::span<const std::uint8_t> bytes) {
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(taken_));
    taken_ = 0;
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

std::optional<std::span<const std::uint8_t>> FrameBuffer::next() {
    const std::span<const std::uint8_t> pending = std::span<const std::uint8_t>(bytes_).subspan(taken_);
    if (broken_ || pending.size() < kLengthSize) {
        return std::nullopt;
    }
    const std::size_t length = bigEndian(pending.first(kLengthSize));
    if (length == 0 || length > kMaximumFrame) {
        broken_ = true;
        return std::nullopt;
    }
    if (pending.size() - kLengthSize < length) {
        return std::nullopt;
    }
    taken_ += kLengthSize + length;
    return pending.subspan(kLengthSize, length);
}

}  // namespace Platform::Linux
