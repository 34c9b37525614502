#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Platform/SystemPorts.h"
#include "support/FakePrivateCopies.h"

namespace TestSupport {

/// Everything that was asked of a fake Mac, in order, one line a call.
using CallList = std::vector<std::string>;

class FakeSystemLog final : public Platform::SystemLog {
  public:
    void log(std::string_view text) override { lines.emplace_back(text); }

    std::vector<std::string> lines;
};

/// A file system in memory. Paths are absolute; parents need not be made by hand. Removal follows a link on
/// the way to the item only if nobody but root could have made it; the other operations use every path
/// unchanged.
class FakeFileManager final : public Platform::FileManager {
  public:
    struct Node {
        enum class Kind : std::uint8_t { folder, file, link } kind = Kind::file;
        std::string target;
        std::uint16_t mode = 0644;
        std::uint32_t owner = 501;
        std::uint32_t group = 20;
        std::string contents{};
        /// Another one for each node that was added.
        std::uint64_t inode = 0;

        friend bool operator==(const Node&, const Node&) = default;
    };

    explicit FakeFileManager(CallList& calls) : calls_(calls) {}

    void addFolder(const std::string& path);
    void addFile(const std::string& path, const std::string& contents = "");
    void addLink(const std::string& path, const std::string& target);
    [[nodiscard]] bool has(const std::string& path) const { return nodes.contains(path); }
    [[nodiscard]] const Node& at(const std::string& path) const { return nodes.at(path); }
    /// The next call of this operation ("copy", "create", "chmod", ...) on this path fails with this error.
    void failOn(const std::string& operation, const std::string& path, Platform::Error error);

    [[nodiscard]] std::optional<Platform::Error> createDirectory(const Base::URL& directory,
                                                                 bool withIntermediates) override;
    [[nodiscard]] std::optional<bool> hasVisibleEntries(const Base::URL& directory,
                                                        Platform::Error& error) override;
    [[nodiscard]] std::optional<Platform::Error> removeItem(const Base::URL& item) override;
    [[nodiscard]] std::optional<Platform::Error> copyItem(const Base::URL& source,
                                                          const Base::URL& destination) override;
    [[nodiscard]] bool itemExists(const Base::URL& item) override;
    [[nodiscard]] std::optional<Platform::FileIdentity> identity(const Base::URL& item) override;
    [[nodiscard]] int setMode(const Base::URL& item, std::uint16_t mode) override;
    [[nodiscard]] int setOwner(const Base::URL& item, std::uint32_t owner, std::uint32_t group) override;
    void setOwnerOfContents(const Base::URL& directory, std::uint32_t owner, std::uint32_t group,
                            const std::function<void(const Base::URL& item, int error)>& failed) override;
    [[nodiscard]] Base::URL localDirectory(Platform::SearchPathDirectory directory) override;

    std::map<std::string, Node> nodes;
    /// Errno that removeItem meets at these paths, every time: the item stays, and with it the folders above.
    std::map<std::string, int> resisting;
    /// Errno that setOwnerOfContents meets, by path.
    std::map<std::string, int> ownerFailures;
    /// The paths that itemExists was asked about, in order; these questions are not among the calls.
    std::vector<std::string> existenceTests;
    std::string usersFolder = "/Users";
    int usersFolderQuestions = 0;

  private:
    [[nodiscard]] std::optional<Platform::Error> failure(const std::string& operation,
                                                         const std::string& path);
    [[nodiscard]] std::optional<Platform::Error> injected(const std::string& operation,
                                                          const std::string& path);
    [[nodiscard]] std::optional<Platform::Error> resolveWay(const std::string& path,
                                                            std::string& resolved) const;
    [[nodiscard]] std::optional<Platform::Error> removeTree(const std::string& path);

    CallList& calls_;
    std::uint64_t inodes_ = 0;
    std::map<std::pair<std::string, std::string>, Platform::Error> failures_;
};

/// Child processes that answer as told; any other succeeds silently.
class FakeTaskRunner final : public Platform::TaskRunner {
  public:
    struct Result {
        std::string output{};
        std::string error{};
        std::int32_t status = 0;
        Platform::TerminationReason reason = Platform::TerminationReason::exit;
        /// Runs until it is killed; else it has ended when it is first asked about.
        bool runsOn = false;
        /// Called when the process starts.
        std::function<void()> onLaunch{};
    };

