// The window's library, as its user meets it: on an X server, with keyboard and mouse.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "ProbeProcess.h"
#include "ShownWindow.h"

namespace WindowTests {
namespace {

TEST_F(Window, WithoutFrameworksNoLockIsAsked) {
    ProbeProcess probe(display_.name(), texts({"frameworks=/nowhere"}));
    ASSERT_TRUE(probe.hears("launched"));
    probe.tell("authorize");
    EXPECT_TRUE(probe.hears("authorized"));
}

TEST_F(Window, UsesTheMakersFrameworksAndPassesOverABrokenOne) {
    const std::filesystem::path broken =
        std::filesystem::path(testing::TempDir()) / ("broken-frameworks-" + std::to_string(getpid()));
    for (const std::string name : {"NorvikCustomUI", "NorvikGuiCommon"}) {
        const std::filesystem::path framework = broken / (name + ".framework");
        const std::filesystem::path current = framework / "Versions" / "Current";
        std::filesystem::create_directories(current / "Resources");
        std::ofstream(current / name) << "no code";
        std::ofstream(current / "Resources" / "Info-gnustep.plist")
            << "{ NSExecutable = \"" << name << "\"; }";
        std::filesystem::create_symlink(current / name, framework / name);
        std::filesystem::create_symlink(current / "Resources", framework / "Resources");
    }
    ProbeProcess probe(display_.name(), texts({"frameworks=" + broken.string(),
                                               std::string("frameworks=") + MAKER_FRAMEWORKS}));
    ASSERT_TRUE(probe.hears("launched"));
    probe.tell("authorize");
    EXPECT_TRUE(probe.hears("not authorized"));
    probe.tell("alert OK|Message|Informative");
    EXPECT_TRUE(probe.hears("maker's alert: OK, Message, Informative"));
    EXPECT_TRUE(probe.hears("answered"));
    probe.tell("alert none|Message|Informative");
    EXPECT_TRUE(probe.hears("no alert"));
    std::filesystem::remove_all(broken);
}

TEST_F(Window, ALockThatCannotBeMadeStaysLocked) {
    for (const char* fault : {"absent", "raises"}) {
        ASSERT_EQ(setenv("MAKER_LOCK", fault, 1), 0);
        ProbeProcess probe(display_.name(), texts({std::string("frameworks=") + MAKER_FRAMEWORKS}));
        unsetenv("MAKER_LOCK");
        ASSERT_TRUE(probe.hears("launched"));
        probe.tell("authorize");
        const bool isLocked = probe.hears("not authorized");
        EXPECT_TRUE(isLocked) << fault << ": " << (isLocked ? 0 : probe.status());
    }
}

}  // namespace
}  // namespace WindowTests
