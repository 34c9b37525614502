#include "Platform/FolderNames.h"

#include <gtest/gtest.h>

namespace {

using enum Platform::StandardFolder;

TEST(FolderNames, AreThoseOfEveryMac) {
    Platform::FolderNames names;
    EXPECT_EQ(names.folder(applications).path(), "/Applications");
    EXPECT_EQ(names.folder(applicationSupport).path(), "/Library/Application Support");
    EXPECT_EQ(names.folder(users).path(), "/Users");
}

TEST(FolderNamesOnly, KnowTheFoldersAndNoOtherService) {
    const Platform::SystemPorts& ports = Platform::folderNamesOnly();
    EXPECT_EQ(static_cast<Platform::StandardFolders&>(ports.folders).folder(users).path(), "/Users");
    EXPECT_FALSE(ports.log || ports.files || ports.tasks || ports.processes || ports.users ||
                 ports.kernelExtensions || ports.authorization || ports.serviceManagement || ports.xpc ||
                 ports.bundles || ports.clock || ports.dispatch || ports.distantObjects ||
                 ports.codeModules || ports.privateCopies || ports.termination);
}

TEST(PortDeathTest, EndsTheProcessThatUsesAServiceItDoesWithout) {
    const Platform::SystemPorts& ports = Platform::folderNamesOnly();
    EXPECT_DEATH(static_cast<void>(ports.clock->now()),
                 "^Fatal error: This program does not use that service\\.\n$");
    EXPECT_DEATH(static_cast<void>(static_cast<Platform::Clock&>(ports.clock)),
                 "^Fatal error: This program does not use that service\\.\n$");
}

TEST(PortDeathTest, EndsTheProcessThatUsesServicesBeforeThereAreAny) {
    EXPECT_DEATH(
        {
            Platform::SystemPorts::setCurrent(nullptr);
            static_cast<void>(Platform::SystemPorts::current());
        },
        "^Fatal error: The system's services were used before main set them\\.\n$");
}

}  // namespace
