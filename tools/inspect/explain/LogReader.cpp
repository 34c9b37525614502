#include "inspect/explain/LogReader.h"

#include <string_view>
#include <utility>

#include "inspect/explain/LogLine.h"

namespace Inspect {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 16;
constexpr int kEnd = -1;

bool isBlank(int byte) {
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

void appendBounded(std::string& text, char byte) {
    if (text.size() < LogReader::kLongestEntry) {
        text += byte;
    }
}

}  // namespace

LogReader::LogReader(Source source) : source_(std::move(source)) {}

std::optional<LogEntry> LogReader::next() {
    if (form_ == Form::unknown) {
        findForm();
    }
    std::optional<LogEntry> entry = form_ == Form::json ? nextFromJson() : nextFromLines();
    entries_ += entry ? 1 : 0;
    return entry;
}

int LogReader::nextByte() {
    if (position_ == buffer_.size()) {
        buffer_.resize(kBufferSize);
        buffer_.resize(source_(buffer_.data(), kBufferSize));
        position_ = 0;
        if (buffer_.empty()) {
            return kEnd;
        }
    }
    return static_cast<unsigned char>(buffer_[position_++]);
}

// A log in JSON begins with its array, or with its first object.
void LogReader::findForm() {
    int byte = nextByte();
    while (isBlank(byte)) {
        line_ += byte == '\n' ? 1 : 0;
        byte = nextByte();
    }
    form_ = byte == '[' || byte == '{' ? Form::json : Form::lines;
    if (byte != kEnd) {
        --position_;
    }
}

bool LogReader::readLine(std::string& line) {
    line.clear();
    int byte = nextByte();
    if (byte == kEnd) {
        return false;
    }
    while (byte != kEnd && byte != '\n') {
        // The byte that was taken, and all up to the line's end that were read with it.
        const std::string_view ahead = std::string_view(buffer_).substr(position_ - 1);
        const std::string_view taken = ahead.substr(0, ahead.find('\n'));
        line.append(taken.substr(0, kLongestEntry - line.size()));
        position_ += taken.size() - 1;
        byte = nextByte();
    }
    ++line_;
    return true;
}

// An entry lasts until the next line that begins one.
std::optional<LogEntry> LogReader::nextFromLines() {
    std::string line;
    while (readLine(line)) {
        std::optional<LogEntry> entry = entryFromLine(line);
        if (entry) {
            entry->line = line_;
            std::optional<LogEntry> finished = std::exchange(begun_, std::move(entry));
            if (finished) {
                return finished;
            }
        } else if (begun_ && begun_->text.size() + line.size() < kLongestEntry) {
            begun_->text += '\n' + line;
        }
    }
    return std::exchange(begun_, std::nullopt);
}

// Text between the objects does not matter.
bool LogReader::readObject(std::string& object) {
    object.clear();
    std::size_t depth = 0;
    bool inString = false;
    bool escaped = false;
    for (int byte = nextByte(); byte != kEnd; byte = nextByte()) {
        line_ += byte == '\n' ? 1 : 0;
        if (depth == 0 && byte != '{') {
            continue;
        }
        appendBounded(object, static_cast<char>(byte));
        if (inString) {
            inString = escaped || byte != '"';
            escaped = !escaped && byte == '\\';
            continue;
        }
        inString = byte == '"';
        depth += byte == '{' ? 1 : 0;
        depth -= byte == '}' ? 1 : 0;
        if (depth == 0) {
            return true;
        }
    }
    endsInTheMiddle_ = depth > 0;
    return false;
}

std::optional<LogEntry> LogReader::nextFromJson() {
    std::string object;
    for (;;) {
        if (!readObject(object)) {
            return std::nullopt;
        }
        if (std::optional<LogEntry> entry = entryFromJson(object)) {
            entry->line = line_ + 1;
            return entry;
        }
    }
}

}  // namespace Inspect
