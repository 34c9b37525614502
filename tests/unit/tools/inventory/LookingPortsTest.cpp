#include "LookingPorts.h"

#include <gtest/gtest.h>

#include <csignal>

#include "support/FakeMac.h"

namespace {

class LookingPorts : public testing::Test {
  protected:
    TestSupport::FakeMac mac;
    Inventory::LookingPorts looking{Platform::SystemPorts::current()};
    const Platform::SystemPorts& ports = looking.ports();
};

using LookingPortsDeathTest = LookingPorts;

TEST_F(LookingPorts, HandQuestionsOn) {
    mac.users.entries = {{501, "/Users/alice"}};
    mac.users.real = 501;
    mac.processes.processes = {{7, 501, "name", "/path"}};
    mac.bundles.install("/App.app", "1", "2");
    mac.tasks.results["/bin/launchctl print system"] = {"text", "", 3, Platform::TerminationReason::exit};

    ports.users->rewind();
    EXPECT_EQ(ports.users->next()->uid, 501U);
    EXPECT_FALSE(ports.users->next());
    ports.users->rewind();
    EXPECT_EQ(ports.users->next()->uid, 501U);
    ports.users->close();
    EXPECT_EQ(mac.callsOf("endpwent").size(), 1U);
    EXPECT_EQ(ports.users->realUserId(), 501U);
    std::uint32_t user = 0;
    std::array<std::int32_t, 4> pids{};
    std::array<char, 16> text{};
    EXPECT_EQ(ports.processes->listPids(Platform::PidListType::all, 0, pids), 1);
    EXPECT_EQ(ports.processes->effectiveUser(7, user), 1);
    EXPECT_EQ(user, 501U);
    EXPECT_EQ(ports.processes->name(7, text), 4);
    EXPECT_EQ(ports.processes->path(7, text), 5);
    EXPECT_EQ(ports.bundles->open(Base::URL::fileURL("/App.app"))->infoString("CFBundleVersion"), "2");
    EXPECT_EQ(ports.clock->now(), mac.clock.present);
    const auto printing = ports.tasks->launch("/bin/launchctl", {{"print", "system"}});
    ASSERT_NE(printing, nullptr);
    printing->waitUntilExit();
    EXPECT_EQ(printing->terminationStatus(), 3);
    EXPECT_NE(ports.tasks->launch("/bin/launchctl", {{"print-disabled", "system"}}), nullptr);
    EXPECT_EQ(ports.folders->folder(Platform::StandardFolder::users).path(), "/Users");
    EXPECT_EQ(mac.folders.usersQuestions, 0);
}

TEST_F(LookingPortsDeathTest, EndTheProcessOverAnythingElse) {
    const char* const words = "This program only looks\\.\n";
    const char* const other = "This program does not use that service.";
    EXPECT_DEATH(static_cast<void>(ports.tasks->launch("/bin/launchctl", {{"bootout", "system"}})), words);
    EXPECT_DEATH(static_cast<void>(ports.tasks->launch("/bin/launchctl", std::nullopt)), words);
    EXPECT_DEATH(static_cast<void>(ports.tasks->launch("/bin/launchctl", {std::vector<std::string>{}})),
                 words);
    EXPECT_DEATH(static_cast<void>(ports.tasks->launch("/bin/sh", {{"print"}})), words);
    EXPECT_DEATH(static_cast<void>(ports.processes->kill(7, SIGTERM)), words);
    EXPECT_DEATH(static_cast<void>(ports.users->setEffectiveUserId(0)), words);
    EXPECT_DEATH(static_cast<void>(ports.kernelExtensions->unload("x")), other);
    EXPECT_DEATH(static_cast<void>(ports.xpc->makeConnection("x", 0)), other);
    EXPECT_DEATH(static_cast<void>(ports.files->removeItem(Base::URL::fileURL("/x"))), other);
}

}  // namespace
