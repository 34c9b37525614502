// How a service's sockets are found: a client's by the service's name, a helper's among the descriptors that
// process 1 handed over.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

#include "FakeProcessOne.h"
#include "Platform/Linux/XPC/LinuxXPC.h"
#include "XPCTestService.h"

namespace {

using namespace XPCTests;
using namespace Platform::Linux;
using Fields = FakeProcessOne::Fields;
using Lines = std::vector<std::string>;

const std::vector<std::string> kClients{R"(identifier "com.norvik.other" and anchor apple generic)",
                                        R"(identifier "com.norvik.test" and anchor apple generic)"};

std::vector<Platform::XPCValue> words(const std::string& text) {
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(text);
    return arguments;
}

/// Descriptors and environment as process 1 leaves them to a job: socket after socket from number 3 on. To be
/// made before anything else that opens descriptors; puts back what it found.
class HandedOver {
  public:
    static constexpr int kCount = 3;

    explicit HandedOver(const char* names) {
        for (int index = 0; index < kCount; ++index) {
            const int number = kFirstServiceDescriptor + index;
            saved_[index] = ::fcntl(number, F_DUPFD_CLOEXEC, 100);
            const std::string path = folder_.path() + "/" + std::to_string(number);
            // Away from the number first, which the socket may have got itself.
            const Platform::Posix::Descriptor elsewhere(
                ::fcntl(listeningSocket(path, SOCK_STREAM).get(), F_DUPFD_CLOEXEC, 100));
            EXPECT_EQ(::dup2(elsewhere.get(), number), number);
        }
        if (names == nullptr) {
            ::unsetenv("MACH_SERVICE_NAMES");
        } else {
            ::setenv("MACH_SERVICE_NAMES", names, 1);
        }
    }
    HandedOver(const HandedOver&) = delete;
    HandedOver& operator=(const HandedOver&) = delete;
    ~HandedOver() {
        ::unsetenv("MACH_SERVICE_NAMES");
        for (int index = 0; index < kCount; ++index) {
            ::close(kFirstServiceDescriptor + index);
            if (saved_[index] >= 0) {
                ::dup2(saved_[index], kFirstServiceDescriptor + index);
                ::close(saved_[index]);
            }
        }
    }

    [[nodiscard]] const std::string& folder() const { return folder_.path(); }

