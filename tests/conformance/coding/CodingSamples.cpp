#include "CodingSamples.h"

#include <memory>
#include <utility>

#include "Base/Archive/KeyedArchiver.h"
#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace CodingSamples {

namespace {

using Base::CodedRecord;
using Base::URL;
using namespace InstallCommon;
using namespace NorvikCommon;

const URL kOdd = URL::fileURL("/Odd; \"paths\" & 100% B\xC3\xBCro/\xE6\x97\xA5\xE6\x9C\xAC/#?[x]\\{y}|^`<z>");
const URL kPlain = URL::fileURL("/Library/LaunchDaemons");
const URL kNotText = URL::fileURL("/not \xFF\xFE text");

template <class Command, class... Arguments>
Sample command(std::string name, Arguments... arguments) {
    return {std::move(name), [=] { return std::make_unique<Command>(arguments...); }};
}

template <class Record>
Sample record(std::string name, const Record& value) {
    return {std::move(name), [value] { return std::make_unique<CodedRecord<Record>>(value); }};
}

std::vector<Sample> makeSamples() {
    const LaunchdInfo job = LaunchdInfo::launchdWithName(
        "J\xC3\xB6"
        "b",
        kPlain);
    const KextInfo kext = KextInfo::kextWithName("FileAccessFilter", "com.norvik.kext");
    return {
        command<RemoveCommand>(
            "RemoveCommand", "Removing \xF0\x9F\x98\x80...",
            std::vector<RemoveCommand::Item>{
                {kOdd, true}, {kPlain, false}, {URL::fileURL("/"), true}, {kNotText, false}}),
        command<RemoveCommand>("RemoveCommandOfNothing", "", std::vector<RemoveCommand::Item>{}),
        command<CopyCommand>("CopyCommand", "Copying...",
                             std::vector<CopyCommand::Item>{{kOdd, kPlain}, {kPlain, kPlain}}),
        command<StartLaunchdJobCommand>("StartLaunchdJobCommand", "Starting...", job, true),
        command<StopLaunchdJobCommand>("StopLaunchdJobCommand", "Stopping...", job, false),
        command<KillProcessCommand>("KillProcessCommand", std::string("Closing\0...", 11),
                                    "NORVIK Antivirus"),
        command<UnloadKextCommand>("UnloadKextCommand", "Unloading...", kext),
        command<UpdateLaunchServices>("UpdateLaunchServices", "Updating..."),
        record("FilesystemItemInfo", FilesystemItemInfo::itemWithPath(kOdd)),
        record("BundleInfo", BundleInfo::bundleWithPath(kOdd, "")),
        record("LaunchdInfo", job),
        record("ApplicationInfo", ApplicationInfo::appWithName("View Logs", "com.norvik.logs", kPlain)),
        record("DaemonInfo", DaemonInfo::daemonWithExecutable(FilesystemItemInfo::itemWithPath(kOdd), job)),
        record("BundleDaemonInfo",
               BundleDaemonInfo::daemonWithName("Daemon", kOdd, "com.norvik.daemon", kPlain)),
        record("KextInfo", kext),
        record("EmptyKextInfo", KextInfo{}),
        record("EmptyBundleInfo", BundleInfo{}),
    };
}

}  // namespace

const std::vector<Sample>& samples() {
    static const std::vector<Sample> kSamples = makeSamples();
    return kSamples;
}

Base::CodedObjectList listOf(std::unique_ptr<Base::CodedObject> object) {
    Base::CodedObjectList list;
    list.push_back(std::move(object));
    return list;
}

Bytes archiveOf(const Base::CodedObjectList& objects) {
    std::vector<const Base::CodedObject*> pointers;
    pointers.reserve(objects.size());
    for (const auto& object : objects) {
        pointers.push_back(object.get());
    }
    return Base::archivedArray(pointers);
}

Base::CodedObjectList foreign(const Base::CodedClass& codedClass, Foreign::Write write) {
    return listOf(std::make_unique<Foreign>(codedClass, std::move(write)));
}

}  // namespace CodingSamples
