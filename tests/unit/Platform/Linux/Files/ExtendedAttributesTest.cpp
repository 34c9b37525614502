// Attributes while the kernel answers in another way than usual.
#include "Platform/Linux/Files/ExtendedAttributes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <functional>
#include <string>

#include "NativeFiles.h"
#include "Platform/Posix/Descriptor.h"
#include "support/Scratch.h"
#include "support/SystemCalls.h"

namespace PlatformTests {
namespace {

constexpr auto kAttribute = "user.sentrel.test";

/// What one kind of call is answered: by its number among its kind, from 1.
using Answer = std::function<int(int number)>;

class ExtendedAttributes : public testing::Test {
  protected:
    ExtendedAttributes() {
        makeFile(scratch_.path("file"));
        makeFile(scratch_.path("copy"));
        EXPECT_EQ(setAttribute(scratch_.path("file"), kAttribute, "value", 5), 0);
    }
    /// The copy's failure, while such calls are answered so.
    [[nodiscard]] int copyWhile(long call, const Answer& answer) {
        const Platform::Posix::Descriptor file(::open(scratch_.path("file").c_str(), O_RDONLY));
        const Platform::Posix::Descriptor copy(::open(scratch_.path("copy").c_str(), O_RDONLY));
        int number = 0;
        int failure = -1;
        askAboutEachCall([&](long each) { return each == call ? answer(++number) : 0; },
                         [&] { failure = Platform::Linux::copyExtendedAttributes(file.get(), copy.get()); });
        EXPECT_GT(number, 0);
        return failure;
    }
    /// The attribute's value, or "none".
    [[nodiscard]] std::string copied() const {
        char value[16] = {};
        const ssize_t length = attribute(scratch_.path("copy"), kAttribute, value, sizeof value);
        return length < 0 ? "none" : std::string(value, static_cast<std::size_t>(length));
    }

    /// On a disk: not every kernel keeps such attributes in memory.
    Scratch scratch_{Scratch::currentFolder()};
};

/// Each second call; a value is asked for its size first.
Answer eachSecond(int code) {
    return [code](int number) { return number % 2 == 0 ? code : 0; };
}

TEST_F(ExtendedAttributes, WhoseValueCannotBeReadAreAFailure) {
    EXPECT_EQ(copyWhile(SYS_fgetxattr, [](int) { return EIO; }), EIO);
    EXPECT_EQ(copyWhile(SYS_fgetxattr, eachSecond(EIO)), EIO);
    EXPECT_EQ(copied(), "none");
}

TEST_F(ExtendedAttributes, WhoseValueMayNotBeReadArePassedOver) {
    EXPECT_EQ(copyWhile(SYS_fgetxattr, [](int) { return EACCES; }), 0);
    EXPECT_EQ(copied(), "none");
}

TEST_F(ExtendedAttributes, ThatGoMeanwhileArePassedOver) {
    EXPECT_EQ(copyWhile(SYS_fgetxattr, [](int) { return ENODATA; }), 0);
    EXPECT_EQ(copyWhile(SYS_fgetxattr, eachSecond(ENODATA)), 0);
    EXPECT_EQ(copied(), "none");
}

TEST_F(ExtendedAttributes, ThatGrowMeanwhileAreReadAgain) {
    EXPECT_EQ(copyWhile(SYS_fgetxattr, [](int number) { return number == 2 ? ERANGE : 0; }), 0);
    EXPECT_EQ(copied(), "value");
}

TEST_F(ExtendedAttributes, WhoseNamesGrowMeanwhileAreListedAgain) {
    EXPECT_EQ(copyWhile(SYS_flistxattr, [](int number) { return number == 1 || number == 3 ? ERANGE : 0; }),
              0);
    EXPECT_EQ(copied(), "value");
}

TEST_F(ExtendedAttributes, ThatMayNotBeSetArePassedOver) {
    for (const int code : {EPERM, EACCES, ENOTSUP}) {
        EXPECT_EQ(copyWhile(SYS_fsetxattr, [code](int) { return code; }), 0);
    }
    EXPECT_EQ(copyWhile(SYS_fsetxattr, [](int) { return ENOSPC; }), ENOSPC);
    EXPECT_EQ(copied(), "none");
}

TEST(NoExtendedAttributes, AreListedOnceWhateverFailedBefore) {
    const Scratch scratch(Scratch::currentFolder());
    makeFile(scratch.path("file"));
    const Platform::Posix::Descriptor file(::open(scratch.path("file").c_str(), O_RDONLY));
    errno = ERANGE;
    EXPECT_EQ(Platform::Linux::copyExtendedAttributes(file.get(), file.get()), 0);
}

}  // namespace
}  // namespace PlatformTests
