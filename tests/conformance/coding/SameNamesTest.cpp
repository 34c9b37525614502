#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "CodingSamples.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "MakerBundle.h"
#include "Platform/Darwin/XPC/DarwinXPC.h"
#include "SystemArchives.h"

// A framework of the maker's that has record classes of the names that the program's own have. The window
// loads such frameworks.

namespace {

using namespace CodingSamples;
using InstallCommon::allowedCommandListClasses;

void registerOurs() {
    Platform::Darwin::DarwinXPC().registerClasses(allowedCommandListClasses());
}

Base::CodedObjectList everySample() {
    Base::CodedObjectList list;
    for (const Sample& sample : samples()) {
        list.push_back(sample.make());
    }
    return list;
}

TEST(ClassesOfTheSameNames, AreThoseThatWereRegisteredFirst) {
    registerOurs();
    ASSERT_TRUE(MakerBundle::load(MAKER_RECORDS));
    for (const Base::CodedClass* coded : allowedCommandListClasses().objects) {
        EXPECT_TRUE(MakerBundle::isCarrier(std::string(coded->runtimeName))) << coded->runtimeName;
    }
}

TEST(ClassesOfTheSameNames, LeaveTheListsAsTheyAre) {
    registerOurs();
    ASSERT_TRUE(MakerBundle::load(MAKER_RECORDS));
    std::string refusal;
    const auto arrived =
        SystemArchives::read(SystemArchives::archive(everySample()), allowedCommandListClasses(), refusal);
    ASSERT_TRUE(arrived.has_value()) << refusal;
    EXPECT_EQ(archiveOf(*arrived), archiveOf(everySample()));
}

// Why main registers before it loads anything.
TEST(ClassesOfTheSameNames, EndTheProcessWhenTheyWereThereBefore) {
    // In a process of its own: in this one an earlier test may have registered ours.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            static_cast<void>(MakerBundle::load(MAKER_RECORDS));
            registerOurs();
        },
        "The class [A-Za-z]*Info exists already, from elsewhere");
}

}  // namespace
