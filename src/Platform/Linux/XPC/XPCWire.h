#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Platform::Linux {

/// Frames of an XPC connection on Linux. Each is a 32-bit length (big-endian, of what follows) and a kind;
/// all other numbers are big-endian too.
///
///   accepted                                               the listener accepted the connection
///   message      OBJECT(32) REPLY(32) SELECTOR(16+) COUNT(8), then per argument KIND(8) VALUE(32+)
///   reply        REPLY(32) FAILED(8) CODE(32) TEXT(32+)    the answer to the message with this REPLY
///   invalidated                                            the listener refused a message
///
/// OBJECT 0 is the exported object of the receiver's end, any other number an object that the receiver passed
/// as an argument. REPLY 0 asks for no answer. "n+" is an n-bit length and so many bytes.
enum class FrameKind : std::uint8_t { accepted = 1, message = 2, reply = 3, invalidated = 4 };

/// The longest frame that is accepted from a peer.
inline constexpr std::size_t kMaximumFrame = (std::size_t{16} << 20) + 4096;

/// Builds one frame.
class FrameWriter {
  public:
    explicit FrameWriter(FrameKind kind);

    void u8(std::uint8_t value) { bytes_.push_back(value); }
    void u16(std::uint16_t value);
    void u32(std::uint32_t value);
    void raw(std::span<const std::uint8_t> bytes);
    /// The length in 32 bits, then the bytes.
    void sized(std::span<const std::uint8_t> bytes);
    void sized(std::string_view text);
    /// The length in 16 bits, then the bytes.
    void shortText(std::string_view text);

    /// The frame with its length filled in; the writer must not be used afterwards.
    [[nodiscard]] std::vector<std::uint8_t> finish();

  private:
    std::vector<std::uint8_t> bytes_;
};

/// Parses the content of one frame. Every read past the end returns nothing.
class FrameReader {
  public:
    explicit FrameReader(std::span<const std::uint8_t> content) : rest_(content) {}

    [[nodiscard]] std::optional<std::uint8_t> u8();
    [[nodiscard]] std::optional<std::uint16_t> u16();
    [[nodiscard]] std::optional<std::uint32_t> u32();
    [[nodiscard]] std::optional<std::span<const std::uint8_t>> raw(std::size_t length);
    [[nodiscard]] std::optional<std::span<const std::uint8_t>> sized();
    [[nodiscard]] std::optional<std::string_view> shortText();
    [[nodiscard]] bool atEnd() const { return rest_.empty(); }

  private:
    std::span<const std::uint8_t> rest_;
};

/// Collects a peer's bytes and hands out whole frames.
class FrameBuffer {
  public:
    void append(std::span<const std::uint8_t> bytes);
    /// The content (kind first) of the next whole frame, valid until the next call of either operation.
    [[nodiscard]] std::optional<std::span<const std::uint8_t>> next();
    /// Whether the peer announced a frame that is empty or longer than kMaximumFrame.
    [[nodiscard]] bool isBroken() const { return broken_; }

  private:
    std::vector<std::uint8_t> bytes_;
    std::size_t taken_ = 0;
    bool broken_ = false;
};

[[nodiscard]] inline std::span<const std::uint8_t> asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

[[nodiscard]] inline std::string_view asText(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace Platform::Linux
