#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

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
#include "NorvikCommon/Product Paths Information/ProductComponents.h"
#include "Platform/FolderNames.h"
#include "support/WholeFile.h"

extern char** environ;

namespace {

using Base::URL;
using namespace NorvikCommon;
using namespace InstallCommon;
using Bytes = std::vector<std::uint8_t>;

// A folder that goes with the test.
class Scratch {
  public:
    Scratch() {
        std::string path = testing::TempDir() + "archive-XXXXXX";
        folder_ = mkdtemp(path.data()) != nullptr ? path : "";
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string file(const std::string& name) const { return folder_ + '/' + name; }

  private:
    std::string folder_;
};

// The exit status of a program whose standard output goes to `output` when that is not empty.
int run(std::vector<std::string> arguments, const std::string& output = {}) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!output.empty()) {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
    }
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_t pid = 0;
    const int error = posix_spawn(&pid, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (error != 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status)) {
        return -1;
    }
    return WEXITSTATUS(status);
}

void write(const std::string& file, const Bytes& bytes) {
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

Bytes read(const std::string& file) {
    const std::string bytes = TestSupport::contentsOf(file);
    return {bytes.begin(), bytes.end()};
}

template <class List>
Bytes archiveOf(const List& objects) {
    std::vector<const Base::CodedObject*> pointers;
    pointers.reserve(objects.size());
    for (const auto& each : objects) {
        pointers.push_back(each.get());
    }
    return Base::archivedArray(pointers);
}

// What `archive` holds, read under the helper's own rules and archived by us. The archiver is deterministic
// and leaves nothing out, so equal bytes mean equal lists.
Bytes normalForm(const Bytes& archive) {
    std::string refusal;
    const auto objects = Base::unarchivedArray(archive, allowedCommandListClasses(), refusal);
    if (!objects) {
        ADD_FAILURE() << "refused: " << refusal;
        return {};
    }
    return archiveOf(*objects);
}

Bytes uninstallation() {
    auto commands = CommandSuitsProvider::makeUninstallCommands();
    auto cleanup = CommandSuitsProvider::makeCleanupCommands();
    std::move(cleanup.begin(), cleanup.end(), std::back_inserter(commands));
    return archiveOf(commands);
}

// Every command and record class, with texts and paths that are awkward to write.
Bytes everyClass() {
    const URL odd =
        URL::fileURL("/Odd; \"paths\" & 100% B\xC3\xBCro/\xE6\x97\xA5\xE6\x9C\xAC/#?[x]\\{y}|^`<z>");
    const URL plain = URL::fileURL("/Library/LaunchDaemons");
    const KextInfo kext = KextInfo::kextWithName("FileAccessFilter", "com.norvik.kext");
    KextInfo incomplete = kext;
    incomplete.ioClassName.reset();
    const LaunchdInfo job = LaunchdInfo::launchdWithName(
        "J\xC3\xB6"
        "b",
        plain);
    const ApplicationInfo app = ApplicationInfo::appWithName("View Logs", "", odd);
    Base::CodedObjectList list;
    list.push_back(std::make_unique<RemoveCommand>(
        "Removing \xF0\x9F\x98\x80...",
        std::vector<RemoveCommand::Item>{{odd, true}, {plain, false}, {URL::fileURL("/"), true}}));
    list.push_back(std::make_unique<RemoveCommand>("", std::vector<URL>{}));
    list.push_back(std::make_unique<CopyCommand>("Copying...", odd, plain));
    list.push_back(std::make_unique<StartLaunchdJobCommand>("Starting...", job, true));
    list.push_back(std::make_unique<StopLaunchdJobCommand>("Stopping...", job, false));
    list.push_back(std::make_unique<KillProcessCommand>("Closing...", "NORVIK Antivirus"));
    list.push_back(std::make_unique<UnloadKextCommand>("Unloading...", kext));
    list.push_back(std::make_unique<UnloadKextCommand>("Unloading...", incomplete));
    list.push_back(std::make_unique<UpdateLaunchServices>("Updating..."));
    list.push_back(
        std::make_unique<Base::CodedRecord<FilesystemItemInfo>>(FilesystemItemInfo::itemWithPath(odd)));
    list.push_back(std::make_unique<Base::CodedRecord<BundleInfo>>(BundleInfo::bundleWithPath(odd, "")));
    list.push_back(std::make_unique<Base::CodedRecord<LaunchdInfo>>(job));
    list.push_back(std::make_unique<Base::CodedRecord<ApplicationInfo>>(app));
    list.push_back(std::make_unique<Base::CodedRecord<DaemonInfo>>(
        DaemonInfo::daemonWithExecutable(FilesystemItemInfo::itemWithPath(odd), job)));
    list.push_back(std::make_unique<Base::CodedRecord<BundleDaemonInfo>>(
        BundleDaemonInfo::daemonWithName("Daemon", odd, "com.norvik.daemon", plain)));
    list.push_back(std::make_unique<Base::CodedRecord<KextInfo>>(kext));
    return archiveOf(list);
}

struct Sample {
    const char* name;
    Bytes (*archive)();
};

class ArchiveConformance : public testing::TestWithParam<Sample> {
  protected:
    ArchiveConformance() : ours_(GetParam().archive()) {
        write(ourFile_, ours_);
        // GNUstep's programs keep defaults and temporary files; not in the user's home folder.
        const std::string configuration = scratch_.file("GNUstep.conf");
        std::ofstream(configuration) << "GNUSTEP_USER_DEFAULTS_DIR=" << scratch_.file("defaults") << '\n';
        setenv("GNUSTEP_CONFIG_FILE", configuration.c_str(), 1);
        setenv("TEMP", scratch_.file("").c_str(), 1);
    }

    // Has another implementation write the list anew and expects to find the same in it.
    void expectRewritten(std::vector<std::string> program, const std::string& verb) {
        const std::string theirs = scratch_.file(verb);
        program.insert(program.end(), {verb, ourFile_, theirs});
        ASSERT_EQ(run(program), 0);
        const Bytes bytes = read(theirs);
        EXPECT_NE(bytes, ours_) << "the other side must have written it itself";
        EXPECT_EQ(normalForm(bytes), ours_);
    }

    const std::vector<std::string> gnustep_{GNUSTEP_ARCHIVE};
    const std::vector<std::string> python_{SYSTEM_PYTHON, PLIST_ARCHIVE};
    Scratch scratch_;
    std::string ourFile_ = scratch_.file("ours");
    Bytes ours_;
};

TEST_P(ArchiveConformance, OurOwnReaderFindsTheSame) {
    EXPECT_EQ(normalForm(ours_), ours_);
}

TEST_P(ArchiveConformance, GNUstepReadsOursAndWritesWhatWeRead) {
    expectRewritten(gnustep_, "rewrite");
}

TEST_P(ArchiveConformance, GNUstepWritesMutableFormsThatWeRead) {
    expectRewritten(gnustep_, "rewrite-mutable");
}

TEST_P(ArchiveConformance, PythonReadsOursAndWritesWhatWeRead) {
    expectRewritten(python_, "rewrite");
}

TEST_P(ArchiveConformance, PythonWritesOtherFormsThatWeRead) {
    expectRewritten(python_, "rewrite-other");
}

TEST_P(ArchiveConformance, GNUstepAndPythonFindTheSameValuesInOurs) {
    const std::string json = scratch_.file("json");
    ASSERT_EQ(run({GNUSTEP_ARCHIVE, "dump", ourFile_}, json), 0);
    EXPECT_EQ(run({SYSTEM_PYTHON, PLIST_ARCHIVE, "compare", ourFile_, json}), 0);
}

INSTANTIATE_TEST_SUITE_P(Lists, ArchiveConformance,
                         testing::Values(Sample{"Uninstallation", &uninstallation},
                                         Sample{"EveryClass", &everyClass}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    Platform::SystemPorts::setCurrent(&Platform::folderNamesOnly());
    return RUN_ALL_TESTS();
}
