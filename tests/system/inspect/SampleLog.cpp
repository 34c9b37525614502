#include "SampleLog.h"

#include <array>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "InstallCommon/CommandLists.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "Platform/FolderNames.h"
#include "support/InstallerLine.h"

namespace InspectTest {

namespace {

using TestSupport::installerLine;

constexpr int kSecondsPerMinute = 60;

std::string clock(int second) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "10:%02d:%02d", second / kSecondsPerMinute,
                  second % kSecondsPerMinute);
    return text.data();
}

std::string lineOf(const SampleEntry& entry, LogForm form) {
    const std::string program(entry.program);
    const std::string pid = std::to_string(entry.pid);
    const std::string date = "2026-11-21 " + clock(entry.second);
    switch (form) {
        case LogForm::systemLog:
            return "Nov 21 " + clock(entry.second) + " Mac " + program + '[' + pid + "]: " + entry.text;
        case LogForm::syslog:
            return date + ".000000+0100  localhost " + program + '[' + pid + "]: (Foundation) " + entry.text;
        case LogForm::show:
            return date + ".000000+0100 0x1b2c     Default     0x0                  " + pid + "     0    " +
                   program + ": (Foundation) " + entry.text;
        case LogForm::compact:
            return date + ".000 Df " + program + '[' + pid + ":1b2c] (Foundation) " + entry.text;
        case LogForm::standardError:
            return date + ".000 " + program + '[' + pid + ":1b2c] " + entry.text;
        case LogForm::json:
        case LogForm::ndjson:
            break;
    }
    const nlohmann::json object{{"timestamp", date + ".000000+0100"},
                                {"processID", entry.pid},
                                {"processImagePath", "/somewhere/" + program},
                                {"eventMessage", entry.text},
                                {"backtrace", {{"frames", {{{"imageOffset", 1}}}}}}};
    return object.dump(form == LogForm::json ? 2 : -1);
}

std::string header(LogForm form) {
    switch (form) {
        case LogForm::show:
            return "Filtering the log data using \"process CONTAINS \"norvik\"\"\n"
                   "Timestamp                       Thread     Type        Activity             PID    TTL  "
                   "\n";
        case LogForm::compact:
            return "Timestamp               Ty Process[PID:TID]\n";
        case LogForm::syslog:
            return "Timestamp                       (process)[PID]    \n";
        case LogForm::json:
            return "[";
        case LogForm::systemLog:
        case LogForm::standardError:
        case LogForm::ndjson:
            break;
    }
    return "";
}

SampleEntry helper(int second, std::string text) {
    return {second, kHelper, 20, std::move(text)};
}

bool isThere(const std::string& path) {
    return path == "/Applications/Sentrel.app" || path == "/Library/Application Support/NORVIK/SNT";
}

void addRemoval(std::vector<SampleEntry>& lines, int second, const std::string& path) {
    lines.push_back(helper(second, isThere(path) ? installerLine("Removed at ") + path
                                                 : installerLine("Error removing: \"") + path +
                                                       "\" could not be removed: No such file or directory"));
}

}  // namespace

std::string toolFailure(const std::string& words, int status) {
    return "[SNTM Installer]\nError description: " + words +
           "\n;\ntermination status: " + std::to_string(status) + ";\ntermination reason: exit.";
}

std::string logOf(const std::vector<SampleEntry>& entries, LogForm form) {
    std::string log = header(form);
    bool first = true;
    for (const SampleEntry& entry : entries) {
        log += form == LogForm::json && !first ? "," : "";
        first = false;
        log += lineOf(entry, form) + (form == LogForm::json ? "" : "\n");
    }
    return log + (form == LogForm::json ? "]\n" : "");
}

std::vector<SampleEntry> helperLines(int second) {
    Platform::SystemPorts::setCurrent(&Platform::folderNamesOnly());
    constexpr std::array kDaemons{"containmentd",     "fileaccessd", "fileaccessdaemon",
                                  "FileAccessDaemon", "fileaccessd", "containmentd"};
    constexpr std::array kAgents{"TrayMenu", "NorvikAgent", "Agent",    "TrayMenu", "Agent",
                                 "TrayMenu", "Agent",       "TrayMenu", "Agent",    "TrayMenu"};
    constexpr std::string_view kRepair = "/Library/Application Support/NORVIK/SNT/Repair";
    std::vector<SampleEntry> lines;
    for (const std::string daemon : kDaemons) {
        lines.push_back(helper(
            second,
            toolFailure("Could not find service \"com.norvik." + daemon + "\" in domain for system", 113)));
    }
    for (const std::string agent : kAgents) {
        lines.push_back(
            helper(second, installerLine("Disable & bootout agent com.norvik.") + agent + " for 0"));
        lines.push_back(helper(
            second, toolFailure("Boot-out failed: 125: Domain does not support specified action", 125)));
    }
    for (int kext = 0; kext < 2; ++kext) {
        lines.push_back(helper(
            second, installerLine("Kext FileAccessFilter.kext unload failed. Return code: -23ff7ffa")));
    }
    for (const auto& command : InstallCommon::CommandLists::uninstallation()) {
        if (const auto* removal = dynamic_cast<const InstallCommon::RemoveCommand*>(command.get())) {
            for (const auto& item : removal->itemsToRemove()) {
                addRemoval(lines, second, item.path.path());
                addRemoval(lines, second, std::string(kRepair) + item.path.path());
            }
        }
    }
    return lines;
}

std::vector<SampleEntry> finishedRun() {
    std::vector<SampleEntry> entries{
        {0, kUninstaller, 18, installerLine("found installed version true, updatable: true")}};
    for (SampleEntry& line : helperLines()) {
        entries.push_back(std::move(line));
    }
    entries.push_back({2, kUninstaller, 18, "Uninstallation finished"});
    entries.push_back({2, kUninstaller, 18, installerLine("Uninstallation finished.")});
    return entries;
}

}  // namespace InspectTest
