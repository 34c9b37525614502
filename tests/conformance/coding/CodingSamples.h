#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "Base/Archive/Coder.h"

/// The product's commands and records, for both sides of the wire.
namespace CodingSamples {

using Bytes = std::vector<std::uint8_t>;

struct Sample {
    /// The class without its module.
    std::string name;
    std::function<std::unique_ptr<Base::CodedObject>()> make;

    friend void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.name; }
};

/// Each command and each record, some with texts and paths that are awkward to write.
[[nodiscard]] const std::vector<Sample>& samples();

[[nodiscard]] Base::CodedObjectList listOf(std::unique_ptr<Base::CodedObject> object);
/// The program's own archive of the objects. The archiver is deterministic and leaves nothing out, so equal
/// bytes mean equal lists.
[[nodiscard]] Bytes archiveOf(const Base::CodedObjectList& objects);

/// An object as some sender might archive it: under the name of a class, with whatever keys `write` writes.
class Foreign final : public Base::CodedObject {
  public:
    using Write = std::function<void(Base::Coder&)>;

    Foreign(const Base::CodedClass& codedClass, Write write)
        : codedClass_(codedClass), write_(std::move(write)) {}

    [[nodiscard]] const Base::CodedClass& codedClass() const override { return codedClass_; }
    void encode(Base::Coder& coder) const override { write_(coder); }

  private:
    const Base::CodedClass& codedClass_;
    Write write_;
};

[[nodiscard]] Base::CodedObjectList foreign(const Base::CodedClass& codedClass, Foreign::Write write);

}  // namespace CodingSamples
