#include "LookingPorts.h"

#include "Base/FatalError.h"
#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "Platform/FolderNames.h"

namespace Inventory {

namespace {

[[noreturn]] void refuse() {
    Base::fatalError("This program only looks.");
}

class LaunchctlPrint final : public Platform::TaskRunner {
  public:
    explicit LaunchctlPrint(Platform::TaskRunner& real) : real_(real) {}

    std::unique_ptr<Platform::Task> launch(
        const std::string& path, const std::optional<std::vector<std::string>>& arguments) override {
        const bool isQuestion = path == NorvikCommon::SystemPathProvider::launchctlExecutable().path() &&
                                arguments && !arguments->empty() &&
                                (arguments->front() == "print" || arguments->front() == "print-disabled");
        if (!isQuestion) {
            refuse();
        }
        return real_.launch(path, arguments);
    }

  private:
    Platform::TaskRunner& real_;
};

class UntouchedProcesses final : public Platform::ProcessTable {
  public:
    explicit UntouchedProcesses(Platform::ProcessTable& real) : real_(real) {}

    int listPids(Platform::PidListType type, std::uint32_t user, std::span<std::int32_t> pids) override {
        return real_.listPids(type, user, pids);
    }
    int effectiveUser(std::int32_t pid, std::uint32_t& user) override {
        return real_.effectiveUser(pid, user);
    }
    int name(std::int32_t pid, std::span<char> name) override { return real_.name(pid, name); }
    int path(std::int32_t pid, std::span<char> path) override { return real_.path(pid, path); }
    int kill(std::int32_t /*pid*/, int /*signal*/) override { refuse(); }

  private:
    Platform::ProcessTable& real_;
};

class SameUser final : public Platform::Users {
  public:
    explicit SameUser(Platform::Users& real) : real_(real) {}

    void rewind() override { real_.rewind(); }
    std::optional<Entry> next() override { return real_.next(); }
    void close() override { real_.close(); }
    std::uint32_t realUserId() override { return real_.realUserId(); }
    int setEffectiveUserId(std::uint32_t /*uid*/) override { refuse(); }

  private:
    Platform::Users& real_;
};

}  // namespace

struct LookingPorts::Guards {
    explicit Guards(const Platform::SystemPorts& real)
        : tasks(real.tasks), processes(real.processes), users(real.users) {
        ports.tasks = tasks;
        ports.processes = processes;
        ports.users = users;
        ports.bundles = real.bundles;
        ports.clock = real.clock;
    }

    LaunchctlPrint tasks;
    UntouchedProcesses processes;
    SameUser users;
    Platform::SystemPorts ports = Platform::folderNamesOnly();
};

LookingPorts::LookingPorts(const Platform::SystemPorts& real) : guards_(std::make_unique<Guards>(real)) {}

LookingPorts::~LookingPorts() = default;

const Platform::SystemPorts& LookingPorts::ports() const {
    return guards_->ports;
}

}  // namespace Inventory