    explicit FakeTaskRunner(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::unique_ptr<Platform::Task> launch(
        const std::string& path, const std::optional<std::vector<std::string>>& arguments) override;

    /// By the whole command line, joined with single spaces.
    std::map<std::string, Result> results;
    /// Answers what `results` does not; nothing leaves the child to succeed silently.
    std::function<std::optional<Result>(const std::string& path, const std::vector<std::string>& arguments)>
        answer;
    /// Those that come before the one in `results`, in order.
    std::map<std::string, std::deque<Result>> firstResults;
    std::set<std::string> notExecutable;
    /// The argument vectors as they were given, in order.
    std::vector<std::optional<std::vector<std::string>>> argumentVectors;

  private:
    CallList& calls_;
};

class FakeProcessTable final : public Platform::ProcessTable {
  public:
    struct Process {
        std::int32_t pid = 0;
        std::uint32_t uid = 0;
        std::string name;
        std::string path;
        bool canBeKilled = true;
    };

    explicit FakeProcessTable(CallList& calls) : calls_(calls) {}

    int listPids(Platform::PidListType type, std::uint32_t user, std::span<std::int32_t> pids) override;
    int effectiveUser(std::int32_t pid, std::uint32_t& user) override;
    int name(std::int32_t pid, std::span<char> name) override;
    int path(std::int32_t pid, std::span<char> path) override;
    int kill(std::int32_t pid, int signal) override;

    /// Killed ones leave.
    std::vector<Process> processes;
    /// Listed but gone when it is asked about.
    std::vector<std::int32_t> vanished;
    int nameCalls = 0;
    /// The queries about single processes, in order ("uid 7", "name 7", "path 7"); not among the calls.
    std::vector<std::string> questions;
    /// The answer to the first question for a name, in place of the process's own.
    std::optional<std::string> firstName;
    /// The result of a query for a name if there is none.
    int noName = 0;
    /// Counting works, filling a buffer fails.
    bool refusesToList = false;
    bool refusesToCount = false;
    /// Called when the processes have been counted, before they can be listed.
    std::function<void()> onCounted;

  private:
    [[nodiscard]] const Process* find(std::int32_t pid) const;

    CallList& calls_;
};

class FakeUsers final : public Platform::Users {
  public:
    explicit FakeUsers(CallList& calls) : calls_(calls) {}

    void rewind() override;
    [[nodiscard]] std::optional<Entry> next() override;
    void close() override;
    [[nodiscard]] std::uint32_t realUserId() override { return real; }
    int setEffectiveUserId(std::uint32_t uid) override;

    std::vector<Entry> entries;
    std::uint32_t real = 0;
    std::uint32_t effective = 0;
    bool refusesChange = false;

  private:
    CallList& calls_;
    std::size_t position_ = 0;
};

class FakeKernelExtensions final : public Platform::KernelExtensions {
  public:
    explicit FakeKernelExtensions(CallList& calls) : calls_(calls) {}

    std::int32_t unload(const std::string& bundleIdentifier) override;

    static constexpr auto kNotLoaded = static_cast<std::int32_t>(0xdc008006);
    static constexpr auto kInUse = static_cast<std::int32_t>(0xdc008018);

    /// Every answer, unless there is a list of loaded extensions.
    std::int32_t result = 0;
    /// The loaded extensions, and whether they are in use; unloaded ones leave.
    std::optional<std::map<std::string, bool>> loaded;

  private:
    CallList& calls_;
};

class FakeAuthorization final : public Platform::Authorization {
  public:
    struct Request {
        std::vector<Platform::AuthorizationItem> rights;
        std::uint32_t flags = 0;
        std::vector<Platform::AuthorizationItem> environment;
    };

    explicit FakeAuthorization(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::unique_ptr<Platform::SFAuthorization> create() override;

    bool grants = true;
    bool hasReference = true;
    std::vector<Request> requests;

  private:
    friend class FakeAuthorizationSession;
    CallList& calls_;
};

class FakeServiceManagement final : public Platform::ServiceManagement {
  public:
    explicit FakeServiceManagement(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::optional<Platform::Error> blessJob(
        Platform::LaunchdDomain domain, const std::string& label,
        const Platform::AuthorizationReference& authorization) override;

    std::map<std::string, Platform::Error> failures;

  private:
    CallList& calls_;
};

class FakeBundle final : public Platform::Bundle {
  public:
    FakeBundle(Base::URL location, std::map<std::string, std::string> info, std::set<std::string> resources)
        : url_(std::move(location)), info_(std::move(info)), resources_(std::move(resources)) {}

