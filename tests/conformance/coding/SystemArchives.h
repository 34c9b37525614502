#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Archive/Coder.h"
#include "Base/Archive/KeyedUnarchiver.h"

/// The system's keyed coders, as the tests drive them: the program's objects go in and come out in carriers.
namespace SystemArchives {

using Bytes = std::vector<std::uint8_t>;

/// How the coder takes a failure: as it does by itself, with an exception; or as newer ones may, keeping the
/// first error and returning nil from then on.
enum class FailurePolicy : std::uint8_t { raises, keepsError };

/// The archive of `objects` under the root key, with secure coding required.
[[nodiscard]] Bytes archive(Base::CodedObjectList objects);

/// What the archive holds. Nothing, and the reason in `refusal`, when the coder or the carriers refuse it.
[[nodiscard]] std::optional<Base::CodedObjectList> read(const Bytes& archive,
                                                        const Base::AllowedClasses& allowed,
                                                        std::string& refusal,
                                                        FailurePolicy policy = FailurePolicy::raises);

/// The same by the coder of a connection whose exported object wants to hear of refused messages. What it
/// heard, in order.
[[nodiscard]] std::vector<std::string> refusalsHeard(const Bytes& archive,
                                                     const Base::AllowedClasses& allowed);

/// What an adapter says about a key of a coder that keeps an error from before.
[[nodiscard]] std::string faultOfFailedCoder();

/// What the Objective-C runtime knows of the class made for `coded`.
struct RuntimeClass {
    /// The runtime name, if the runtime finds the class by it; else what the runtime calls the class.
    std::string name;
    /// The same of the superclass.
    std::string superclass;
    /// Answered, and by the class itself.
    bool statesSecureCoding;
    bool conformsToSecureCoding;
    friend bool operator==(const RuntimeClass&, const RuntimeClass&) = default;
};
[[nodiscard]] RuntimeClass runtimeClass(const Base::CodedClass& coded);

/// What the runtime is told by a carrier that owns `command`: as an object of the exported protocol, whose
/// weight it sets to `weight`, and which it has execute.
struct ExportedCommand {
    bool conforms;
    std::string description;
    int weightBefore;
    int weightAfter;
    friend bool operator==(const ExportedCommand&, const ExportedCommand&) = default;
};
[[nodiscard]] ExportedCommand exportedCommand(std::unique_ptr<Base::CodedObject> command, int weight);

/// Encodes a carrier after its loan has ended; does not return.
void encodeAfterLoan(const Base::CodedObject& object);

}  // namespace SystemArchives
