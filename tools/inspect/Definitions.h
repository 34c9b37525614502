#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Inspect {

/// The kind of a value on the command line, for completions.
enum class ValueKind : std::uint8_t { none, file, folder, number, word };

struct OptionDefinition {
    /// With its dashes.
    std::string_view name;
    /// The placeholder for its value; empty for a flag.
    std::string_view value;
    ValueKind kind = ValueKind::none;
    std::string_view what;
    /// Options that exclude this one.
    std::vector<std::string_view> excludes{};
};

/// The one word that a command takes besides its options.
struct ArgumentDefinition {
    std::string_view name;
    ValueKind kind = ValueKind::word;
    std::string_view what;
    /// The words that it may be; empty for any.
    std::vector<std::string> choices{};
    /// Whether it may be missing.
    bool isOptional = false;
};

struct StatusDefinition {
    int status = 0;
    std::string_view meaning;
};

struct ExampleDefinition {
    /// The text after "sentrel-inspect ".
    std::string_view line;
    std::string_view what;
};

/// The contents of the command line.
struct Arguments {
    std::string argument;
    /// By name; a flag's value is empty.
    std::map<std::string, std::string, std::less<>> options;

    [[nodiscard]] bool has(std::string_view option) const { return options.contains(option); }
    [[nodiscard]] std::optional<std::string> value(std::string_view option) const {
        const auto found = options.find(option);
        return found == options.end() ? std::nullopt : std::optional(found->second);
    }
};

/// A command: its name, its texts for help, manual page and completion, and its action.
struct CommandDefinition {
    std::string_view name;
    /// One phrase, without a full stop.
    std::string_view summary;
    /// A paragraph or more, one line of text each.
    std::vector<std::string> text;
    std::optional<ArgumentDefinition> argument;
    std::vector<OptionDefinition> options;
    std::vector<StatusDefinition> statuses;
    /// Two for each command.
    std::vector<ExampleDefinition> examples;
    /// Carries out the command and returns the exit status.
    int (*run)(const Arguments& arguments);
};

/// All commands, in the order of their explanation.
[[nodiscard]] const std::vector<CommandDefinition>& commandDefinitions();
/// Their names, in the same order.
[[nodiscard]] std::vector<std::string> namesOf(const std::vector<CommandDefinition>& commands);

/// The purpose of the whole program.
inline constexpr std::string_view kProgramSummary =
    "Shows what is on a Mac of Sentrel, what an uninstallation or installation does, and what was sent. "
    "Changes nothing.";

}  // namespace Inspect
