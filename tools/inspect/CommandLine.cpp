#include "CommandLine.h"

#include <sstream>

#include <CLI/CLI.hpp>

#include "Definitions.h"
#include "DisplayText.h"
#include "HelpText.h"
#include "Suggestion.h"

namespace Inspect {

namespace {

constexpr std::size_t kWidth = 100;

/// The chosen command and its arguments.
struct Chosen {
    const CommandDefinition* command = nullptr;
    Arguments arguments;
};

/// A description in the form that CLI11's column shows.
std::string described(std::string_view what) {
    constexpr std::size_t kWidth = 70;
    std::string text = wrapped(what, kWidth, 0);
    text.pop_back();
    return text;
}

void addOption(CLI::App& app, const OptionDefinition& option, Arguments& arguments) {
    const std::string name(option.name);
    if (option.value.empty()) {
        app.add_flag_callback(
            name, [&arguments, name] { arguments.options[name]; }, described(option.what));
    } else {
        app.add_option_function<std::string>(
               name, [&arguments, name](const std::string& value) { arguments.options[name] = value; },
               described(option.what))
            ->type_name(std::string(option.value));
    }
}

void addArgument(CLI::App& app, const ArgumentDefinition& argument, Arguments& arguments) {
    app.add_option(std::string(argument.name), arguments.argument, described(argument.what))
        ->required(!argument.isOptional)
        ->type_name("");
}

void addCommand(CLI::App& app, const CommandDefinition& command, Chosen& chosen) {
    CLI::App* const subcommand =
        app.add_subcommand(std::string(command.name), std::string(command.summary) + ".");
    subcommand->footer(helpEpilogue(command));
    for (const OptionDefinition& option : command.options) {
        addOption(*subcommand, option, chosen.arguments);
    }
    for (const OptionDefinition& option : command.options) {
        for (const std::string_view other : option.excludes) {
            subcommand->get_option(std::string(option.name))
                ->excludes(subcommand->get_option(std::string(other)));
        }
    }
    if (command.argument) {
        addArgument(*subcommand, *command.argument, chosen.arguments);
    }
    subcommand->callback([&command, &chosen] { chosen.command = &command; });
}

std::vector<std::string> optionNames(const CommandDefinition* command) {
    std::vector<std::string> names{"--help"};
    if (command == nullptr) {
        names.emplace_back("--version");
        return names;
    }
    for (const OptionDefinition& option : command->options) {
        names.emplace_back(option.name);
    }
    return names;
}

/// The message about an unexpected word.
std::string unexpected(const std::string& word, const CommandDefinition* command) {
    const std::string of = command != nullptr ? " of " + std::string(command->name) : std::string();
    if (word.starts_with('-')) {
        const std::string name = word.substr(0, word.find('='));
        return name + " is not an option" + of + Tools::didYouMean(name, optionNames(command));
    }
    if (command == nullptr) {
        return "\"" + word + "\" is not a command" + Tools::didYouMean(word, namesOf(commandDefinitions()));
    }
    return "\"" + word + "\" is one word too many for " + std::string(command->name);
}

const CommandDefinition* definitionOf(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    for (const CommandDefinition& command : commandDefinitions()) {
        if (!chosen.empty() && chosen.front()->get_name() == command.name) {
            return &command;
        }
    }
    return nullptr;
}

/// The first unexpected word; the command's own come before those of the program.
std::string firstUnexpected(const CLI::App& app, const std::string& otherwise) {
    for (const CLI::App* each : app.get_subcommands()) {
        if (const auto words = each->remaining(true); !words.empty()) {
            return unexpected(words.front(), definitionOf(app));
        }
    }
    const auto words = app.remaining();
    return words.empty() ? otherwise : unexpected(words.front(), nullptr);
}

std::string wrongChoice(const Chosen& chosen) {
    const auto& argument = chosen.command->argument;
    if (!argument || argument->choices.empty()) {
        return {};
    }
    std::string all;
    for (const std::string& choice : argument->choices) {
        if (choice == chosen.arguments.argument) {
            return {};
        }
        all += (all.empty() ? "" : ", ") + choice;
    }
    return "\"" + chosen.arguments.argument + "\" is not one of " + all +
           Tools::didYouMean(chosen.arguments.argument, argument->choices);
}

Request misused(const std::string& why) {
    Request request;
    request.misuse = shown(std::string_view(why));
    return request;
}

}  // namespace

Request readCommandLine(int argc, const char* const* argv) {
    CLI::App app{wrapped(kProgramSummary, kWidth, 0), "sentrel-inspect"};
    app.set_version_flag("--version", "sentrel-inspect " SENTREL_VERSION " (" SENTREL_BUILD ")");
    app.require_subcommand(0, 1);
    app.footer(programEpilogue());
    Chosen chosen;
    for (const CommandDefinition& command : commandDefinitions()) {
        addCommand(app, command, chosen);
    }
    Request request;
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        std::ostringstream text;
        app.exit(asked, text, text);
        request.answer = text.str();
        return request;
    } catch (const CLI::ExtrasError& extra) {
        return misused(firstUnexpected(app, extra.what()));
    } catch (const CLI::ParseError& misuse) {
        return misused(misuse.what());
    }
    if (chosen.command == nullptr) {
        return misused("a command is required; sentrel-inspect --help names them");
    }
    if (const std::string wrong = wrongChoice(chosen); !wrong.empty()) {
        return misused(wrong);
    }
    request.run = [chosen] { return chosen.command->run(chosen.arguments); };
    return request;
}

}  // namespace Inspect
