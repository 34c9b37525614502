#include "Platform/Linux/Files/LinuxStandardFolders.h"

#include <gtest/gtest.h>

#include "support/Scratch.h"

namespace PlatformTests {

namespace {

using Platform::Linux::LinuxStandardFolders;
using enum Platform::StandardFolder;

TEST(StandardFolders, AreCreatedWhenTheyAreMissing) {
    const Scratch scratch;
    LinuxStandardFolders folders(scratch.path());
    EXPECT_EQ(folders.folder(applications), scratch.url("Applications"));
    EXPECT_EQ(folders.folder(applicationSupport), scratch.url("Library/Application Support"));
    EXPECT_EQ(folders.folder(users), scratch.url("Users"));
    EXPECT_TRUE(exists(scratch.path("Applications")));
    EXPECT_TRUE(exists(scratch.path("Library/Application Support")));
    EXPECT_TRUE(exists(scratch.path("Users")));
}

TEST(StandardFolders, AreNamedEvenIfTheyCannotBeCreated) {
    const Scratch scratch;
    makeFile(scratch.path("file"));
    LinuxStandardFolders folders(scratch.path("file"));
    EXPECT_EQ(folders.folder(users), scratch.url("file/Users"));
}

}  // namespace

}  // namespace PlatformTests
