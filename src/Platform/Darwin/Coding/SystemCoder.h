#pragma once

#import <Foundation/Foundation.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Archive/Coder.h"

namespace Platform::Darwin {

/// Base::Coder over one of the system's keyed coders: the keys and types that it writes and takes are those
/// of the program's own archives.
///
/// It does not rely on the coder's own checks: every object that the coder hands out is checked for its class
/// here, whether or not the coder requires secure coding. No exception comes out of a decode operation. Which
/// direction it serves is the system coder's choice; encoding into one that decodes raises as the system
/// does.
class SystemCoder final : public Base::Coder {
  public:
    /// Borrows `coder`.
    explicit SystemCoder(NSCoder* coder) : coder_(coder) {}

    /// The first fault as a sentence, without the class; empty if there was none.
    [[nodiscard]] const std::string& fault() const { return fault_; }
    /// The last key that was requested and not found; empty if there was none.
    [[nodiscard]] const std::string& missingKey() const { return missingKey_; }

    void encodeNil(std::string_view key) override;
    void encodeString(std::string_view key, std::string_view value) override;
    void encodeURL(std::string_view key, const Base::URL& value) override;
    void encodeBool(std::string_view key, bool value) override;
    void encodeURLs(std::string_view key, std::span<const Base::URL> values) override;
    void encodeBools(std::string_view key, const std::vector<bool>& values) override;
    void encodeObject(std::string_view key, const Base::CodedObject& value) override;

    [[nodiscard]] std::optional<std::string> decodeString(std::string_view key) override;
    [[nodiscard]] std::optional<Base::URL> decodeURL(std::string_view key) override;
    [[nodiscard]] bool decodeBool(std::string_view key) override;
    [[nodiscard]] std::optional<std::vector<Base::URL>> decodeURLs(std::string_view key) override;
    [[nodiscard]] std::optional<std::vector<bool>> decodeBools(std::string_view key) override;
    [[nodiscard]] std::unique_ptr<Base::CodedObject> decodeObject(std::string_view key,
                                                                  const Base::CodedClass& expected) override;

  private:
    void refuse(std::string_view key, std::string_view what);
    void encode(std::string_view key, id value);
    /// The object under `key`; nil if there is none or the coder refuses it.
    [[nodiscard]] id decode(std::string_view key, NSSet* classes);
    /// The members of the array under `key`, which should be of the class `member`; nil likewise.
    [[nodiscard]] NSArray* decodeArray(std::string_view key, Class member);

    NSCoder* coder_;
    std::string fault_;
    std::string missingKey_;
};

}  // namespace Platform::Darwin
