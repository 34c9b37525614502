#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "InstallCommon/Command.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace InstallCommon {

/// The shared base of the commands that start and stop a launchd job. A daemon lives in the system's domain,
/// an agent in each user's session. Has no `execute` and is never put into a list.
class LaunchdJobCommand : public CodedCommand<LaunchdJobCommand> {
  public:
    LaunchdJobCommand(std::string commandDescription, NorvikCommon::LaunchdInfo launchdJob, bool isDaemon);

    [[nodiscard]] const NorvikCommon::LaunchdInfo& launchdJob() const { return launchdJob_; }
    [[nodiscard]] bool isDaemon() const { return isDaemon_; }

    static constexpr std::string_view runtimeName = "_TtC13InstallCommon17LaunchdJobCommand";
    void encode(Base::Coder& coder) const override;
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder) {
        return decodeJob<LaunchdJobCommand>(coder);
    }

  protected:
    /// Decodes any class of this family.
    template <class JobCommand>
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decodeJob(Base::Coder& coder) {
        std::optional<Fields> fields = decodeFields(coder);
        return fields ? std::make_unique<JobCommand>(std::move(fields->description),
                                                     std::move(fields->launchdJob), fields->isDaemon)
                      : nullptr;
    }

    /// Runs `block` under each local user's id, one user after another.
    static void forEachUser(const std::function<void(std::uint32_t userId)>& block);

  private:
    struct Fields {
        NorvikCommon::LaunchdInfo launchdJob;
        bool isDaemon;
        std::string description;
    };

    [[nodiscard]] static std::optional<Fields> decodeFields(Base::Coder& coder);

    NorvikCommon::LaunchdInfo launchdJob_;
    bool isDaemon_;
};

/// What the commands of this family have alike and their base cannot say, because it names the class itself.
template <class Concrete>
class ConcreteJobCommand : public CodedCommand<Concrete, LaunchdJobCommand> {
  public:
    using CodedCommand<Concrete, LaunchdJobCommand>::CodedCommand;

    [[nodiscard]] static std::unique_ptr<Concrete> withAgent(std::string commandDescription,
                                                             NorvikCommon::LaunchdInfo agent) {
        return std::make_unique<Concrete>(std::move(commandDescription), std::move(agent), false);
    }
    [[nodiscard]] static std::unique_ptr<Concrete> withDaemon(std::string commandDescription,
                                                              NorvikCommon::LaunchdInfo daemon) {
        return std::make_unique<Concrete>(std::move(commandDescription), std::move(daemon), true);
    }
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder) {
        return LaunchdJobCommand::decodeJob<Concrete>(coder);
    }
};

}  // namespace InstallCommon
