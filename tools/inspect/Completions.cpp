#include "Documents.h"

#include <algorithm>

namespace Inspect {

namespace {

std::string joined(const std::vector<std::string>& words, const char* between) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : between) + word;
    }
    return text;
}

/// The words that may follow a command.
std::vector<std::string> wordsOf(const CommandDefinition& command) {
    std::vector<std::string> words;
    if (command.argument) {
        words = command.argument->choices;
    }
    for (const OptionDefinition& option : command.options) {
        words.emplace_back(option.name);
    }
    words.emplace_back("--help");
    return words;
}

/// The options that take a value.
std::vector<std::string> optionsWithValue(const std::vector<CommandDefinition>& commands) {
    std::vector<std::string> options;
    for (const CommandDefinition& command : commands) {
        for (const OptionDefinition& option : command.options) {
            const std::string name(option.name);
            if (!option.value.empty() && std::find(options.begin(), options.end(), name) == options.end()) {
                options.push_back(name);
            }
        }
    }
    return options;
}

/// `text` for a quoted word of zsh in which brackets and colons have a meaning.
std::string quoted(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\'') {
            result += "'\\''";
        } else {
            result += c == '[' || c == ']' || c == ':' ? std::string("\\") + c : std::string(1, c);
        }
    }
    return result;
}

/// zsh's action for completing a value: nothing for what is no file.
std::string actionFor(ValueKind kind) {
    if (kind == ValueKind::file) {
        return "_files";
    }
    return kind == ValueKind::folder ? "_files -/" : " ";
}

std::string zshArguments(const CommandDefinition& command) {
    std::string text;
    for (const OptionDefinition& option : command.options) {
        text += " \\\n                '" + std::string(option.name) + "[" + quoted(option.what) + "]";
        text +=
            option.value.empty() ? "'" : ":" + std::string(option.value) + ":" + actionFor(option.kind) + "'";
    }
    text += " \\\n                '--help[shows the help]'";
    if (command.argument) {
        const auto& choices = command.argument->choices;
        text += " \\\n                '1:" + std::string(command.argument->name) + ":" +
                (choices.empty() ? actionFor(command.argument->kind) : "(" + joined(choices, " ") + ")") +
                "'";
    }
    return text;
}

}  // namespace

std::string bashCompletion(const std::vector<CommandDefinition>& commands) {
    std::string text =
        "# Completion of sentrel-inspect for bash 3.2 and later.\n"
        "_sentrel_inspect() {\n"
        "    local command=\"\" words=\"\" word\n"
        "    COMPREPLY=()\n"
        "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
        "        case \"$word\" in\n"
        "            " +
        joined(namesOf(commands), " | ") +
        ")\n"
        "                command=$word\n"
        "                break\n"
        "                ;;\n"
        "        esac\n"
        "    done\n"
        "    # The value of an option is a file name, or nothing that can be known.\n"
        "    case \"${COMP_WORDS[COMP_CWORD-1]}\" in\n"
        "        " +
        joined(optionsWithValue(commands), " | ") +
        ") return ;;\n"
        "    esac\n"
        "    case \"$command\" in\n"
        "        \"\") words=\"" +
        joined(namesOf(commands), " ") + " --help --version\" ;;\n";
    for (const CommandDefinition& command : commands) {
        text +=
            "        " + std::string(command.name) + ") words=\"" + joined(wordsOf(command), " ") + "\" ;;\n";
    }
    return text +
           "    esac\n"
           "    while read -r word; do\n"
           "        COMPREPLY[${#COMPREPLY[@]}]=$word\n"
           "    done < <(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n"
           "}\n"
           "complete -o default -F _sentrel_inspect sentrel-inspect\n";
}

std::string zshCompletion(const std::vector<CommandDefinition>& commands) {
    std::string text =
        "#compdef sentrel-inspect\n"
        "# Completion of sentrel-inspect for zsh.\n"
        "_sentrel_inspect() {\n"
        "    local -a commands\n"
        "    commands=(\n";
    for (const CommandDefinition& command : commands) {
        text += "        '" + std::string(command.name) + ":" + quoted(command.summary) + "'\n";
    }
    text +=
        "    )\n"
        "    if ((CURRENT == 2)); then\n"
        "        _arguments '--help[shows the help]' '--version[shows the version]' '1: :->command'\n"
        "        _describe command commands\n"
        "        return\n"
        "    fi\n"
        "    local command=$words[2]\n"
        "    shift words\n"
        "    ((CURRENT--))\n"
        "    case $command in\n";
    for (const CommandDefinition& command : commands) {
        text += "        " + std::string(command.name) + ")\n            _arguments" + zshArguments(command) +
                "\n            ;;\n";
    }
    return text +
           "    esac\n"
           "}\n"
           "_sentrel_inspect \"$@\"\n";
}

}  // namespace Inspect
