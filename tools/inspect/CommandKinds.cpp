#include "CommandKinds.h"

#include <array>

#include "Base/FatalError.h"

namespace Inspect {

namespace {

template <class Concrete>
constexpr CommandKind kind(std::string_view className) {
    return {className, &Concrete::staticClass, [](const InstallCommon::Command& command) -> ConcreteCommand {
                return static_cast<const Concrete*>(&command);
            }};
}

constexpr std::array kKinds{
    kind<InstallCommon::RemoveCommand>("RemoveCommand"),
    kind<InstallCommon::CopyCommand>("CopyCommand"),
    kind<InstallCommon::StartLaunchdJobCommand>("StartLaunchdJobCommand"),
    kind<InstallCommon::StopLaunchdJobCommand>("StopLaunchdJobCommand"),
    kind<InstallCommon::KillProcessCommand>("KillProcessCommand"),
    kind<InstallCommon::UnloadKextCommand>("UnloadKextCommand"),
    kind<InstallCommon::UpdateLaunchServices>("UpdateLaunchServices"),
};
static_assert(kKinds.size() == std::variant_size_v<ConcreteCommand>);

}  // namespace

const CommandKind& kindOf(const InstallCommon::Command& command) {
    for (const CommandKind& kind : kKinds) {
        if (&kind.codedClass() == &command.codedClass()) {
            return kind;
        }
    }
    Base::fatalError("A command list holds a command of an unknown class.");
}

}  // namespace Inspect
