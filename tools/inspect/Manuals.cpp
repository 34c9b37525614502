#include "Documents.h"

#include <algorithm>

#include "HelpText.h"

namespace Inspect {

namespace {

/// `text` for a line of a manual page.
std::string roff(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '\\':
                result += "\\e";
                break;
            case '-':
                result += "\\-";
                break;
            case '\'':
                result += "\\(aq";
                break;
            default:
                result += c;
        }
    }
    return result.starts_with('.') ? "\\&" + result : result;
}

std::string heading(const std::string& name, std::string_view summary) {
    std::string capitals = name;
    for (char& c : capitals) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return ".TH " + roff(capitals) +
           " 1 \"\" \"sentrel\\-inspect " SENTREL_VERSION "\" \"Sentrel\"\n.SH NAME\n" + roff(name) +
           " \\- " + roff(summary) + "\n";
}

/// An entry of a list: its name, in bold, and its meaning.
std::string entry(const std::string& name, std::string_view value, std::string_view what) {
    return ".TP\n\\fB" + roff(name) + "\\fR" + (value.empty() ? "" : " \\fI" + roff(value) + "\\fR") + "\n" +
           roff(what) + "\n";
}

std::string optionsSection(const CommandDefinition& command) {
    std::string text = ".SH OPTIONS\n";
    if (command.argument) {
        text += entry(std::string(command.argument->name), "", command.argument->what);
    }
    for (const OptionDefinition& option : command.options) {
        text += entry(std::string(option.name), option.value, option.what);
    }
    return text + entry("--help", "", "shows the help and exits");
}

std::string statusesSection(const std::vector<StatusDefinition>& statuses) {
    std::string text = ".SH EXIT STATUS\n";
    for (const StatusDefinition& status : statuses) {
        text += entry(std::to_string(status.status), "", status.meaning);
    }
    return text;
}

std::string examplesSection(const std::vector<ExampleDefinition>& examples) {
    std::string text = ".SH EXAMPLES\n";
    for (const ExampleDefinition& example : examples) {
        text += entry("sentrel-inspect " + std::string(example.line), "", example.what);
    }
    return text;
}

/// Text that may hold laid-out lines, which begin with blanks.
std::string paragraph(std::string_view text) {
    std::string result;
    bool isLaidOut = false;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        if (line.starts_with(' ') != isLaidOut) {
            isLaidOut = !isLaidOut;
            result += isLaidOut ? ".nf\n" : ".fi\n";
        }
        result += roff(line) + "\n";
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result + (isLaidOut ? ".fi\n" : "");
}

}  // namespace

std::string programManual(const std::vector<CommandDefinition>& commands) {
    std::string text =
        heading("sentrel-inspect", "shows what is on a Mac of Sentrel and what an uninstallation does");
    text += ".SH SYNOPSIS\n\\fBsentrel\\-inspect\\fR \\fICOMMAND\\fR [\\fIOPTION\\fR]...\n";
    text += ".SH DESCRIPTION\n" + roff(kProgramSummary) + "\n.SH COMMANDS\n";
    for (const CommandDefinition& command : commands) {
        text += entry(
            std::string(command.name), "",
            std::string(command.summary) + "; see sentrel-inspect-" + std::string(command.name) + "(1).");
    }
    return text + statusesSection(programStatuses()) + examplesSection(programExamples());
}

std::string commandManual(const CommandDefinition& command) {
    const std::string name = "sentrel-inspect-" + std::string(command.name);
    std::string text = heading(name, command.summary);
    text += ".SH SYNOPSIS\n\\fBsentrel\\-inspect " + roff(command.name) + "\\fR [\\fIOPTION\\fR]...";
    text += command.argument ? " \\fI" + roff(command.argument->name) + "\\fR\n" : "\n";
    text += ".SH DESCRIPTION\n";
    for (std::size_t index = 0; index < command.text.size(); ++index) {
        text += (index > 0 ? ".PP\n" : "") + paragraph(command.text[index]);
    }
    return text + optionsSection(command) + statusesSection(command.statuses) +
           examplesSection(command.examples) + ".SH SEE ALSO\nsentrel\\-inspect(1)\n";
}

}  // namespace Inspect
