#pragma once

#include <cstdint>
#include <string>

namespace Platform {

/// What macOS's object runtime can ask a command for: commands are exported to it, as objects that conform
/// to the protocol `_TtP13InstallCommon7Command_`. Other systems have no use for it. Called on any thread, by
/// one caller at a time.
class RuntimeCommand {
  public:
    virtual ~RuntimeCommand() = default;

    [[nodiscard]] virtual const std::string& commandDescription() const = 0;
    [[nodiscard]] virtual std::int32_t weight() const = 0;
    virtual void setWeight(std::int32_t weight) = 0;
    virtual void execute() const = 0;
};

}  // namespace Platform
