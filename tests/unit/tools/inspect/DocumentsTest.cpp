// Manual pages and completions, of two commands that have everything a command may have.

#include "Documents.h"

#include <gtest/gtest.h>

#include "HelpText.h"

namespace {

using Inspect::ArgumentDefinition;
using Inspect::CommandDefinition;
using Inspect::ValueKind;

CommandDefinition plainCommand() {
    return {"az",
            "shows 'all'; [a:b]",
            {"One line."},
            std::nullopt,
            {{"--flag", "", ValueKind::none, "it's [a:b]"}},
            {{0, "done"}},
            {{"az", "all of it"}},
            nullptr};
}

CommandDefinition fullCommand() {
    return {"list",
            "lists back\\slashes",
            {"Some text:\n  laid out\n  twice\nand on.", ".Second text:\n  at the end"},
            ArgumentDefinition{"WHAT", ValueKind::word, "the list", {"all", "none"}},
            {{"--json", "", ValueKind::none, "JSON"},
             {"--out", "FILE", ValueKind::file, "writes a file"},
             {"--root", "DIR", ValueKind::folder, "looks there"},
             {"--wait", "SECONDS", ValueKind::number, "waits"},
             {"--name", "WORD", ValueKind::word, "a name"}},
            {{0, "done"}, {13, "refused"}},
            {{"list all", "everything"}, {"list none -x", "nothing"}},
            nullptr};
}

CommandDefinition commandWith(std::string_view name, ValueKind argument) {
    CommandDefinition command = plainCommand();
    command.name = name;
    command.argument = ArgumentDefinition{"IT", argument, "it"};
    command.options = {{"--out", "FILE", ValueKind::none, "none"}};
    return command;
}

TEST(Completion, OfBashNamesCommandsTheirWordsAndOptionsWithAValue) {
    EXPECT_EQ(Inspect::bashCompletion({plainCommand(), fullCommand(), commandWith("more", ValueKind::file)}),
              R"(# Completion of sentrel-inspect for bash 3.2 and later.
_sentrel_inspect() {
    local command="" words="" word
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case "$word" in
            az | list | more)
                command=$word
                break
                ;;
        esac
    done
    # The value of an option is a file name, or nothing that can be known.
    case "${COMP_WORDS[COMP_CWORD-1]}" in
        --out | --root | --wait | --name) return ;;
    esac
    case "$command" in
        "") words="az list more --help --version" ;;
        az) words="--flag --help" ;;
        list) words="all none --json --out --root --wait --name --help" ;;
        more) words="--out --help" ;;
    esac
    while read -r word; do
        COMPREPLY[${#COMPREPLY[@]}]=$word
    done < <(compgen -W "$words" -- "${COMP_WORDS[COMP_CWORD]}")
}
complete -o default -F _sentrel_inspect sentrel-inspect
)");
}

TEST(Completion, OfZshDescribesCommandsOptionsAndValues) {
    EXPECT_EQ(Inspect::zshCompletion({plainCommand(), fullCommand(), commandWith("file", ValueKind::file),
                                      commandWith("folder", ValueKind::folder),
                                      commandWith("number", ValueKind::number)}),
              R"(#compdef sentrel-inspect
# Completion of sentrel-inspect for zsh.
_sentrel_inspect() {
    local -a commands
    commands=(
        'az:shows '\''all'\''; \[a\:b\]'
        'list:lists back\slashes'
        'file:shows '\''all'\''; \[a\:b\]'
        'folder:shows '\''all'\''; \[a\:b\]'
        'number:shows '\''all'\''; \[a\:b\]'
    )
    if ((CURRENT == 2)); then
        _arguments '--help[shows the help]' '--version[shows the version]' '1: :->command'
        _describe command commands
        return
    fi
    local command=$words[2]
    shift words
    ((CURRENT--))
    case $command in
        az)
            _arguments \
                '--flag[it'\''s \[a\:b\]]' \
                '--help[shows the help]'
            ;;
        list)
            _arguments \
                '--json[JSON]' \
                '--out[writes a file]:FILE:_files' \
                '--root[looks there]:DIR:_files -/' \
                '--wait[waits]:SECONDS: ' \
                '--name[a name]:WORD: ' \
                '--help[shows the help]' \
                '1:WHAT:(all none)'
            ;;
        file)
            _arguments \
                '--out[none]:FILE: ' \
                '--help[shows the help]' \
                '1:IT:_files'
            ;;
        folder)
            _arguments \
                '--out[none]:FILE: ' \
                '--help[shows the help]' \
                '1:IT:_files -/'
            ;;
        number)
            _arguments \
                '--out[none]:FILE: ' \
                '--help[shows the help]' \
                '1:IT: '
            ;;
    esac
}
_sentrel_inspect "$@"
)");
}

