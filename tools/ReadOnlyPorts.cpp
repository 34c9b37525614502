#include "ReadOnlyPorts.h"

#include "Base/FatalError.h"

namespace Tools {

namespace {

using Base::URL;
using Platform::Error;

[[noreturn]] void refuse() {
    Base::fatalError("This program only reads the catalogue.");
}

class NoLog final : public Platform::SystemLog {
    void log(std::string_view /*text*/) override { refuse(); }
};

class FolderNames final : public Platform::FileManager {
    std::optional<Error> createDirectory(const URL& /*directory*/, bool /*withIntermediates*/) override {
        refuse();
    }
    std::optional<bool> hasVisibleEntries(const URL& /*directory*/, Error& /*error*/) override { refuse(); }
    std::optional<Error> removeItem(const URL& /*item*/) override { refuse(); }
    std::optional<Error> copyItem(const URL& /*source*/, const URL& /*destination*/) override { refuse(); }
    bool itemExists(const URL& /*item*/) override { refuse(); }
    std::optional<Platform::FileIdentity> identity(const URL& /*item*/) override { refuse(); }
    int setMode(const URL& /*item*/, std::uint16_t /*mode*/) override { refuse(); }
    int setOwner(const URL& /*item*/, std::uint32_t /*owner*/, std::uint32_t /*group*/) override { refuse(); }
    void setOwnerOfContents(const URL& /*directory*/, std::uint32_t /*owner*/, std::uint32_t /*group*/,
                            const std::function<void(const URL&, int)>& /*failed*/) override {
        refuse();
    }
    URL localDirectory(Platform::SearchPathDirectory directory) override {
        switch (directory) {
            case Platform::SearchPathDirectory::applications:
                return URL::fileURL("/Applications");
            case Platform::SearchPathDirectory::applicationSupport:
                return URL::fileURL("/Library/Application Support");
            case Platform::SearchPathDirectory::users:
                return URL::fileURL("/Users");
        }
        refuse();
    }
};

class NoTasks final : public Platform::TaskRunner {
    std::unique_ptr<Platform::Task> launch(
        const std::string& /*path*/, const std::optional<std::vector<std::string>>& /*arguments*/) override {
        refuse();
    }
};

class NoProcesses final : public Platform::ProcessTable {
    int listPids(Platform::PidListType /*type*/, std::uint32_t /*user*/,
                 std::span<std::int32_t> /*pids*/) override {
        refuse();
    }
    int effectiveUser(std::int32_t /*pid*/, std::uint32_t& /*user*/) override { refuse(); }
    int name(std::int32_t /*pid*/, std::span<char> /*name*/) override { refuse(); }
    int path(std::int32_t /*pid*/, std::span<char> /*path*/) override { refuse(); }
    int kill(std::int32_t /*pid*/, int /*signal*/) override { refuse(); }
};

class NoUsers final : public Platform::Users {
    void rewind() override { refuse(); }
    std::optional<Entry> next() override { refuse(); }
    void close() override { refuse(); }
    std::uint32_t realUserId() override { refuse(); }
    int setEffectiveUserId(std::uint32_t /*uid*/) override { refuse(); }
};

class NoKernelExtensions final : public Platform::KernelExtensions {
    std::int32_t unload(const std::string& /*bundleIdentifier*/) override { refuse(); }
};

class NoAuthorization final : public Platform::Authorization {
    std::unique_ptr<Platform::SFAuthorization> create() override { refuse(); }
};

class NoServiceManagement final : public Platform::ServiceManagement {
    std::optional<Error> blessJob(Platform::LaunchdDomain /*domain*/, const std::string& /*label*/,
                                  const Platform::AuthorizationReference& /*authorization*/) override {
        refuse();
    }
};

class NoXPC final : public Platform::XPC {
    void registerClasses(const Base::AllowedClasses& /*classes*/) override { refuse(); }
    std::shared_ptr<Platform::XPCConnection> makeConnection(const std::string& /*machServiceName*/,
                                                            std::uint32_t /*options*/) override {
        refuse();
    }
    std::unique_ptr<Platform::XPCListener> makeListener(
        const std::string& /*machServiceName*/,
        const std::vector<std::string>& /*clientRequirements*/) override {
        refuse();
    }
};

class NoBundles final : public Platform::Bundles {
    std::unique_ptr<Platform::Bundle> open(const URL& /*location*/) override { refuse(); }
    std::unique_ptr<Platform::Bundle> mainBundle() override { refuse(); }
};

class NoClock final : public Platform::Clock {
    std::uint64_t now() override { refuse(); }
    void sleep(std::uint32_t /*seconds*/) override { refuse(); }
};

class NoDispatch final : public Platform::Dispatch {
    std::unique_ptr<Platform::Semaphore> makeSemaphore(std::int64_t /*value*/) override { refuse(); }
    std::unique_ptr<Platform::Queue> makeConcurrentQueue(const std::string& /*label*/) override { refuse(); }
    std::unique_ptr<Platform::Queue> makeSerialQueue(const std::string& /*label*/) override { refuse(); }
    std::unique_ptr<Platform::Timer> makeTimer(std::function<void()> /*handler*/) override { refuse(); }
};

class NoDistantObjects final : public Platform::DistantObjects {
    std::shared_ptr<Platform::DistantObject> rootProxy(const std::string& /*name*/) override { refuse(); }
};

class NoCodeModules final : public Platform::CodeModules {
    std::optional<Error> load(const URL& /*module*/, const std::string& /*symbol*/,
                              void*& /*address*/) override {
        refuse();
    }
};

class NoPrivateCopies final : public Platform::PrivateCopies {
    std::unique_ptr<Platform::PrivateCopy> copy(const URL& /*file*/, const URL& /*destination*/,
                                                std::uint64_t /*atMost*/, Error& /*error*/) override {
        refuse();
    }
    std::optional<Error> removeFolder(const URL& /*folder*/) override { refuse(); }
};

class NoTermination final : public Platform::Termination {
    void onRequest(std::function<void()> /*requested*/) override { refuse(); }
};

struct Owner {
    NoLog log;
    FolderNames files;
    NoTasks tasks;
    NoProcesses processes;
    NoUsers users;
    NoKernelExtensions kernelExtensions;
    NoAuthorization authorization;
    NoServiceManagement serviceManagement;
    NoXPC xpc;
    NoBundles bundles;
    NoClock clock;
    NoDispatch dispatch;
    NoDistantObjects distantObjects;
    NoCodeModules codeModules;
    NoPrivateCopies privateCopies;
    NoTermination termination;
    Platform::SystemPorts ports{
        log, files,   tasks, processes, users,          kernelExtensions, authorization, serviceManagement,
        xpc, bundles, clock, dispatch,  distantObjects, codeModules,      privateCopies, termination};
};

}  // namespace

const Platform::SystemPorts& readOnlyPorts() {
    static Owner owner;
    return owner.ports;
}

}  // namespace Tools
