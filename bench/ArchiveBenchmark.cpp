#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Archive/KeyedArchiver.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "InstallCommon/CommandSuitsProvider.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "Platform/FolderNames.h"

// How long it takes to archive and to unarchive the 75 commands of one uninstallation.
// With --write_archive=FILE the program writes that archive instead, for the comparison with other archivers.

namespace {

InstallCommon::CommandList uninstallation() {
    auto commands = InstallCommon::CommandSuitsProvider::makeUninstallCommands();
    auto cleanup = InstallCommon::CommandSuitsProvider::makeCleanupCommands();
    std::move(cleanup.begin(), cleanup.end(), std::back_inserter(commands));
    return commands;
}

std::vector<std::uint8_t> archiveOf(const InstallCommon::CommandList& commands) {
    std::vector<const Base::CodedObject*> objects;
    objects.reserve(commands.size());
    for (const auto& command : commands) {
        objects.push_back(command.get());
    }
    return Base::archivedArray(objects);
}

void encode(benchmark::State& state) {
    const auto commands = uninstallation();
    std::size_t size = 0;
    for (auto _ : state) {
        const auto archive = archiveOf(commands);
        benchmark::DoNotOptimize(archive.data());
        size = archive.size();
    }
    state.counters["commands"] = static_cast<double>(commands.size());
    state.counters["bytes"] = static_cast<double>(size);
}

void decode(benchmark::State& state) {
    const auto archive = archiveOf(uninstallation());
    const Base::AllowedClasses allowed = InstallCommon::allowedCommandListClasses();
    std::string refusal;
    std::size_t count = 0;
    for (auto _ : state) {
        const auto objects = Base::unarchivedArray(archive, allowed, refusal);
        if (!objects) {
            state.SkipWithError(refusal.c_str());
            return;
        }
        count = objects->size();
    }
    state.counters["commands"] = static_cast<double>(count);
}

int writeArchive(const std::string& file) {
    const auto archive = archiveOf(uninstallation());
    std::ofstream stream(file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(archive.data()), static_cast<std::streamsize>(archive.size()));
    stream.close();
    if (!stream) {
        std::fprintf(stderr, "ArchiveBenchmark: cannot write %s\n", file.c_str());
        return 1;
    }
    return 0;
}

}  // namespace

BENCHMARK(encode)->Unit(benchmark::kMicrosecond);
BENCHMARK(decode)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
    Platform::SystemPorts::setCurrent(&Platform::folderNamesOnly());
    constexpr std::string_view kWriteArchive = "--write_archive=";
    if (argc == 2 && std::string_view(argv[1]).starts_with(kWriteArchive)) {
        return writeArchive(argv[1] + kWriteArchive.size());
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
