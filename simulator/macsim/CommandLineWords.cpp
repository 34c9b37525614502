#include "macsim/CommandLineWords.h"

#include <vector>

#include <CLI/CLI.hpp>

#include "Suggestion.h"
#include "Support/Faults.h"
#include "macsim/ProductLayout.h"

namespace Simulator {

namespace {

constexpr std::size_t kFaultWidth = 24;

std::vector<std::string> optionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

std::vector<std::string> commandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
        names.push_back(command->get_name());
    }
    return names;
}

}  // namespace

std::string unexpectedWord(const CLI::App& app, const std::string& otherwise) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    const CLI::App& command = chosen.empty() ? app : *chosen.front();
    // A command's own words come before those of the program.
    std::vector<std::string> words = command.remaining(true);
    if (words.empty()) {
        words = app.remaining(true);
    }
    if (words.empty()) {
        return otherwise;
    }
    const std::string word = words.front().substr(0, words.front().find('='));
    const std::string of = chosen.empty() ? "" : " of " + command.get_name();
    if (word.starts_with('-')) {
        return "'" + word + "' is not an option" + of + Tools::didYouMean(word, optionNames(command));
    }
    if (chosen.empty()) {
        return "'" + words.front() + "' is not a command" + Tools::didYouMean(word, commandNames(app));
    }
    return "'" + words.front() + "' is one word too many for " + command.get_name();
}

std::string faultList() {
    std::string text = "Faults:";
    for (const FaultKind& kind : faultKinds()) {
        std::string name(kind.name);
        if (!kind.value.empty()) {
            name += "=" + std::string(kind.value);
        }
        name.resize(std::max(kFaultWidth, name.size() + 1), ' ');
        text += "\n  " + name + std::string(kind.explanation);
    }
    return text;
}

std::string generationList() {
    std::string text = "Generations, earliest first:";
    for (const std::string_view generation : generations()) {
        text += " " + std::string(generation);
    }
    return text;
}

}  // namespace Simulator
