// Distant objects over GNUstep's Foundation, with a server in a separate process.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Darwin/DarwinDistantObjects.h"
#include "Platform/Darwin/FoundationBridge.h"

namespace {

using Platform::Darwin::DarwinDistantObjects;

/// A process that has registered an object under `name`; ended when it goes out of scope.
class Server {
  public:
    explicit Server(const char* name) {
        int input[2];
        int output[2];
        EXPECT_EQ(::pipe2(input, O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(output, O_CLOEXEC), 0);
        pid_ = ::fork();
        if (pid_ == 0) {
            ::dup2(input[0], STDIN_FILENO);
            ::dup2(output[1], STDOUT_FILENO);
            ::execl(DISTANT_OBJECT_SERVER, DISTANT_OBJECT_SERVER, name, nullptr);
            ::_exit(127);
        }
        ::close(input[0]);
        ::close(output[1]);
        keepsAlive_ = input[1];
        std::string line(64, '\0');
        const ssize_t length = ::read(output[0], line.data(), line.size());
        line.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
        EXPECT_EQ(line, "registered\n");
        ::close(output[0]);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() { end(); }

    void end() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
            ::close(keepsAlive_);
            pid_ = -1;
        }
    }

  private:
    pid_t pid_ = -1;
    int keepsAlive_ = -1;
};

TEST(DarwinDistantObjects, HaveNoProxyOfANameThatNobodyRegistered) {
    EXPECT_EQ(DarwinDistantObjects().rootProxy("com.norvik.tests.nobody"), nullptr);
    EXPECT_EQ(DarwinDistantObjects().rootProxy(""), nullptr);
    EXPECT_EQ(DarwinDistantObjects().rootProxy("\xff"), nullptr);
}

TEST(DarwinDistantObjects, HaveAValidProxyWhileTheProcessLives) {
    const Server server("com.norvik.tests.living");
    const auto proxy = DarwinDistantObjects().rootProxy("com.norvik.tests.living");
    ASSERT_TRUE(proxy);
    proxy->addCommonRequestModes();
    EXPECT_TRUE(proxy->isConnectionValid());
    EXPECT_TRUE(proxy->isSendPortValid());
    EXPECT_TRUE(proxy->isReceivePortValid());
}

TEST(DarwinDistantObjects, HaveNoProxyOnceTheProcessIsGone) {
    Server server("com.norvik.tests.ending");
    const auto before = DarwinDistantObjects().rootProxy("com.norvik.tests.ending");
    ASSERT_TRUE(before);
    server.end();
    EXPECT_EQ(DarwinDistantObjects().rootProxy("com.norvik.tests.ending"), nullptr);
}

// The news comes by way of the run loop.
TEST(DarwinDistantObjects, HaveNoValidConnectionOnceTheProcessIsGone) {
    const Platform::Darwin::Pool pool;
    Server server("com.norvik.tests.leaving");
    const auto proxy = DarwinDistantObjects().rootProxy("com.norvik.tests.leaving");
    ASSERT_TRUE(proxy);
    proxy->addCommonRequestModes();
    server.end();
    for (int round = 0; round < 20000 && proxy->isConnectionValid(); ++round) {
        [[NSRunLoop currentRunLoop] runUntilDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
    }
    EXPECT_FALSE(proxy->isConnectionValid());
    EXPECT_FALSE(proxy->isSendPortValid());
}

}  // namespace
