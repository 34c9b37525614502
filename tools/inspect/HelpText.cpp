#include "HelpText.h"

#include <algorithm>

namespace Inspect {

namespace {

constexpr std::size_t kWidth = 100;

std::string examplesText(const std::vector<ExampleDefinition>& examples) {
    std::string text = "Examples:";
    for (const ExampleDefinition& example : examples) {
        text.append("\n  sentrel-inspect ").append(example.line);
        text.append("\n      ").append(example.what);
    }
    return text;
}

std::string statusesText(const std::vector<StatusDefinition>& statuses) {
    std::string text = "Exit status:";
    for (const StatusDefinition& status : statuses) {
        text.append("\n  " + std::to_string(status.status) + "  ").append(status.meaning);
    }
    return text;
}

void wrapLine(std::string_view line, std::size_t width, std::size_t indent, std::string& text) {
    std::string out(indent, ' ');
    while (!line.empty()) {
        const std::size_t end = std::min(line.find(' '), line.size());
        const std::string_view word = line.substr(0, end);
        if (out.size() > indent && out.size() + 1 + word.size() > width) {
            text += out + "\n";
            out.assign(indent, ' ');
        }
        out.append(out.size() > indent ? " " : "").append(word);
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    text += out + "\n";
}

}  // namespace

std::string wrapped(std::string_view text, std::size_t width, std::size_t indent) {
    std::string result;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        // A line that begins with blanks has its final layout.
        if (line.starts_with(' ')) {
            result.append(indent, ' ').append(line).append("\n");
        } else {
            wrapLine(line, width, indent, result);
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

std::string helpEpilogue(const CommandDefinition& command) {
    std::string text;
    for (const std::string& paragraph : command.text) {
        text += wrapped(paragraph, kWidth, 0) + "\n";
    }
    return text + examplesText(command.examples) + "\n\n" + statusesText(command.statuses);
}

std::string programEpilogue() {
    return examplesText(programExamples()) + "\n\n" + statusesText(programStatuses()) +
           "\n\nsentrel-inspect COMMAND --help explains a command.";
}

const std::vector<ExampleDefinition>& programExamples() {
    static const std::vector<ExampleDefinition> examples{
        {"scan", "what of the product is on this Mac"},
        {"commands uninstall-all", "what an uninstallation does, in which order"}};
    return examples;
}

const std::vector<StatusDefinition>& programStatuses() {
    static const std::vector<StatusDefinition> statuses{
        {0, "done; scan, verify: nothing of the product is there"},
        {1, "refused, or not everything could be looked at; find: nothing goes by that name"},
        {2, "the command line is invalid"},
        {3, "scan, verify: the product is installed"},
        {4, "scan, verify: something of the product is left"},
        {5, "scan, verify: only a restart is missing"}};
    return statuses;
}

}  // namespace Inspect