  private:
    ScratchFolder folder_;
    int saved_[kCount] = {-1, -1, -1};
};

/// Serves one client of the socket `number`, which sends one message to whatever listens as `service`; what
/// became of it.
Lines outcomeOfMessage(const HandedOver& handed, const std::string& number, const std::string& service,
                       const MacServices& services) {
    LinuxXPC xpc(services, handed.folder());
    const auto listener = xpc.makeListener(service, kClients);
    if (listener == nullptr) {
        return {"no listener"};
    }
    Journal journal;
    // Keeps the listener from going idle before it has met its client.
    std::shared_ptr<void> work = listener->transaction();
    const auto connection = xpc.makeConnection(number, 0);
    connection->setRemoteObjectInterface(testInterface());
    connection->resume();
    connection->remoteObjectProxy()->message("say:", words("hello"), {});
    std::thread server([&] {
        listener->run(
            [&](const std::shared_ptr<Platform::XPCConnection>& accepted, const Platform::XPCPeer&) {
                accepted->setExportedObject(testInterface(), std::make_shared<TestObject>(journal));
                return true;
            },
            [&](const std::string& why) { journal.add(why.substr(why.find(": ") + 2)); }, 0);
    });
    const Lines lines = journal.waitFor(1);
    connection->invalidate();
    work.reset();
    server.join();
    return lines;
}

TEST(ServiceLookup, AConnectionGoesToTheSocketWithTheServicesName) {
    TestService service;
    service.start();
    const std::string& path = service.socketPath();
    const std::size_t slash = path.rfind('/');
    LinuxXPC xpc(MacServices("/nonexistent"), path.substr(0, slash));
    const auto connection = xpc.makeConnection(path.substr(slash + 1), Platform::kXPCConnectionPrivileged);
    connection->setRemoteObjectInterface(testInterface());
    connection->resume();
    connection->remoteObjectProxy()->message("say:", words("hello"), {});
    EXPECT_EQ(service.received.waitFor(1), Lines{"say hello"});
    connection->invalidate();
}

TEST(ServiceLookup, AConnectionNamesItsServiceInErrors) {
    const ScratchFolder folder;
    LinuxXPC xpc(MacServices("/nonexistent"), folder.path());
    const auto connection = xpc.makeConnection("com.norvik.none", 0);
    connection->setRemoteObjectInterface(testInterface());
    connection->resume();
    std::string failure;
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(Base::URL::fileURL("/x"));
    connection
        ->synchronousRemoteObjectProxy([&](const Platform::Error& error) { failure = error.description; })
        ->message("ask:", std::move(arguments), [](const std::optional<Platform::Error>&) {});
    EXPECT_NE(failure.find("com.norvik.none"), std::string::npos) << failure;
}

TEST(ServiceLookup, TheListenerTakesTheDescriptorAtItsNamesPlace) {
    const HandedOver handed("a:bb:c");
    const FakeProcessOne one(Fields{"0", "com.norvik.test"});
    EXPECT_EQ(outcomeOfMessage(handed, "3", "a", one.services()), Lines{"say hello"});
}

TEST(ServiceLookup, TheSecondAndTheLastNameHaveTheirOwnDescriptors) {
    const HandedOver handed("a:bb:c");
    const FakeProcessOne one(Fields{"0", "com.norvik.test"});
    EXPECT_EQ(outcomeOfMessage(handed, "4", "bb", one.services()), Lines{"say hello"});
    EXPECT_EQ(outcomeOfMessage(handed, "5", "c", one.services()), Lines{"say hello"});
}

TEST(ServiceLookup, NoListenerForANameThatWasNotHandedOver) {
    const HandedOver handed("a:bb:c");
    LinuxXPC xpc;
    for (const std::string name : {"b", "bbb", "a:bb", "d"}) {
        EXPECT_EQ(xpc.makeListener(name, kClients), nullptr) << name;
    }
}

TEST(ServiceLookup, NoListenerForAProcessThatLaunchdDidNotStart) {
    const HandedOver handed(nullptr);
    EXPECT_EQ(LinuxXPC().makeListener("a", kClients), nullptr);
}

TEST(ServiceLookup, NoListenerOnADescriptorThatDoesNotListen) {
    const HandedOver handed("a:bb:c");
    const Platform::Posix::Descriptor deaf(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::dup2(deaf.get(), 3), 3);
    ASSERT_EQ(::dup2(STDOUT_FILENO, 4), 4);
    EXPECT_EQ(LinuxXPC().makeListener("a", kClients), nullptr);
    EXPECT_EQ(LinuxXPC().makeListener("bb", kClients), nullptr);
}

TEST(ServiceLookup, ProcessOneIsAskedWhoThePeerIs) {
    const HandedOver handed("a");
    const FakeProcessOne one(Fields{"0", "com.norvik.test"});
    EXPECT_EQ(outcomeOfMessage(handed, "3", "a", one.services()), Lines{"say hello"});
    EXPECT_EQ(one.requests(), (std::vector<Fields>{{"identify", std::to_string(::getpid())}}));
}

TEST(ServiceLookup, APeerWithoutAnIdentityIsRefused) {
    for (const Fields& answer :
         {Fields{"1", "com.norvik.test"}, Fields{"0"}, Fields{"0", "", "com.norvik.test"}}) {
        const HandedOver handed("a");
        const FakeProcessOne one(answer);
        EXPECT_EQ(outcomeOfMessage(handed, "3", "a", one.services()),
                  Lines{"its code has no identity that can be trusted"});
    }
    const HandedOver handed("a");
    EXPECT_EQ(outcomeOfMessage(handed, "3", "a", MacServices("/nonexistent")),
              Lines{"its code has no identity that can be trusted"});
}

TEST(ServiceLookup, APeerOfAnotherIdentityIsRefused) {
    const HandedOver handed("a");
    const FakeProcessOne one(Fields{"0", "com.norvik.stranger"});
    EXPECT_EQ(outcomeOfMessage(handed, "3", "a", one.services()),
              Lines{"its identity is not an authorized client's"});
}

}  // namespace
