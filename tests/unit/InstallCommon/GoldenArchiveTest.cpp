// The archive of every class that travels, byte by byte: both processes agree on names, keys and their order,
// even if they are of different versions. golden/*.hex shows each as a hex dump with its text beside it.

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <sstream>

#include "Base/Archive/KeyedArchiver.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "InstallCommon/CommandSuitsProvider.h"
#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "Platform/Posix/SHA256.h"
#include "support/FakeMac.h"
#include "support/WholeFile.h"

namespace {

using namespace InstallCommon;
using namespace NorvikCommon;
using Base::URL;
using TestSupport::contentsOf;
using Bytes = std::vector<std::uint8_t>;

const URL kFolder = URL::fileURL("/Library/Some Folder");
const LaunchdInfo kJobd = LaunchdInfo::launchdWithName("jobd", URL::fileURL("/Library/LaunchDaemons"));
const KextInfo kKext = KextInfo::kextWithName("File", "Class", kFolder, "com.norvik.kext");

struct Sample {
    std::string name;
    std::shared_ptr<Base::CodedObject> object;

    friend void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.name; }
};

template <class Record>
std::shared_ptr<Base::CodedObject> record(Record value) {
    return std::make_shared<Base::CodedRecord<Record>>(std::move(value));
}

std::vector<Sample> samples() {
    const std::vector<RemoveCommand::Item> removed{{kFolder, true}, {URL::fileURL("/b%c"), false}};
    const std::vector<CopyCommand::Item> copied{{kFolder, URL::fileURL("/d/e")},
                                                {URL::fileURL("/\xC3\xBC"), URL::fileURL("/d/f")}};
    return {{"CommandConcrete", std::make_shared<CommandConcrete>("Text...")},
            {"RemoveCommand", std::make_shared<RemoveCommand>("Delete...", removed)},
            {"CopyCommand", std::make_shared<CopyCommand>("Copy \xC3\xBC...", copied)},
            {"StartLaunchdJobCommand", StartLaunchdJobCommand::withDaemon("Start...", kJobd)},
            {"StopLaunchdJobCommand", StopLaunchdJobCommand::withAgent("Stop...", kJobd)},
            {"KillProcessCommand", std::make_shared<KillProcessCommand>("Close...", "Process")},
            {"UnloadKextCommand", std::make_shared<UnloadKextCommand>("Unload...", kKext)},
            {"UpdateLaunchServices", std::make_shared<UpdateLaunchServices>("Update...")},
            {"FilesystemItemInfo", record(FilesystemItemInfo::itemWithPath(kFolder))},
            {"BundleInfo", record(BundleInfo::bundleWithPath(kFolder, "com.norvik.bundle"))},
            {"LaunchdInfo", record(kJobd)},
            {"ApplicationInfo", record(ApplicationInfo::appWithName("App", kFolder, "com.norvik.app"))},
            {"DaemonInfo", record(DaemonInfo::daemonWithName("jobd", kFolder))},
            {"BundleDaemonInfo",
             record(BundleDaemonInfo::guiAgentWithName("agent", kFolder, "com.norvik.agent"))},
            {"KextInfo", record(kKext)}};
}

Bytes archived(const Base::CodedObject& object) {
    const Base::CodedObject* const list[] = {&object};
    return Base::archivedArray(list);
}

/// A hex dump as xxd(1) writes it: offset, 16 bytes in pairs, the same as text.
std::string hexDump(const Bytes& bytes) {
    std::string dump;
    for (std::size_t line = 0; line < bytes.size(); line += 16) {
        char text[24];
        std::snprintf(text, sizeof text, "%08zx:", line);
        dump += text;
        std::string readable;
        for (std::size_t i = line; i < line + 16; ++i) {
            dump += i % 2 == 0 ? " " : "";
            std::snprintf(text, sizeof text, i < bytes.size() ? "%02x" : "  ",
                          i < bytes.size() ? bytes[i] : 0);
            dump += text;
            if (i < bytes.size()) {
                readable += bytes[i] >= 0x20 && bytes[i] < 0x7F ? static_cast<char>(bytes[i]) : '.';
            }
        }
        dump += "  " + readable + "\n";
    }
    return dump;
}

/// The bytes of a hex dump.
Bytes bytesOf(const std::string& dump) {
    Bytes bytes;
    std::istringstream lines(dump);
    for (std::string line; std::getline(lines, line);) {
        std::string digits;
        for (const char c : line.substr(10, 39)) {
            digits += std::isxdigit(static_cast<unsigned char>(c)) != 0 ? std::string(1, c) : "";
        }
        for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
            bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
        }
    }
    return bytes;
}

class GoldenArchive : public testing::TestWithParam<Sample> {
  protected:
    [[nodiscard]] std::string golden() const {
        return contentsOf(std::string(GOLDEN_ARCHIVES) + "/" + GetParam().name + ".hex");
    }
};

TEST_P(GoldenArchive, MatchesTheWrittenArchive) {
    EXPECT_EQ(hexDump(archived(*GetParam().object)), golden())
        << "If the format is meant to change, both programs of earlier versions have to be thought of.";
}

TEST_P(GoldenArchive, IsReadAndWrittenAgainAsItWas) {
    const Bytes bytes = bytesOf(golden());
    const std::vector<const Base::CodedClass*> classes{&CommandConcrete::staticClass(),
                                                       &RemoveCommand::staticClass(),
                                                       &CopyCommand::staticClass(),
                                                       &StartLaunchdJobCommand::staticClass(),
                                                       &StopLaunchdJobCommand::staticClass(),
                                                       &KillProcessCommand::staticClass(),
                                                       &UnloadKextCommand::staticClass(),
                                                       &UpdateLaunchServices::staticClass(),
                                                       &FilesystemItemInfo::codedClass(),
                                                       &BundleInfo::codedClass(),
                                                       &LaunchdInfo::codedClass(),
                                                       &ApplicationInfo::codedClass(),
                                                       &DaemonInfo::codedClass(),
                                                       &BundleDaemonInfo::codedClass(),
                                                       &KextInfo::codedClass()};
    Base::AllowedClasses allowed = allowedCommandListClasses();
    allowed.objects = classes;
    std::string refusal;
    const auto objects = Base::unarchivedArray(bytes, allowed, refusal);
    ASSERT_TRUE(objects.has_value()) << refusal;
    ASSERT_EQ(objects->size(), 1U);
    EXPECT_EQ(&objects->front()->codedClass(), &GetParam().object->codedClass());
    EXPECT_EQ(hexDump(archived(*objects->front())), golden());
}

INSTANTIATE_TEST_SUITE_P(Classes, GoldenArchive, testing::ValuesIn(samples()),
                         [](const testing::TestParamInfo<Sample>& sample) { return sample.param.name; });

// The hand-over of a whole uninstallation.
TEST(GoldenList, Of75CommandsHasTheseBytes) {
    const TestSupport::FakeMac mac;
    CommandList list = CommandSuitsProvider::makeUninstallCommands();
    for (auto& command : CommandSuitsProvider::makeCleanupCommands()) {
        list.push_back(std::move(command));
    }
    std::vector<const Base::CodedObject*> objects;
    for (const auto& command : list) {
        objects.push_back(command.get());
    }
    ASSERT_EQ(objects.size(), 75U);
    const Bytes archive = Base::archivedArray(objects);
    Platform::Posix::SHA256 digest;
    digest.add(archive.data(), archive.size());
    EXPECT_EQ(digest.finish() + "\n", contentsOf(std::string(GOLDEN_ARCHIVES) + "/75-commands.sha256"))
        << archive.size() << " bytes";
}

}  // namespace
