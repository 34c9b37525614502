#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Archive/ArchiveObjects.h"
#include "Base/Archive/Coder.h"
#include "Base/FatalError.h"

namespace Base {

/// Builds the objects of one checked archive. The first fault is kept; from then on every operation returns
/// nothing.
class Unarchiver final : public Coder {
  public:
    Unarchiver(const ArchiveObjects& archive, const AllowedClasses& allowed, const UnarchivingLimits& limits)
        : archive_(archive), plist_(archive.plist()), allowed_(allowed), limits_(limits) {}

    /// The elements of the root, or nothing after a refusal.
    [[nodiscard]] std::optional<CodedObjectList> list();
    [[nodiscard]] std::string takeRefusal() { return std::move(refusal_); }

    void encodeNil(std::string_view /*key*/) override { wrongDirection(); }
    void encodeString(std::string_view /*key*/, std::string_view /*value*/) override { wrongDirection(); }
    void encodeURL(std::string_view /*key*/, const URL& /*value*/) override { wrongDirection(); }
    void encodeBool(std::string_view /*key*/, bool /*value*/) override { wrongDirection(); }
    void encodeURLs(std::string_view /*key*/, std::span<const URL> /*values*/) override { wrongDirection(); }
    void encodeBools(std::string_view /*key*/, const std::vector<bool>& /*values*/) override {
        wrongDirection();
    }
    void encodeObject(std::string_view /*key*/, const CodedObject& /*value*/) override { wrongDirection(); }

    std::optional<std::string> decodeString(std::string_view key) override;
    std::optional<URL> decodeURL(std::string_view key) override;
    bool decodeBool(std::string_view key) override;
    std::optional<std::vector<URL>> decodeURLs(std::string_view key) override;
    std::optional<std::vector<bool>> decodeBools(std::string_view key) override;
    std::unique_ptr<CodedObject> decodeObject(std::string_view key, const CodedClass& expected) override;

  private:
    // The object whose keys are being read, within the one that holds it.
    struct Frame {
        const Frame* outer;
        std::string_view outerKey;  // the outer object's key for this one
        const CodedClass* coded;
        BinaryPlistReader::Object dictionary;
        std::optional<std::string_view> missingKey{};  // the last key that was requested and not found
    };

    // Stands for a missing object.
    static constexpr BinaryPlistReader::Object kNoObject{BinaryPlistReader::Type::damaged, 0, nullptr};
    static bool isNone(const BinaryPlistReader::Object& object) {
        return object.type == BinaryPlistReader::Type::damaged;
    }

    [[noreturn]] static void wrongDirection() { fatalError("A keyed unarchiver cannot encode."); }

    [[nodiscard]] bool refused() const { return !refusal_.empty(); }
    // Refuses the archive at the current place. `what` continues a sentence.
    void refuse(std::string_view what);
    void refuseKey(std::string_view key, std::string_view what);
    void refuseMember(std::string_view key, std::size_t index, std::string_view what);
    // Charges one object to the budget; refuses the archive if none is left.
    bool spendObject();
    // Whether the budget still covers that many objects, without charging them; asked before room for them is
    // made.
    bool canAfford(std::size_t objects);
    // Charges that many bytes of text to the budget.
    bool spendText(std::size_t bytes);

    // The value of `key` in the current object.
    std::optional<BinaryPlistReader::ObjectId> find(std::string_view key);
    // The entry under `key`; null if the key is missing, nil, or (after a refusal) not a reference.
    const ArchiveObjects::Entry* findEntry(std::string_view key);
    // The references in an array entry; none (after a refusal) if the entry is not an array.
    BinaryPlistReader::Object members(const ArchiveObjects::Entry& entry, std::string_view key);
    std::unique_ptr<CodedObject> object(const ArchiveObjects::Entry& entry, const CodedClass& coded,
                                        const Frame* outer, std::string_view key);

    // In Unarchiver+Values.cpp.
    // The members of the array under `key` in the current object, charged to the budget.
    BinaryPlistReader::Object listUnder(std::string_view key);
    // The text of a string entry, wrapped or not; none if it is another kind of entry.
    BinaryPlistReader::Object textOf(const ArchiveObjects::Entry& entry) const;
    BinaryPlistReader::Object wrappedText(const ArchiveObjects::Entry& entry) const;
    std::optional<std::string> string(const BinaryPlistReader::Object& text);
    std::optional<URL> url(const ArchiveObjects::Entry& entry);
    // The relative text of a URL entry, none if the entry is damaged; and its base.
    struct URLParts {
        BinaryPlistReader::Object relative;
        const ArchiveObjects::Entry* base;  // the nil entry at the end of a chain
    };
    URLParts urlParts(const ArchiveObjects::Entry& entry) const;
    std::optional<URL> urlOnBases(const URLParts& outermost);
    // The truth value of a boolean or of the numbers 0 and 1.
    static std::optional<bool> truth(const BinaryPlistReader::Object& value);

    const ArchiveObjects& archive_;
    const BinaryPlistReader& plist_;
    const AllowedClasses& allowed_;
    const UnarchivingLimits& limits_;
    std::size_t objectsBuilt_ = 0;
    std::size_t textBuilt_ = 0;
    std::size_t depth_ = 0;
    std::size_t position_ = 0;  // in the list, counted from 1
    Frame* frame_ = nullptr;
    std::string refusal_;
};

}  // namespace Base
