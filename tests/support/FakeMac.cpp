#include "support/FakeMac.h"

#include <algorithm>
#include <cstring>

#include "Base/FatalError.h"
#include "Platform/ProcessOnce.h"

namespace TestSupport {

ScopedSystemPorts::ScopedSystemPorts(const Platform::SystemPorts& ports) {
    Platform::SystemPorts::setCurrent(&ports);
    Platform::OnceGuard::resetAll();
}

ScopedSystemPorts::~ScopedSystemPorts() {
    Platform::OnceGuard::resetAll();
    Platform::SystemPorts::setCurrent(nullptr);
}

FakeMac::FakeMac()
    : ports_{log,
             files,
             tasks,
             processes,
             users,
             kernelExtensions,
             authorization,
             serviceManagement,
             xpc,
             bundles,
             clock,
             dispatch,
             distantObjects,
             codeModules,
             privateCopies,
             termination},
      scope_(ports_) {}

CallList FakeMac::callsOf(const std::string& prefix) const {
    CallList found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&prefix](const std::string& call) { return call.starts_with(prefix); });
    return found;
}

// Child processes.

namespace {

class FakeTask final : public Platform::Task {
  public:
    FakeTask(FakeTaskRunner::Result result, CallList& calls) : result_(std::move(result)), calls_(calls) {}

    void waitUntilExit() override {
        calls_.emplace_back("wait");
        ended_ = true;
    }
    [[nodiscard]] bool isRunning() override { return result_.runsOn; }
    void kill() override {
        calls_.emplace_back(result_.runsOn ? "kill task" : "end of task");
        result_.runsOn = false;
    }
    [[nodiscard]] std::string readOutputToEnd() override {
        calls_.emplace_back("read output");
        return result_.output;
    }
    [[nodiscard]] std::string readErrorToEnd() override {
        calls_.emplace_back("read error");
        return result_.error;
    }
    [[nodiscard]] std::int32_t terminationStatus() const override {
        requireEnded();
        return result_.status;
    }
    [[nodiscard]] Platform::TerminationReason terminationReason() const override {
        requireEnded();
        return result_.reason;
    }

  private:
    // As with a real child.
    void requireEnded() const {
        if (!ended_) {
            Base::fatalError("The status of a child process was asked for before it had been waited for.");
        }
    }

    bool ended_ = false;
    FakeTaskRunner::Result result_;
    CallList& calls_;
};

}  // namespace

std::unique_ptr<Platform::Task> FakeTaskRunner::launch(
    const std::string& path, const std::optional<std::vector<std::string>>& arguments) {
    argumentVectors.push_back(arguments);
    std::string commandLine = path;
    for (const std::string& argument : arguments.value_or(std::vector<std::string>{})) {
        commandLine += " " + argument;
    }
    calls_.push_back("launch " + commandLine);
    if (notExecutable.contains(path)) {
        return nullptr;
    }
    const auto found = results.find(commandLine);
    const auto answered = found == results.end() && answer
                              ? answer(path, arguments.value_or(std::vector<std::string>{}))
                              : std::nullopt;
    Result result = found == results.end() ? answered.value_or(Result{}) : found->second;
    if (auto& first = firstResults[commandLine]; !first.empty()) {
        result = std::move(first.front());
        first.pop_front();
    }
    if (result.onLaunch) {
        result.onLaunch();
    }
    return std::make_unique<FakeTask>(std::move(result), calls_);
}

// Processes.

const FakeProcessTable::Process* FakeProcessTable::find(std::int32_t pid) const {
    const auto found = std::find_if(processes.begin(), processes.end(),
                                    [pid](const Process& process) { return process.pid == pid; });
    return found == processes.end() ? nullptr : &*found;
}

int FakeProcessTable::listPids(Platform::PidListType type, std::uint32_t user, std::span<std::int32_t> pids) {
    std::vector<std::int32_t> listed;
    for (const Process& process : processes) {
        if (type == Platform::PidListType::all || process.uid == user) {
            listed.push_back(process.pid);
        }
    }
    listed.insert(listed.end(), vanished.begin(), vanished.end());
    calls_.push_back("listPids " + std::to_string(static_cast<std::uint32_t>(type)) + " " +
                     std::to_string(pids.size()));
    if (pids.empty()) {
        if (onCounted) {
            onCounted();
        }
        return refusesToCount ? -1 : static_cast<int>(listed.size());
    }
    if (refusesToList) {
        return -1;
    }
    const std::size_t count = std::min(listed.size(), pids.size());
    std::copy_n(listed.begin(), count, pids.begin());
    return static_cast<int>(count);
}

int FakeProcessTable::effectiveUser(std::int32_t pid, std::uint32_t& user) {
    questions.push_back("uid " + std::to_string(pid));
    const Process* process = find(pid);
    if (process == nullptr) {
        return 0;
    }
    user = process->uid;
    return 1;
}

namespace {

int write(const std::string& text, std::span<char> buffer) {
    const std::size_t count = std::min(text.size(), buffer.size());
    std::memcpy(buffer.data(), text.data(), count);
    return static_cast<int>(count);
}

}  // namespace

int FakeProcessTable::name(std::int32_t pid, std::span<char> name) {
    ++nameCalls;
    questions.push_back("name " + std::to_string(pid));
    if (firstName && nameCalls == 1) {
        return write(*firstName, name);
    }
    const Process* process = find(pid);
    return process == nullptr || process->name.empty() ? noName : write(process->name, name);
}

