#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/Archive/Coder.h"
#include "Platform/RuntimeCommand.h"

namespace InstallCommon {

/// One step of an installation or uninstallation. The owner of a list builds and sends it; the privileged
/// helper decodes it and calls `execute` on each command in order.
class Command : public Base::CodedObject, public Platform::RuntimeCommand {
  public:
    /// Shown to people as progress text while the command runs.
    [[nodiscard]] const std::string& commandDescription() const override = 0;
    /// The number of progress units that the command counts for.
    [[nodiscard]] std::int32_t weight() const override = 0;
    /// Performs the step, in the helper process, on the calling thread. Has no result: a failure is logged
    /// and the list goes on. A command holds no state that changes here; running it twice repeats the step.
    void execute() const override = 0;
};

using CommandList = std::vector<std::unique_ptr<Command>>;

/// Keys that every command's coded form has.
struct CodingKey {
    CodingKey() = delete;
    static constexpr std::string_view commandDescription = "commandDescription";
};

/// The base of all commands. Its coded form is the description alone: the weight is never coded, so every
/// command arrives with weight 1.
class CommandConcrete : public Command {
  public:
    explicit CommandConcrete(std::string commandDescription);
    CommandConcrete() = delete;

    [[nodiscard]] const std::string& commandDescription() const override { return commandDescription_; }
    [[nodiscard]] std::int32_t weight() const override { return weight_; }
    void setWeight(std::int32_t weight) override { weight_ = weight; }
    /// Must be overridden: here it ends the process.
    void execute() const override;

    [[nodiscard]] static const Base::CodedClass& staticClass() { return kClass; }
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return kClass; }
    /// Subclasses write their own keys first and then call this.
    void encode(Base::Coder& coder) const override;

  protected:
    static const Base::CodedClass kClass;

    /// Subclasses read their own keys first and then this, each stopping at the first missing key.
    [[nodiscard]] static std::optional<std::string> decodeDescription(Base::Coder& coder);

  private:
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder);

    std::int32_t weight_ = 1;
    std::string commandDescription_;
};

/// What every class of commands below CommandConcrete has alike. `Concrete` derives from this and states
///   static constexpr std::string_view runtimeName;
///   static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder);
template <class Concrete, class Superclass = CommandConcrete>
class CodedCommand : public Superclass {
  public:
    using Superclass::Superclass;

    [[nodiscard]] static const Base::CodedClass& staticClass() { return kClass; }
    [[nodiscard]] const Base::CodedClass& codedClass() const override { return kClass; }

  protected:
    static const Base::CodedClass kClass;

    /// Reads the description, then makes the command from it and from its own fields, which have been read.
    /// Returns null without a description.
    template <class... Fields>
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decoded(Base::Coder& coder, Fields... fields) {
        std::optional<std::string> description = CommandConcrete::decodeDescription(coder);
        return description ? std::make_unique<Concrete>(std::move(*description), std::move(fields)...)
                           : nullptr;
    }
};

/// A constant, not a static that the first call makes: compilers divide the making between data and code in
/// ways of their own, and a program linked from the objects of two would get half of each.
template <class Concrete, class Superclass>
constinit const Base::CodedClass CodedCommand<Concrete, Superclass>::kClass{
    Concrete::runtimeName, &Superclass::kClass, &Concrete::decode};

}  // namespace InstallCommon
