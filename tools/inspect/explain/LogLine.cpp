#include "inspect/explain/LogLine.h"

#include <string>
#include <utility>

#include <nlohmann/json.hpp>

#include "inspect/explain/LogTime.h"

namespace Inspect {

namespace {

/// "Uninstall Sentrel[18]: ", "Uninstall Sentrel[18:1b2c] ": up to and including `mark`.
bool takeProgram(LineCursor& cursor, std::string_view mark, LogEntry& entry) {
    const auto name = cursor.takeUpTo("[");
    if (!name || name->empty() || name->find(": ") != std::string_view::npos) {
        return false;
    }
    const auto pid = cursor.takeNumber(0);
    if (!pid || (cursor.take(":") && cursor.takeUpTo("]") == std::nullopt)) {
        return false;
    }
    static_cast<void>(cursor.take("]"));
    if (!cursor.take(mark)) {
        return false;
    }
    entry.program = *name;
    entry.pid = *pid;
    return true;
}

/// Drops "(Foundation) " and "[com.norvik:helper] ". A text of the product begins with neither, except with
/// its own "[SNTM Installer]", which has no colon.
void dropSender(LineCursor& cursor) {
    if (cursor.rest().starts_with('(')) {
        LineCursor ahead = cursor;
        const auto sender = ahead.takeUpTo(") ");
        if (sender && sender->find(' ') == std::string_view::npos) {
            cursor = ahead;
        }
    }
    if (cursor.rest().starts_with('[')) {
        LineCursor ahead = cursor;
        const auto category = ahead.takeUpTo("] ");
        if (category && category->find(':') != std::string_view::npos &&
            category->find(' ') == std::string_view::npos) {
            cursor = ahead;
        }
    }
}

/// After the time: "0x1b2c Default 0x0 18 0 Uninstall Sentrel: ".
bool takeColumns(LineCursor& cursor, LogEntry& entry) {
    if (!cursor.takeWord().starts_with("0x") || !cursor.takeSpaces() || cursor.takeWord().empty() ||
        !cursor.takeSpaces() || !cursor.takeWord().starts_with("0x") || !cursor.takeSpaces()) {
        return false;
    }
    const auto pid = cursor.takeNumber(0);
    if (!pid || !cursor.takeSpaces() || !cursor.takeNumber(0) || !cursor.takeSpaces()) {
        return false;
    }
    const auto name = cursor.takeUpTo(": ");
    if (!name || name->empty()) {
        return false;
    }
    entry.program = *name;
    entry.pid = *pid;
    return true;
}

/// After the time and blanks: "localhost Uninstall Sentrel[18]: ".
bool takeHostAndProgram(LineCursor& cursor, LogEntry& entry) {
    return !cursor.takeWord().empty() && cursor.takeSpaces() && takeProgram(cursor, ": ", entry);
}

/// After the time and blanks: "Df Uninstall Sentrel[18:1b2c] ", the type "Df" missing on standard error.
bool takeTypeAndProgram(LineCursor& cursor, LogEntry& entry) {
    LineCursor ahead = cursor;
    const std::string_view type = ahead.takeWord();
    constexpr std::string_view kTypes = " A D Db Df E F I In L N St To Ti ";
    if (type.size() <= 2 && kTypes.find(' ' + std::string(type) + ' ') != std::string_view::npos &&
        ahead.takeSpaces()) {
        cursor = ahead;
    }
    return takeProgram(cursor, " ", entry);
}

using Reading = bool (*)(LineCursor&, LogEntry&);

std::optional<LogEntry> readRest(std::string_view line, const LineCursor& afterTime, Reading reading) {
    LogEntry entry;
    entry.time = line.substr(0, line.size() - afterTime.rest().size());
    LineCursor cursor = afterTime;
    if (!cursor.takeSpaces() || !reading(cursor, entry)) {
        return std::nullopt;
    }
    dropSender(cursor);
    entry.text = cursor.rest();
    return entry;
}

std::string textAt(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

}  // namespace

std::optional<LogEntry> entryFromLine(std::string_view line) {
    LineCursor cursor(line);
    std::optional<double> seconds = takeTimestamp(cursor);
    std::optional<LogEntry> entry;
    if (seconds) {
        for (const Reading reading : {&takeColumns, &takeTypeAndProgram, &takeHostAndProgram}) {
            entry = entry ? std::move(entry) : readRest(line, cursor, reading);
        }
    } else {
        cursor = LineCursor(line);
        seconds = takeShortTimestamp(cursor);
        entry = seconds ? readRest(line, cursor, &takeHostAndProgram) : std::nullopt;
    }
    if (entry) {
        entry->seconds = seconds;
    }
    return entry;
}

std::optional<LogEntry> entryFromJson(std::string_view object) {
    const nlohmann::json parsed = nlohmann::json::parse(object, nullptr, false);
    if (!parsed.is_object()) {
        return std::nullopt;
    }
    LogEntry entry;
    entry.time = textAt(parsed, "timestamp");
    entry.text = textAt(parsed, "eventMessage");
    const std::string path = textAt(parsed, "processImagePath");
    entry.program = path.substr(path.rfind('/') + 1);
    const auto pid = parsed.find("processID");
    if (entry.text.empty() || entry.program.empty() || pid == parsed.end() || !pid->is_number_integer()) {
        return std::nullopt;
    }
    entry.pid = pid->get<std::int32_t>();
    LineCursor cursor(entry.time);
    entry.seconds = takeTimestamp(cursor);
    return entry;
}

}  // namespace Inspect
