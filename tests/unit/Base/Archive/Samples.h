#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/Archive/Coder.h"
#include "Base/Archive/KeyedUnarchiver.h"

/// Small coded classes in the shapes that the product's classes have, for tests of the coders themselves.
namespace Samples {

/// A record whose keys may be missing.
struct File {
    std::optional<std::string> name;
    std::optional<Base::URL> location;

    static const Base::CodedClass& codedClass();
    void encode(Base::Coder& coder) const;
    static std::optional<File> decode(Base::Coder& coder);
    friend bool operator==(const File&, const File&) = default;
};

/// A record of a derived class: the keys of `File` and one more.
struct Bundle {
    File file;
    std::optional<std::string> bundleId;

    static const Base::CodedClass& codedClass();
    void encode(Base::Coder& coder) const;
    static std::optional<Bundle> decode(Base::Coder& coder);
    friend bool operator==(const Bundle&, const Bundle&) = default;
};

/// A record that holds a record.
struct Job {
    std::optional<std::string> label;
    std::optional<File> plist;

    static const Base::CodedClass& codedClass();
    void encode(Base::Coder& coder) const;
    static std::optional<Job> decode(Base::Coder& coder);
    friend bool operator==(const Job&, const Job&) = default;
};

/// The abstract base of the steps. Never allowed in an archive.
class Step : public Base::CodedObject {
  public:
    static const Base::CodedClass& classDescription();
    explicit Step(std::string description) : description(std::move(description)) {}
    void encode(Base::Coder& coder) const override;

    std::string description;
};

/// Two arrays of one length, as a list of pairs. All keys are needed.
class Removal final : public Step {
  public:
    static const Base::CodedClass& classDescription();
    Removal(std::string description, std::vector<Base::URL> paths, std::vector<bool> flags)
        : Step(std::move(description)), paths(std::move(paths)), flags(std::move(flags)) {}
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return classDescription(); }
    void encode(Base::Coder& coder) const override;

    std::vector<Base::URL> paths;
    std::vector<bool> flags;
};

/// A nested record and an inline boolean. The record is needed.
class JobStep final : public Step {
  public:
    static const Base::CodedClass& classDescription();
    JobStep(std::string description, Job job, bool isDaemon)
        : Step(std::move(description)), job(std::move(job)), isDaemon(isDaemon) {}
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return classDescription(); }
    void encode(Base::Coder& coder) const override;

    Job job;
    bool isDaemon;
};

/// One URL and one string, both may be nil.
class Link final : public Base::CodedObject {
  public:
    static const Base::CodedClass& classDescription();
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return classDescription(); }
    void encode(Base::Coder& coder) const override;

    std::optional<Base::URL> target;
    std::optional<std::string> title;
};

/// A class that may hold itself, to any depth.
class Nest final : public Base::CodedObject {
  public:
    static const Base::CodedClass& classDescription();
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return classDescription(); }
    void encode(Base::Coder& coder) const override;

    std::unique_ptr<Base::CodedObject> inner;
};

/// Every class above except `Step`, and the four system classes.
[[nodiscard]] const Base::AllowedClasses& allowedClasses();

/// The archive of `objects`.
[[nodiscard]] std::vector<std::uint8_t> archive(const Base::CodedObjectList& objects);

/// One object of each kind.
[[nodiscard]] Base::CodedObjectList oneOfEach();

/// The objects as text, one line each: equal texts mean equal lists.
[[nodiscard]] std::string described(const Base::CodedObjectList& objects);

}  // namespace Samples