    [[nodiscard]] Base::URL url() const override { return url_; }
    [[nodiscard]] std::optional<std::string> infoString(const std::string& key) const override;
    [[nodiscard]] std::optional<Base::URL> resource(const std::string& name,
                                                    const std::string& type) const override;
    [[nodiscard]] std::optional<std::string> localizedString(const std::string& key,
                                                             const std::string& table) const override;

    /// Texts of the string tables, by table and key.
    std::map<std::pair<std::string, std::string>, std::string> texts;

  private:
    Base::URL url_;
    std::map<std::string, std::string> info_;
    std::set<std::string> resources_;
};

class FakeBundles final : public Platform::Bundles {
  public:
    explicit FakeBundles(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::unique_ptr<Platform::Bundle> open(const Base::URL& location) override;
    [[nodiscard]] std::unique_ptr<Platform::Bundle> mainBundle() override;

    /// Installs a bundle with these two versions at a path.
    void install(const std::string& path, const std::string& shortVersion, const std::string& build);

    std::map<std::string, std::map<std::string, std::string>> infoByPath;
    std::map<std::string, std::string> mainInfo;
    std::set<std::string> mainResources;
    /// Texts of the main bundle's string tables, by table and key.
    std::map<std::pair<std::string, std::string>, std::string> mainTexts;

  private:
    CallList& calls_;
};

class FakeClock final : public Platform::Clock {
  public:
    explicit FakeClock(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::uint64_t now() override { return present; }
    void sleep(std::uint32_t seconds) override { calls_.push_back("sleep " + std::to_string(seconds)); }

    std::uint64_t present = 1'000'000'000'000;

  private:
    CallList& calls_;
};

/// Queues run their blocks at once on the caller's thread; a wait without a count is a time-out.
class FakeDispatch final : public Platform::Dispatch {
  public:
    explicit FakeDispatch(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::unique_ptr<Platform::Semaphore> makeSemaphore(std::int64_t value) override;
    [[nodiscard]] std::unique_ptr<Platform::Queue> makeConcurrentQueue(const std::string& label) override;
    [[nodiscard]] std::unique_ptr<Platform::Queue> makeSerialQueue(const std::string& label) override;
    [[nodiscard]] std::unique_ptr<Platform::Timer> makeTimer(std::function<void()> handler) override;

    /// Called in each wait, before it is decided.
    std::function<void()> onWait;
    /// Called in each signal, before it counts.
    std::function<void()> onSignal;
    /// The handlers of the timers that were made.
    std::vector<std::function<void()>> timerHandlers;
    /// Queues keep their blocks until `runKept`.
    bool keepsBlocks = false;
    std::deque<std::function<void()>> kept;
    void runKept();

  private:
    CallList& calls_;
};

/// What a fake helper does with a message.
using FakeService = std::function<void(std::string_view selector, std::vector<Platform::XPCValue> arguments,
                                       Platform::XPCReply reply)>;

class FakeConnection final : public Platform::XPCConnection {
  public:
    FakeConnection(CallList& calls, std::string service, FakeService answer);

    void setRemoteObjectInterface(Platform::XPCInterface interface) override;
    void setExportedObject(Platform::XPCInterface interface,
                           std::shared_ptr<Platform::XPCObject> object) override;
    void setInvalidationHandler(std::function<void()> handler) override;
    void setInterruptionHandler(std::function<void()> handler) override;
    void resume() override;
    void invalidate() override;
    [[nodiscard]] std::shared_ptr<Platform::XPCObject> remoteObjectProxy() override;
    [[nodiscard]] std::shared_ptr<Platform::XPCObject> synchronousRemoteObjectProxy(
        std::function<void(const Platform::Error&)> failed) override;

    std::function<void()> invalidationHandler;
    std::function<void()> interruptionHandler;
    std::optional<Platform::XPCInterface> remoteInterface;
    std::optional<Platform::XPCInterface> exportedInterface;
    std::shared_ptr<Platform::XPCObject> exportedObject;
    /// A synchronous call that has not been answered fails when the connection is invalidated.
    bool isInvalidated = false;
    /// Given instead of a remote object of the interface's protocol.
    std::optional<std::string> protocolOfProxy;
    /// A synchronous call fails with this.
    std::optional<Platform::Error> unreachable;

