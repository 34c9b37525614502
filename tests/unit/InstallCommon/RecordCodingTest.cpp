#include <gtest/gtest.h>

#include "Base/Archive/KeyedArchiver.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "unit/InstallCommon/CommandCoding.h"

namespace {

using namespace InstallCommon;
using namespace NorvikCommon;
using Base::URL;
using CommandCodingTests::CommandCoding;
using CommandCodingTests::kJob;
using CommandCodingTests::Stranger;

TEST_F(CommandCoding, ARecordInTheListIsNotACommand) {
    const Base::CodedRecord record(kJob);
    const Base::CodedObject* const list[] = {&record};
    auto objects = Base::unarchivedArray(Base::archivedArray(list), allowedCommandListClasses(), refusal_);
    ASSERT_TRUE(objects) << refusal_;
    EXPECT_FALSE(commandList(std::move(*objects)));
}

TEST_F(CommandCoding, AMissingRecordKeyLeavesThatPropertyEmpty) {
    const auto decoded = sent(Stranger(UnloadKextCommand::staticClass(), [](Base::Coder& coder) {
        coder.encodeObject("kext", Stranger(KextInfo::codedClass(), [](Base::Coder& inner) {
                               inner.encodeString("ioClassName", "F");
                           }));
        coder.encodeString("commandDescription", "d");
    }));
    const auto* unload = dynamic_cast<const UnloadKextCommand*>(decoded.get());
    ASSERT_NE(unload, nullptr) << refusal_;
    EXPECT_EQ(unload->kext().bundle, std::nullopt);
    EXPECT_EQ(unload->kext().ioClassName, "F");
}

TEST_F(CommandCoding, ARecordKeyOfTheWrongTypeRefusesTheWholeList) {
    EXPECT_EQ(sent(Stranger(UnloadKextCommand::staticClass(),
                            [](Base::Coder& coder) {
                                coder.encodeObject("kext",
                                                   Stranger(KextInfo::codedClass(), [](Base::Coder& inner) {
                                                       inner.encodeURL("ioClassName", URL::fileURL("/F"));
                                                   }));
                                coder.encodeString("commandDescription", "d");
                            })),
              nullptr);
    EXPECT_NE(refusal_.find("ioClassName"), std::string::npos) << refusal_;
}

// A bundle is an item.
TEST_F(CommandCoding, ABundleInAnItemsPlaceIsReadAsThatItem) {
    const Stranger daemon(DaemonInfo::codedClass(), [](Base::Coder& coder) {
        coder.encodeObject("executable",
                           Base::CodedRecord(BundleInfo::bundleWithPath(URL::fileURL("/A/B.app"), "id")));
    });
    const Base::CodedObject* const list[] = {&daemon};
    const auto objects =
        Base::unarchivedArray(Base::archivedArray(list), allowedCommandListClasses(), refusal_);
    ASSERT_TRUE(objects) << refusal_;
    const auto* decoded = dynamic_cast<const Base::CodedRecord<DaemonInfo>*>(objects->at(0).get());
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(decoded->value().executable, FilesystemItemInfo::itemWithPath(URL::fileURL("/A/B.app")));
}

TEST_F(CommandCoding, AJobThatIsAnotherRecordIsRefused) {
    EXPECT_EQ(sent(Stranger(StopLaunchdJobCommand::staticClass(),
                            [](Base::Coder& coder) {
                                coder.encodeObject("agent", Base::CodedRecord(KextInfo()));
                                coder.encodeString("commandDescription", "d");
                            })),
              nullptr);
}

/// Round trips of records, inside the command that can carry them.
template <class Record>
std::optional<Record> recordRoundTrip(const Record& record) {
    const Base::CodedRecord object(record);
    const Base::CodedObject* const list[] = {&object};
    std::string refusal;
    auto objects = Base::unarchivedArray(Base::archivedArray(list), allowedCommandListClasses(), refusal);
    if (!objects) {
        return std::nullopt;
    }
    const auto* decoded = dynamic_cast<const Base::CodedRecord<Record>*>(objects->at(0).get());
    return decoded == nullptr ? std::nullopt : std::optional(decoded->value());
}

TEST_F(CommandCoding, ABundleInfoRoundTripsWithAllThreeKeys) {
    const auto bundle = BundleInfo::bundleWithPath(URL::fileURL("/A/B.app"), "com.norvik.B");
    const auto decoded = recordRoundTrip(bundle);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->name, "B.app");
    EXPECT_EQ(decoded->location, URL::fileURL("/A/B.app"));
    EXPECT_EQ(decoded->bundleId, "com.norvik.B");
}

TEST_F(CommandCoding, AKextInfoRoundTripsWithItsNestedBundle) {
    const auto kext = KextInfo::kextWithName("F", "Io", URL::fileURL("/E"), "id");
    EXPECT_EQ(recordRoundTrip(kext), kext);
}

TEST_F(CommandCoding, EveryOtherRecordRoundTrips) {
    const auto item = FilesystemItemInfo::itemWithPath(URL::fileURL("/a"));
    EXPECT_EQ(recordRoundTrip(item), item);
    EXPECT_EQ(recordRoundTrip(kJob), kJob);
    const auto app = ApplicationInfo::appWithName("n", "id", URL::fileURL("/D"));
    EXPECT_EQ(recordRoundTrip(app), app);
    const auto daemon = DaemonInfo::daemonWithName("n", URL::fileURL("/D"));
    EXPECT_EQ(recordRoundTrip(daemon), daemon);
    const auto bundleDaemon = BundleDaemonInfo::daemonWithName("n", URL::fileURL("/D/n.bundle"), "id");
    EXPECT_EQ(recordRoundTrip(bundleDaemon), bundleDaemon);
}

TEST_F(CommandCoding, EmptyRecordsRoundTripEmpty) {
    EXPECT_EQ(recordRoundTrip(FilesystemItemInfo()), FilesystemItemInfo());
    EXPECT_EQ(recordRoundTrip(BundleInfo()), BundleInfo());
    EXPECT_EQ(recordRoundTrip(LaunchdInfo()), LaunchdInfo());
    EXPECT_EQ(recordRoundTrip(BundleDaemonInfo()), BundleDaemonInfo());
}

}  // namespace
