#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "Base/Archive/KeyedUnarchiver.h"
#include "CodingFaults.h"
#include "CodingSamples.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "SystemArchives.h"

// What strangers may send: the carriers refuse what the program's own unarchiver refuses, and take what it
// takes.

namespace {

using namespace CodingSamples;
using namespace InstallCommon;
using CodingFaultTests::Fault;
using CodingFaultTests::faults;
using SystemArchives::FailurePolicy;

class FaultyArchive : public testing::TestWithParam<Fault> {};

TEST_P(FaultyArchive, IsRefusedByOurs) {
    std::string refusal;
    EXPECT_FALSE(
        Base::unarchivedArray(GetParam().archive(), allowedCommandListClasses(), refusal).has_value());
}

TEST_P(FaultyArchive, IsRefusedByTheSystemsCoderWithCarriers) {
    std::string refusal;
    EXPECT_FALSE(
        SystemArchives::read(GetParam().archive(), allowedCommandListClasses(), refusal).has_value());
    EXPECT_NE(refusal.find(GetParam().complaint), std::string::npos) << refusal;
    EXPECT_FALSE(refusal.empty());
}

TEST_P(FaultyArchive, IsRefusedByACoderThatKeepsErrors) {
    std::string refusal;
    EXPECT_FALSE(SystemArchives::read(GetParam().archive(), allowedCommandListClasses(), refusal,
                                      FailurePolicy::keepsError)
                     .has_value());
    EXPECT_NE(refusal.find(GetParam().complaint), std::string::npos) << refusal;
}

INSTANTIATE_TEST_SUITE_P(Every, FaultyArchive, testing::ValuesIn(faults()),
                         [](const auto& info) { return info.param.name; });

}  // namespace