TEST(Manual, OfTheProgramListsItsCommands) {
    EXPECT_EQ(Inspect::programManual({plainCommand(), fullCommand()}),
              R"(.TH SENTREL\-INSPECT 1 "" "sentrel\-inspect )" SENTREL_VERSION R"(" "Sentrel"
.SH NAME
sentrel\-inspect \- shows what is on a Mac of Sentrel and what an uninstallation does
.SH SYNOPSIS
\fBsentrel\-inspect\fR \fICOMMAND\fR [\fIOPTION\fR]...
.SH DESCRIPTION
Shows what is on a Mac of Sentrel, what an uninstallation or installation does, and what was sent. Changes nothing.
.SH COMMANDS
.TP
\fBaz\fR
shows \(aqall\(aq; [a:b]; see sentrel\-inspect\-az(1).
.TP
\fBlist\fR
lists back\eslashes; see sentrel\-inspect\-list(1).
.SH EXIT STATUS
.TP
\fB0\fR
done; scan, verify: nothing of the product is there
.TP
\fB1\fR
refused, or not everything could be looked at; find: nothing goes by that name
.TP
\fB2\fR
the command line is invalid
.TP
\fB3\fR
scan, verify: the product is installed
.TP
\fB4\fR
scan, verify: something of the product is left
.TP
\fB5\fR
scan, verify: only a restart is missing
.SH EXAMPLES
.TP
\fBsentrel\-inspect scan\fR
what of the product is on this Mac
.TP
\fBsentrel\-inspect commands uninstall\-all\fR
what an uninstallation does, in which order
)");
}

TEST(Manual, OfACommandHasAllItsDefinitionHas) {
    EXPECT_EQ(Inspect::commandManual(fullCommand()),
              R"(.TH SENTREL\-INSPECT\-LIST 1 "" "sentrel\-inspect )" SENTREL_VERSION R"(" "Sentrel"
.SH NAME
sentrel\-inspect\-list \- lists back\eslashes
.SH SYNOPSIS
\fBsentrel\-inspect list\fR [\fIOPTION\fR]... \fIWHAT\fR
.SH DESCRIPTION
Some text:
.nf
  laid out
  twice
.fi
and on.
.PP
\&.Second text:
.nf
  at the end
.fi
.SH OPTIONS
.TP
\fBWHAT\fR
the list
.TP
\fB\-\-json\fR
JSON
.TP
\fB\-\-out\fR \fIFILE\fR
writes a file
.TP
\fB\-\-root\fR \fIDIR\fR
looks there
.TP
\fB\-\-wait\fR \fISECONDS\fR
waits
.TP
\fB\-\-name\fR \fIWORD\fR
a name
.TP
\fB\-\-help\fR
shows the help and exits
.SH EXIT STATUS
.TP
\fB0\fR
done
.TP
\fB13\fR
refused
.SH EXAMPLES
.TP
\fBsentrel\-inspect list all\fR
everything
.TP
\fBsentrel\-inspect list none \-x\fR
nothing
.SH SEE ALSO
sentrel\-inspect(1)
)");
}

TEST(Manual, OfACommandWithoutAnArgumentHasNone) {
    const std::string text = Inspect::commandManual(plainCommand());
    EXPECT_EQ(text.substr(0, text.find(".SH EXIT STATUS")),
              R"(.TH SENTREL\-INSPECT\-AZ 1 "" "sentrel\-inspect )" SENTREL_VERSION R"(" "Sentrel"
.SH NAME
sentrel\-inspect\-az \- shows \(aqall\(aq; [a:b]
.SH SYNOPSIS
\fBsentrel\-inspect az\fR [\fIOPTION\fR]...
.SH DESCRIPTION
One line.
.SH OPTIONS
.TP
\fB\-\-flag\fR
it\(aqs [a:b]
.TP
\fB\-\-help\fR
shows the help and exits
)");
}

TEST(Help, OfACommandEndsWithItsTextExamplesAndStatuses) {
    EXPECT_EQ(Inspect::helpEpilogue(fullCommand()),
              "Some text:\n"
              "  laid out\n"
              "  twice\n"
              "and on.\n"
              "\n"
              ".Second text:\n"
              "  at the end\n"
              "\n"
              "Examples:\n"
              "  sentrel-inspect list all\n"
              "      everything\n"
              "  sentrel-inspect list none -x\n"
              "      nothing\n"
              "\n"
              "Exit status:\n"
              "  0  done\n"
              "  13  refused");
    CommandDefinition talkative = plainCommand();
    talkative.text = {std::string(50, 'a') + ' ' + std::string(49, 'b') + ' ' + std::string(50, 'c') + ' ' +
                      std::string(50, 'd')};
    EXPECT_TRUE(Inspect::helpEpilogue(talkative).starts_with(
        std::string(50, 'a') + ' ' + std::string(49, 'b') + '\n' + std::string(50, 'c') + '\n' +
        std::string(50, 'd') + "\n\nExamples:"));
}

TEST(Help, OfTheProgramEndsWithExamplesStatusesAndAHint) {
    EXPECT_EQ(Inspect::programEpilogue(),
              "Examples:\n"
              "  sentrel-inspect scan\n"
              "      what of the product is on this Mac\n"
              "  sentrel-inspect commands uninstall-all\n"
              "      what an uninstallation does, in which order\n"
              "\n"
              "Exit status:\n"
              "  0  done; scan, verify: nothing of the product is there\n"
              "  1  refused, or not everything could be looked at; find: nothing goes by that name\n"
              "  2  the command line is invalid\n"
              "  3  scan, verify: the product is installed\n"
              "  4  scan, verify: something of the product is left\n"
              "  5  scan, verify: only a restart is missing\n"
              "\n"
              "sentrel-inspect COMMAND --help explains a command.");
}

}  // namespace