  private:
    CallList& calls_;
    std::string service_;
    FakeService answer_;
};

class FakeXPC final : public Platform::XPC {
  public:
    explicit FakeXPC(CallList& calls) : calls_(calls) {}

    void registerClasses(const Base::AllowedClasses& classes) override;
    [[nodiscard]] std::shared_ptr<Platform::XPCConnection> makeConnection(const std::string& machServiceName,
                                                                          std::uint32_t options) override;
    [[nodiscard]] std::unique_ptr<Platform::XPCListener> makeListener(
        const std::string& machServiceName, const std::vector<std::string>& clientRequirements) override;

    std::map<std::string, FakeService> services;
    std::map<std::string, Platform::Error> unreachable;
    std::optional<std::string> protocolOfProxies;
    std::vector<std::shared_ptr<FakeConnection>> connections;
    /// What launchd hands over to the process, once.
    std::unique_ptr<Platform::XPCListener> listener;
    /// What the last listener was asked to demand of its clients.
    std::vector<std::string> requirements;

  private:
    CallList& calls_;
};

/// A proxy whose connection and ports break when a test says so.
class FakeDistantObject final : public Platform::DistantObject {
  public:
    explicit FakeDistantObject(CallList& calls) : calls_(calls) {}

    [[nodiscard]] bool isConnectionValid() const override { return connectionIsValid; }
    [[nodiscard]] bool isSendPortValid() const override { return sendPortIsValid; }
    [[nodiscard]] bool isReceivePortValid() const override { return receivePortIsValid; }
    void addCommonRequestModes() override { calls_.emplace_back("common request modes"); }

    bool connectionIsValid = true;
    bool sendPortIsValid = true;
    bool receivePortIsValid = true;

  private:
    CallList& calls_;
};

class FakeDistantObjects final : public Platform::DistantObjects {
  public:
    explicit FakeDistantObjects(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::shared_ptr<Platform::DistantObject> rootProxy(const std::string& name) override;

    /// The names that somebody has registered.
    std::set<std::string> registered;
    /// The proxies that were handed out, in order.
    std::vector<std::shared_ptr<FakeDistantObject>> proxies;

  private:
    CallList& calls_;
};

class FakeCodeModules final : public Platform::CodeModules {
  public:
    explicit FakeCodeModules(CallList& calls) : calls_(calls) {}

    [[nodiscard]] std::optional<Platform::Error> load(const Base::URL& module, const std::string& symbol,
                                                      void*& address) override;

    /// The address of every symbol; null when nothing can be loaded.
    void* symbolAddress = nullptr;

  private:
    CallList& calls_;
};

/// A process that is asked to end when a test says so.
class FakeTermination final : public Platform::Termination {
  public:
    void onRequest(std::function<void()> requested) override { request = std::move(requested); }

    /// Asks; empty until somebody has listened.
    std::function<void()> request;
};

/// Sets the ports for as long as it lives and resets everything that a process makes once, so that each test
/// starts like a new process.
class ScopedSystemPorts {
  public:
    explicit ScopedSystemPorts(const Platform::SystemPorts& ports);
    ScopedSystemPorts(const ScopedSystemPorts&) = delete;
    ScopedSystemPorts& operator=(const ScopedSystemPorts&) = delete;
    ~ScopedSystemPorts();
};

/// A Mac whose every service is a fake, in force while it lives.
class FakeMac {
  public:
    FakeMac();

    /// All calls of all services, in order.
    CallList calls;
    FakeSystemLog log;
    FakeFileManager files{calls};
    FakeTaskRunner tasks{calls};
    FakeProcessTable processes{calls};
    FakeUsers users{calls};
    FakeKernelExtensions kernelExtensions{calls};
    FakeAuthorization authorization{calls};
    FakeServiceManagement serviceManagement{calls};
    FakeXPC xpc{calls};
    FakeBundles bundles{calls};
    FakeClock clock{calls};
    FakeDispatch dispatch{calls};
    FakeDistantObjects distantObjects{calls};
    FakeCodeModules codeModules{calls};
    FakePrivateCopies privateCopies{calls};
    FakeTermination termination;

    /// The calls that begin with `prefix`.
    [[nodiscard]] CallList callsOf(const std::string& prefix) const;

  private:
    Platform::SystemPorts ports_;
    ScopedSystemPorts scope_;
};

}  // namespace TestSupport
