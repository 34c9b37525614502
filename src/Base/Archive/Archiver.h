#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Archive/BinaryPlistWriter.h"
#include "Base/Archive/Coder.h"
#include "Base/FatalError.h"

namespace Base {

/// Makes one archive.
///
/// "$objects" is a list of entries; an entry is referred to by a UID, its index in that list. Entries are
/// numbered as they are met: each object before its contents, its class after them. Key texts, classes and
/// booleans are written once.
class Archiver final : public Coder {
  public:
    /// References between the objects of the property list take `referenceSize` bytes, 2 or 4.
    explicit Archiver(std::size_t referenceSize);

    /// Returns the archive of `objects`, or nothing if it needs wider references. Called once.
    std::optional<std::vector<std::uint8_t>> archive(std::span<const CodedObject* const> objects);

    void encodeNil(std::string_view key) override;
    void encodeString(std::string_view key, std::string_view value) override;
    void encodeURL(std::string_view key, const URL& value) override;
    void encodeBool(std::string_view key, bool value) override;
    void encodeURLs(std::string_view key, std::span<const URL> values) override;
    void encodeBools(std::string_view key, const std::vector<bool>& values) override;
    void encodeObject(std::string_view key, const CodedObject& value) override;

    std::optional<std::string> decodeString(std::string_view /*key*/) override { wrongDirection(); }
    std::optional<URL> decodeURL(std::string_view /*key*/) override { wrongDirection(); }
    bool decodeBool(std::string_view /*key*/) override { wrongDirection(); }
    std::optional<std::vector<URL>> decodeURLs(std::string_view /*key*/) override { wrongDirection(); }
    std::optional<std::vector<bool>> decodeBools(std::string_view /*key*/) override { wrongDirection(); }
    std::unique_ptr<CodedObject> decodeObject(std::string_view /*key*/, const CodedClass& /*e*/) override {
        wrongDirection();
    }

  private:
    using ObjectId = BinaryPlistWriter::ObjectId;
    using Pair = BinaryPlistWriter::Pair;

    struct Entry {
        ObjectId uid;      // refers to the entry
        ObjectId content;  // to be written
    };
    struct Key {
        std::string text;
        ObjectId id;
    };
    struct Class {
        const CodedClass* coded;
        ObjectId uid;
    };
    struct NamedValue {
        std::string_view key;
        ObjectId value;
    };

    [[noreturn]] static void wrongDirection() { fatalError("A keyed archiver cannot decode."); }

    Entry newEntry();
    // Returns the UID of a new entry whose content is written already or will be.
    ObjectId addEntry(ObjectId content);
    ObjectId newText(std::string_view text);
    ObjectId key(std::string_view text);
    ObjectId classUID(const CodedClass& coded);
    ObjectId writeClass(const CodedClass& coded);
    // Adds a key to the object being written.
    void add(std::string_view keyText, ObjectId value);
    // Writes the keys and values from `first` on as the dictionary `id` and removes them.
    void writePairs(ObjectId id, std::size_t first);
    ObjectId object(const CodedObject& value);
    // Writes an object of one of the system's classes.
    void writeSystemObject(ObjectId id, const CodedClass& coded, std::initializer_list<NamedValue> values);
    std::vector<std::uint8_t> finish(ObjectId root);

    // In Archiver+Values.cpp. Each returns the reference that stands for the value in an object or an array.
    ObjectId url(const URL& value);
    void writeArray(const Entry& entry, std::span<const ObjectId> members);
    ObjectId inlineBool(bool value);
    ObjectId boolEntry(bool value);

    BinaryPlistWriter writer_;
    ObjectId top_;
    std::vector<ObjectId> entries_;  // the contents
    ObjectId nil_;
    std::vector<Pair> pairs_;  // keys and values of the objects being written, innermost object last
    std::vector<Key> keys_;
    std::vector<Class> classes_;
    std::array<std::optional<ObjectId>, 2> bools_;
    std::array<std::optional<ObjectId>, 2> boolEntries_;
};

}  // namespace Base
