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

/// Whether each "--option" of an example is one of the command before it; names the commands.
bool areKnown(std::string_view line, std::set<std::string_view>& commands) {
    const CommandDefinition* command = nullptr;
    std::istringstream words("sentrel-inspect " + std::string(line));
    for (std::string word; words >> word;) {
        if (word == "sentrel-inspect") {
            words >> word;
            const auto found =
                std::find_if(commandDefinitions().begin(), commandDefinitions().end(),
                             [&word](const CommandDefinition& each) { return each.name == word; });
            if (found == commandDefinitions().end()) {
                return false;
            }
            command = &*found;
            commands.insert(command->name);
        } else if (word.starts_with("--") &&
                   std::none_of(command->options.begin(), command->options.end(),
                                [&word](const OptionDefinition& each) { return each.name == word; })) {
            return false;
        }
    }
    return true;
}

TEST(Definitions, HaveTwoExamplesOfEachCommand) {
    for (const CommandDefinition& command : commandDefinitions()) {
        ASSERT_EQ(command.examples.size(), 2U) << command.name;
        for (const auto& example : command.examples) {
            std::set<std::string_view> commands;
            EXPECT_TRUE(areKnown(example.line, commands)) << example.line;
            EXPECT_TRUE(commands.contains(command.name)) << example.line;
            EXPECT_TRUE(isSmall(example.what)) << example.what;
        }
    }
}

}  // namespace
