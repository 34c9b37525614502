#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/URL.h"

namespace Base {

class Coder;
class CodedObject;

/// What an archive knows about a class: its runtime name, its superclass, how to make an object from a coder.
/// Instances are static constants, compared by address.
struct CodedClass {
    /// The name that archives carry ("$classname").
    std::string_view runtimeName;
    /// The coded superclass; null when the class derives from NSObject directly.
    const CodedClass* superclass;
    /// Makes an object from the keys of the object that `coder` is at. Returns null if a key that the class
    /// needs is missing or unusable; the archive is then refused. A null function means that the class is
    /// never decoded.
    std::unique_ptr<CodedObject> (*decode)(Coder& coder);

    /// True for this class itself and for every class derived from it.
    [[nodiscard]] bool isKindOf(const CodedClass& other) const {
        for (const CodedClass* each = this; each != nullptr; each = each->superclass) {
            if (each == &other) {
                return true;
            }
        }
        return false;
    }
};

/// An object that an archive can hold.
class CodedObject {
  public:
    CodedObject() = default;
    CodedObject(const CodedObject&) = default;
    CodedObject& operator=(const CodedObject&) = default;
    virtual ~CodedObject() = default;

    [[nodiscard]] virtual const CodedClass& codedClass() const = 0;
    /// Writes the object's keys, in the order that the class fixes.
    virtual void encode(Coder& coder) const = 0;
};

using CodedObjectList = std::vector<std::unique_ptr<CodedObject>>;

/// Keyed coding: each class states its coded form once, against this interface. Two implementations stand
/// behind it: the keyed archiver and unarchiver of this room, and on macOS an adapter over the system's
/// coder.
///
/// The encode operations write one key of the current object. The decode operations read one: they return
/// nothing if the key is absent or holds nil; if it holds a value of another type they return nothing too,
/// and the whole archive is refused (the coder remembers the fault, later calls return nothing). An
/// implementation serves one direction; calling the other is a programming error. Not thread-safe; nothing is
/// logged.
class Coder {
  public:
    virtual ~Coder() = default;

    virtual void encodeNil(std::string_view key) = 0;
    /// `value` is UTF-8.
    virtual void encodeString(std::string_view key, std::string_view value) = 0;
    virtual void encodeURL(std::string_view key, const URL& value) = 0;
    /// An inline boolean, not an object (NSCoder's encodeBool:forKey:).
    virtual void encodeBool(std::string_view key, bool value) = 0;
    /// An NSArray of NSURL.
    virtual void encodeURLs(std::string_view key, std::span<const URL> values) = 0;
    /// An NSArray of boolean NSNumber.
    virtual void encodeBools(std::string_view key, const std::vector<bool>& values) = 0;
    virtual void encodeObject(std::string_view key, const CodedObject& value) = 0;

    [[nodiscard]] virtual std::optional<std::string> decodeString(std::string_view key) = 0;
    [[nodiscard]] virtual std::optional<URL> decodeURL(std::string_view key) = 0;
    /// An inline boolean or number; false if the key is absent.
    [[nodiscard]] virtual bool decodeBool(std::string_view key) = 0;
    [[nodiscard]] virtual std::optional<std::vector<URL>> decodeURLs(std::string_view key) = 0;
    /// A number other than 0 or 1 counts as another type.
    [[nodiscard]] virtual std::optional<std::vector<bool>> decodeBools(std::string_view key) = 0;
    /// An object of `expected` or of a class derived from it, or null.
    [[nodiscard]] virtual std::unique_ptr<CodedObject> decodeObject(std::string_view key,
                                                                    const CodedClass& expected) = 0;
};

/// A plain value record as an object of an archive. A record type states three things:
///   static const CodedClass& codedClass();
///   void encode(Coder&) const;
///   static std::optional<Record> decode(Coder&);
template <class Record>
class CodedRecord final : public CodedObject {
  public:
    explicit CodedRecord(Record value) : value_(std::move(value)) {}

    [[nodiscard]] const CodedClass& codedClass() const override { return Record::codedClass(); }
    void encode(Coder& coder) const override { value_.encode(coder); }
    [[nodiscard]] const Record& value() const { return value_; }
    /// The record, moved out.
    [[nodiscard]] Record take() { return std::move(value_); }

    /// For the `decode` member of the record's CodedClass.
    [[nodiscard]] static std::unique_ptr<CodedObject> make(Coder& coder) {
        std::optional<Record> record = Record::decode(coder);
        return record ? std::make_unique<CodedRecord>(std::move(*record)) : nullptr;
    }

  private:
    Record value_;
};

}  // namespace Base
