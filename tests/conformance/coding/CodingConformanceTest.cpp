#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Archive/KeyedUnarchiver.h"
#include "CodingSamples.h"
#include "InstallCommon/Commands/LaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "SystemArchives.h"

// The commands and records in the system's coders: what goes in comes out, on either side of the wire.

namespace {

using namespace CodingSamples;
using InstallCommon::allowedCommandListClasses;
using SystemArchives::FailurePolicy;

// What the system's coder and the carriers make of an archive, in the program's own form.
Bytes asTheSystemReads(const Bytes& archive, FailurePolicy policy = FailurePolicy::raises) {
    std::string refusal;
    const auto objects = SystemArchives::read(archive, allowedCommandListClasses(), refusal, policy);
    EXPECT_TRUE(objects.has_value()) << refusal;
    return objects ? archiveOf(*objects) : Bytes();
}

Bytes asWeRead(const Bytes& archive) {
    std::string refusal;
    const auto objects = Base::unarchivedArray(archive, allowedCommandListClasses(), refusal);
    EXPECT_TRUE(objects.has_value()) << refusal;
    return objects ? archiveOf(*objects) : Bytes();
}

bool holds(const Bytes& archive, std::string_view text) {
    return std::search(archive.begin(), archive.end(), text.begin(), text.end()) != archive.end();
}

Base::CodedObjectList everySample() {
    Base::CodedObjectList list;
    for (const Sample& sample : samples()) {
        list.push_back(sample.make());
    }
    return list;
}

class SystemCoding : public testing::TestWithParam<Sample> {
  protected:
    [[nodiscard]] static Base::CodedObjectList list() { return listOf(GetParam().make()); }
    const Bytes ours_ = archiveOf(list());
};

TEST_P(SystemCoding, ComesBackFromTheSystemsCoder) {
    const Bytes theirs = SystemArchives::archive(list());
    EXPECT_NE(theirs, ours_) << "the system must have written it itself";
    EXPECT_EQ(asTheSystemReads(theirs), ours_);
}

TEST_P(SystemCoding, TheSystemReadsOurArchive) {
    EXPECT_EQ(asTheSystemReads(ours_), ours_);
}

TEST_P(SystemCoding, TheSystemReadsOurArchiveKeepingErrors) {
    EXPECT_EQ(asTheSystemReads(ours_, FailurePolicy::keepsError), ours_);
}

TEST_P(SystemCoding, WeReadTheSystemsArchive) {
    EXPECT_EQ(asWeRead(SystemArchives::archive(list())), ours_);
}

TEST_P(SystemCoding, TheSystemsArchiveCarriesTheRuntimeName) {
    EXPECT_TRUE(holds(SystemArchives::archive(list()), GetParam().make()->codedClass().runtimeName));
}

TEST_P(SystemCoding, TheSystemsArchiveNamesNoOtherClassOfTheProgram) {
    EXPECT_FALSE(holds(SystemArchives::archive(list()), "PlatformDarwinCarrier"));
}

INSTANTIATE_TEST_SUITE_P(Every, SystemCoding, testing::ValuesIn(samples()),
                         [](const auto& info) { return info.param.name; });

TEST(SystemCodingOfLists, KeepsTheOrderOfManyObjects) {
    EXPECT_EQ(asTheSystemReads(SystemArchives::archive(everySample())), archiveOf(everySample()));
    EXPECT_EQ(asTheSystemReads(archiveOf(everySample())), archiveOf(everySample()));
}

TEST(SystemCodingOfLists, TakesTheEmptyList) {
    EXPECT_EQ(asTheSystemReads(SystemArchives::archive({})), archiveOf({}));
}

TEST(SystemCodingOfCommands, DoesNotCarryTheWeight) {
    auto command = std::make_unique<InstallCommon::KillProcessCommand>("Closing...", "process");
    command->setWeight(5);
    std::string refusal;
    const auto objects = SystemArchives::read(SystemArchives::archive(listOf(std::move(command))),
                                              allowedCommandListClasses(), refusal);
    ASSERT_TRUE(objects.has_value()) << refusal;
    const auto* const decoded = dynamic_cast<const InstallCommon::Command*>(objects->front().get());
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(decoded->weight(), 1);
}

TEST(CarrierClass, HasTheRuntimeNameAndTheSuperclassOfEachAllowedClass) {
    for (const Base::CodedClass* coded : allowedCommandListClasses().objects) {
        const std::string superclass(coded->superclass != nullptr ? coded->superclass->runtimeName
                                                                  : "NSObject");
        EXPECT_EQ(SystemArchives::runtimeClass(*coded),
                  (SystemArchives::RuntimeClass{std::string(coded->runtimeName), superclass, true, true}))
            << coded->runtimeName;
    }
}

TEST(CarrierClass, IsMadeForTheAbstractBasesToo) {
    using InstallCommon::LaunchdJobCommand;
    EXPECT_EQ(SystemArchives::runtimeClass(LaunchdJobCommand::staticClass()),
              (SystemArchives::RuntimeClass{"_TtC13InstallCommon17LaunchdJobCommand",
                                            "_TtC13InstallCommon15CommandConcrete", true, true}));
}

TEST(CarrierClass, OfAnotherOriginEndsTheProcess) {
    static constexpr Base::CodedClass kTaken{"NSString", nullptr, nullptr};
    EXPECT_DEATH(static_cast<void>(SystemArchives::runtimeClass(kTaken)),
                 "The class NSString exists already");
}

class CountingCommand final : public InstallCommon::CommandConcrete {
  public:
    explicit CountingCommand(int& executions) : CommandConcrete("Counting..."), executions_(executions) {}
    [[nodiscard]] const Base::CodedClass& codedClass() const override {
        static const Base::CodedClass kClass{"CountingCommand", &CommandConcrete::staticClass(), nullptr};
        return kClass;
    }
    void execute() const override { ++executions_; }

  private:
    int& executions_;
};

TEST(ExportedCommand, CanBeAskedForDescriptionAndWeightAndExecuted) {
    int executions = 0;
    EXPECT_EQ(SystemArchives::exportedCommand(std::make_unique<CountingCommand>(executions), 5),
              (SystemArchives::ExportedCommand{true, "Counting...", 1, 5}));
    EXPECT_EQ(executions, 1);
}

TEST(CarrierOnLoan, IsOfNoUseAfterwards) {
    const InstallCommon::KillProcessCommand command("Closing...", "process");
    EXPECT_DEATH(SystemArchives::encodeAfterLoan(command), "A carrier was encoded after the object");
}

}  // namespace
