#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace InspectTest {

/// One entry of a log that a test writes.
struct SampleEntry {
    int second = 0;
    std::string_view program;
    int pid = 0;
    std::string text;
};

inline constexpr std::string_view kUninstaller = "Uninstall Sentrel";
inline constexpr std::string_view kHelper = "com.norvik.InstallerHelper";

/// The forms in which a Mac writes its log.
enum class LogForm : std::uint8_t { systemLog, syslog, show, compact, standardError, json, ndjson };

/// The entries as a log, at 10:00:00 on 21 November and so many seconds.
[[nodiscard]] std::string logOf(const std::vector<SampleEntry>& entries, LogForm form = LogForm::systemLog);

/// What the helper (process 20) writes for the whole list on a Mac without users where the current version's
/// console, its folder and nothing else is there. Begins at `second`; every line takes no time.
[[nodiscard]] std::vector<SampleEntry> helperLines(int second = 1);

/// The same with the uninstaller's own lines (process 18) around them: a run that finishes.
[[nodiscard]] std::vector<SampleEntry> finishedRun();

/// launchctl's words as they come into the log.
[[nodiscard]] std::string toolFailure(const std::string& words, int status);

}  // namespace InspectTest
