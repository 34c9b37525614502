#include "inspect/explain/Explain.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "Platform/Posix/Descriptor.h"
#include "inspect/explain/LogReader.h"
#include "inspect/explain/RunAnalyzer.h"

namespace Inspect {

namespace {

/// Reads `descriptor` for a LogReader; `failure` becomes the errno value of a failed read, or 0.
std::size_t readSome(int descriptor, char* buffer, std::size_t size, int& failure) {
    ssize_t count = 0;
    do {
        count = ::read(descriptor, buffer, size);
    } while (count < 0 && errno == EINTR);
    failure = count < 0 ? errno : 0;
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

/// What the reader of `runs` should know about the log as a whole; often nothing.
std::string noticeOf(const LogReader& reader, const std::vector<Run>& runs) {
    if (reader.endsInTheMiddle()) {
        return "The log ends in the middle of an entry.";
    }
    if (!runs.empty() && runs.front().number > 1) {
        return "Of the log's runs only the last " + std::to_string(runs.size()) + " are told.";
    }
    return {};
}

}  // namespace

std::optional<std::vector<Run>> runsOfLog(const std::string& file, std::string& refusal, std::string& notice,
                                          const std::function<void(const RunAnalyzer&)>& whileReading) {
    Platform::Posix::Descriptor opened;
    if (file != "-") {
        opened = Platform::Posix::Descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
        if (!opened) {
            refusal = std::generic_category().message(errno);
            return std::nullopt;
        }
    }
    const int descriptor = file == "-" ? STDIN_FILENO : opened.get();
    int failure = 0;
    LogReader reader([descriptor, &failure](char* buffer, std::size_t size) {
        return readSome(descriptor, buffer, size, failure);
    });
    RunAnalyzer analyzer;
    while (const std::optional<LogEntry> entry = reader.next()) {
        analyzer.add(*entry);
        if (whileReading) {
            whileReading(analyzer);
        }
    }
    if (failure != 0) {
        refusal = std::generic_category().message(failure);
        return std::nullopt;
    }
    if (reader.entries() == 0) {
        refusal = "not a system log: no line has the form of an entry";
        return std::nullopt;
    }
    std::vector<Run> runs = analyzer.finish();
    notice = noticeOf(reader, runs);
    return runs;
}

}  // namespace Inspect