int FakeProcessTable::path(std::int32_t pid, std::span<char> path) {
    questions.push_back("path " + std::to_string(pid));
    const Process* process = find(pid);
    return process == nullptr ? 0 : write(process->path, path);
}

int FakeProcessTable::kill(std::int32_t pid, int signal) {
    calls_.push_back("kill " + std::to_string(pid) + " " + std::to_string(signal));
    const Process* process = find(pid);
    if (process == nullptr || !process->canBeKilled) {
        return -1;
    }
    std::erase_if(processes, [pid](const Process& each) { return each.pid == pid; });
    return 0;
}

// Users.

void FakeUsers::rewind() {
    calls_.emplace_back("setpwent");
    position_ = 0;
}

std::optional<Platform::Users::Entry> FakeUsers::next() {
    return position_ < entries.size() ? std::optional(entries[position_++]) : std::nullopt;
}

void FakeUsers::close() {
    calls_.emplace_back("endpwent");
}

int FakeUsers::setEffectiveUserId(std::uint32_t uid) {
    calls_.push_back("seteuid " + std::to_string(uid));
    if (refusesChange) {
        return -1;
    }
    effective = uid;
    return 0;
}

std::int32_t FakeKernelExtensions::unload(const std::string& bundleIdentifier) {
    calls_.push_back("unload " + bundleIdentifier);
    if (!loaded) {
        return result;
    }
    const auto extension = loaded->find(bundleIdentifier);
    if (extension == loaded->end()) {
        return kNotLoaded;
    }
    if (extension->second) {
        return kInUse;
    }
    loaded->erase(extension);
    return 0;
}

// Authorization and blessing.

class FakeAuthorizationSession final : public Platform::SFAuthorization {
  public:
    explicit FakeAuthorizationSession(FakeAuthorization& owner) : owner_(owner) {}
    FakeAuthorizationSession(const FakeAuthorizationSession&) = delete;
    FakeAuthorizationSession& operator=(const FakeAuthorizationSession&) = delete;
    ~FakeAuthorizationSession() override { owner_.calls_.emplace_back("end of authorization"); }

    [[nodiscard]] bool obtainWithRights(
        const std::vector<Platform::AuthorizationItem>& rights, std::uint32_t flags,
        const std::vector<Platform::AuthorizationItem>& environment) override {
        owner_.calls_.push_back("authorize " + rights.at(0).name + " " + std::to_string(flags));
        owner_.requests.push_back({rights, flags, environment});
        return owner_.grants;
    }
    [[nodiscard]] const Platform::AuthorizationReference* authorizationRef() const override {
        return owner_.hasReference ? &reference_ : nullptr;
    }

  private:
    FakeAuthorization& owner_;
    Platform::AuthorizationReference reference_;
};

std::unique_ptr<Platform::SFAuthorization> FakeAuthorization::create() {
    return std::make_unique<FakeAuthorizationSession>(*this);
}

std::optional<Platform::Error> FakeServiceManagement::blessJob(
    Platform::LaunchdDomain /*domain*/, const std::string& label,
    const Platform::AuthorizationReference& /*authorization*/) {
    calls_.push_back("bless " + label);
    const auto found = failures.find(label);
    return found == failures.end() ? std::nullopt : std::optional(found->second);
}

// Bundles.

std::optional<std::string> FakeBundle::infoString(const std::string& key) const {
    const auto found = info_.find(key);
    return found == info_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<Base::URL> FakeBundle::resource(const std::string& name, const std::string& type) const {
    const std::string file = name + "." + type;
    return resources_.contains(file)
               ? std::optional(url_.appendingPathComponent("Contents/Resources").appendingPathComponent(file))
               : std::nullopt;
}

std::optional<std::string> FakeBundle::localizedString(const std::string& key,
                                                       const std::string& table) const {
    const auto found = texts.find({table, key});
    return found == texts.end() ? std::nullopt : std::optional(found->second);
}

std::unique_ptr<Platform::Bundle> FakeBundles::open(const Base::URL& location) {
    calls_.push_back("open bundle " + location.path());
    const auto found = infoByPath.find(location.path());
    return found == infoByPath.end()
               ? nullptr
               : std::make_unique<FakeBundle>(location, found->second, std::set<std::string>{});
}

std::unique_ptr<Platform::Bundle> FakeBundles::mainBundle() {
    auto bundle = std::make_unique<FakeBundle>(Base::URL::fileURL("/Applications/Uninstall Sentrel.app"),
                                               mainInfo, mainResources);
    bundle->texts = mainTexts;
    return bundle;
}

void FakeBundles::install(const std::string& path, const std::string& shortVersion,
                          const std::string& build) {
    infoByPath[path] = {{"CFBundleShortVersionString", shortVersion}, {"CFBundleVersion", build}};
}

// Distant objects and loaded code.

std::shared_ptr<Platform::DistantObject> FakeDistantObjects::rootProxy(const std::string& name) {
    calls_.push_back("root proxy " + name);
    if (!registered.contains(name)) {
        return nullptr;
    }
    proxies.push_back(std::make_shared<FakeDistantObject>(calls_));
    return proxies.back();
}

std::optional<Platform::Error> FakeCodeModules::load(const Base::URL& module, const std::string& symbol,
                                                     void*& address) {
    calls_.push_back("load " + module.path() + " " + symbol);
    if (symbolAddress == nullptr) {
        return Platform::Error{"no such library", 1};
    }
    address = symbolAddress;
    return std::nullopt;
}

}  // namespace TestSupport
