// The texts of the command line, which help, manual pages and completions share.

#include "Definitions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>

#include "CommandLists.h"

namespace {

using Inspect::CommandDefinition;
using Inspect::commandDefinitions;
using Inspect::namesOf;
using Inspect::OptionDefinition;
using Names = std::vector<std::string>;

bool isWord(std::string_view text, std::string_view characters) {
    return !text.empty() && text.find_first_not_of(characters) == std::string_view::npos;
}

/// Whether a text is the end of a sentence that begins elsewhere: a word or a bracket comes last.
bool isPhrase(std::string_view text) {
    return !text.empty() &&
           (std::isalnum(static_cast<unsigned char>(text.back())) != 0 || text.back() == ')');
}

bool isSmall(std::string_view text) {
    return isPhrase(text) &&
           (std::isupper(static_cast<unsigned char>(text[0])) == 0 || text.starts_with("JSON"));
}

/// Whether a text has words and punctuation alone, which every reader of the definitions shows as they are.
bool isPlain(std::string_view text) {
    constexpr std::string_view kCharacters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 ,.;:'()-/";
    return isWord(text, kCharacters) && text.find("  ") == std::string_view::npos;
}

TEST(Definitions, AreWordsAndPunctuation) {
    for (const CommandDefinition& command : commandDefinitions()) {
        EXPECT_TRUE(isPlain(command.summary)) << command.summary;
        for (const std::string& paragraph : command.text) {
            EXPECT_TRUE(isPlain(paragraph) || paragraph == Inspect::describeCommandLists()) << paragraph;
        }
        for (const OptionDefinition& option : command.options) {
            EXPECT_TRUE(isPlain(option.what)) << option.what;
        }
        EXPECT_TRUE(!command.argument || isPlain(command.argument->what)) << command.name;
        for (const auto& status : command.statuses) {
            EXPECT_TRUE(isPlain(status.meaning)) << status.meaning;
        }
        for (const auto& example : command.examples) {
            EXPECT_TRUE(isPlain(example.what)) << example.what;
        }
    }
}

TEST(Definitions, NameTheCommandsInOrder) {
    EXPECT_EQ(namesOf(commandDefinitions()),
              (Names{"scan", "plan", "verify", "explain", "find", "commands", "decode", "catalogue"}));
    EXPECT_EQ(namesOf({}), Names{});
}

TEST(Definitions, SayWhatACommandDoesInAPhrase) {
    for (const CommandDefinition& command : commandDefinitions()) {
        EXPECT_TRUE(isPhrase(command.summary)) << command.summary;
        EXPECT_NE(std::isupper(static_cast<unsigned char>(command.summary.front())), 0) << command.summary;
    }
}

TEST(Definitions, DescribeACommandInSentences) {
    for (const CommandDefinition& command : commandDefinitions()) {
        ASSERT_FALSE(command.text.empty()) << command.name;
        for (const std::string& paragraph : command.text) {
            EXPECT_NE(std::isupper(static_cast<unsigned char>(paragraph.front())), 0) << paragraph;
            EXPECT_TRUE(paragraph.ends_with('.') || paragraph == Inspect::describeCommandLists())
                << paragraph;
        }
    }
}

TEST(Definitions, ExplainOptionsAndArguments) {
    constexpr std::string_view kCapitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    constexpr std::string_view kSmall = "abcdefghijklmnopqrstuvwxyz-";
    for (const CommandDefinition& command : commandDefinitions()) {
        std::set<std::string_view> names;
        for (const OptionDefinition& option : command.options) {
            EXPECT_TRUE(option.name.starts_with("--") && isWord(option.name, kSmall)) << option.name;
            EXPECT_TRUE(option.value.empty() || isWord(option.value, kCapitals)) << option.value;
            EXPECT_EQ(option.value.empty(), option.kind == Inspect::ValueKind::none) << option.name;
            EXPECT_TRUE(isSmall(option.what)) << option.what;
            EXPECT_TRUE(names.insert(option.name).second) << option.name;
        }
        if (command.argument) {
            EXPECT_TRUE(isWord(command.argument->name, kCapitals)) << command.argument->name;
            EXPECT_TRUE(isSmall(command.argument->what)) << command.argument->what;
        }
    }
}

TEST(Definitions, ExplainStatusesInOrder) {
    for (const CommandDefinition& command : commandDefinitions()) {
        for (std::size_t index = 0; index < command.statuses.size(); ++index) {
            EXPECT_EQ(command.statuses[index].status, static_cast<int>(index)) << command.name;
            EXPECT_TRUE(isSmall(command.statuses[index].meaning)) << command.statuses[index].meaning;
        }
        EXPECT_GE(command.statuses.size(), 3U) << command.name;
    }
}

/// A command with the words behind it, as an example writes it: "sentrel-inspect" begins another one.
struct Call {
    std::string command;
    Names words;
};

std::vector<Call> callsOf(std::string_view example) {
    std::vector<Call> calls(1);
    std::istringstream words{std::string(example)};
    for (std::string word; words >> word;) {
        if (word == "sentrel-inspect") {
            calls.emplace_back();
        } else if (calls.back().command.empty()) {
            calls.back().command = word;
        } else {
            calls.back().words.push_back(word);
        }
    }
    return calls;
}

/// Whether the command exists, has the options and takes the first word that is none.
bool isValid(const Call& call) {
    const auto& all = commandDefinitions();
    const auto command = std::find_if(
        all.begin(), all.end(), [&call](const CommandDefinition& each) { return each.name == call.command; });
    if (command == all.end()) {
        return false;
    }
    for (const std::string& word : call.words) {
        if (word.starts_with("--") &&
            std::none_of(command->options.begin(), command->options.end(),
                         [&word](const OptionDefinition& option) { return option.name == word; })) {
            return false;
        }
    }
    const auto& argument = command->argument;
    return !argument || argument->choices.empty() ||
           std::count(argument->choices.begin(), argument->choices.end(), call.words.at(0)) == 1;
}

TEST(Definitions, HaveTwoExamplesOfEachCommand) {
    for (const CommandDefinition& command : commandDefinitions()) {
        ASSERT_EQ(command.examples.size(), 2U) << command.name;
        for (const auto& example : command.examples) {
            const std::vector<Call> calls = callsOf(example.line);
            EXPECT_TRUE(std::all_of(calls.begin(), calls.end(), &isValid)) << example.line;
            EXPECT_TRUE(std::any_of(calls.begin(), calls.end(), [&command](const Call& call) {
                return call.command == command.name;
            })) << example.line;
            EXPECT_TRUE(isSmall(example.what)) << example.what;
        }
    }
}

}  // namespace
