// macsim: makes, runs and inspects simulated Macs.

#include <cerrno>
#include <cstring>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>

#include <sys/stat.h>

#include <CLI/CLI.hpp>

#include "Platform/FolderNames.h"
#include "macsim/CommandLineWords.h"
#include "macsim/Commands.h"
#include "macsim/Namespaces.h"
#include "macsim/Refusal.h"

namespace Simulator {

namespace {

/// The action that the command line asks for, and its needs of the kernel.
struct Action {
    std::function<int()> run;
    bool needsUserIds = false;
    bool boots = false;
};

/// Splits "SHORT/BUILD".
void readVersion(const std::string& text, std::string& shortVersion, std::string& build) {
    const std::size_t slash = text.find('/');
    if (slash == 0 || slash == std::string::npos || slash + 1 == text.size()) {
        throw Refusal("'" + text + "' is not SHORT/BUILD", Refusal::kMisuse);
    }
    shortVersion = text.substr(0, slash);
    build = text.substr(slash + 1);
}

void readFaults(const std::vector<std::string>& texts, Faults& faults) {
    for (const std::string& text : texts) {
        if (const auto wrong = addFault(faults, text)) {
            throw Refusal(*wrong, Refusal::kMisuse);
        }
    }
}

/// The options of create, some of them as they stand on the command line.
struct CreateWords {
    CreateOptions options;
    std::string version = SENTREL_DEFAULT_VERSION;
    std::string users = "alice:501,bob:502,carol:503";
    std::vector<std::string> passwords;
    std::string languages = "en";
    std::string size = "small";
};

void addProductOptions(CLI::App& command, CreateWords& words) {
    CreateOptions& options = words.options;
    auto* installed =
        command.add_option("--installed", options.installed, "A generation of the product, or all");
    installed->allow_extra_args(false)->type_name("GENERATION");
    command.add_flag("--empty", options.empty, "An empty Mac (as without --installed)")->excludes(installed);
    command.add_option("--version", words.version, "Version of the product's bundles")
        ->type_name("SHORT/BUILD");
    command.add_option("--parental-control", options.parentalControl, "The product's lock")
        ->check(CLI::IsMember({"off", "on", "refused"}));
    command.add_option("--running", options.running, "Applications that run from the start, or all")
        ->allow_extra_args(false)
        ->delimiter(',');
    command.add_option("--size", words.size, "small or real")->check(CLI::IsMember({"small", "real"}));
    command.add_option("--uninstaller", options.uninstaller, "The uninstaller's bundle");
    command.add_flag("--without-uninstaller", options.withoutUninstaller, "Omits the uninstaller");
}

void addMacOptions(CLI::App& command, CreateWords& words) {
    command.add_option(
        "--users", words.users,
        "The Mac's users; NAME:UID:admin is an administrator, NAME:UID:logged-out has no session");
    command.add_option("--password", words.passwords, "A user's password, by default the user's name")
        ->allow_extra_args(false)
        ->type_name("USER=WORD");
    command.add_option("--language", words.languages, "The users' languages, comma-separated")
        ->type_name("LANG");
    command
        .add_option("--other-antivirus", words.options.otherAntivirus,
                    "app, process, a process name or a path")
        ->allow_extra_args(false);
}

void addCreate(CLI::App& app, Action& action) {
    auto words = std::make_shared<CreateWords>();
    auto* command = app.add_subcommand("create", "Makes a simulated Mac in a new folder");
    command->add_option("DIR", words->options.folder, "The folder; it must be missing or empty")->required();
    addProductOptions(*command, *words);
    addMacOptions(*command, *words);
    command->footer(generationList());
    command->callback([words, &action] {
        CreateOptions& options = words->options;
        readVersion(words->version, options.shortVersion, options.build);
        options.users = parseUsers(words->users, words->passwords);
        options.languages = parseLanguages(words->languages);
        options.realSize = words->size == "real";
        action = {[words] { return createMac(words->options); }, true};
    });
}

void addRun(CLI::App& app, Action& action) {
    auto options = std::make_shared<RunOptions>();
    auto faults = std::make_shared<std::vector<std::string>>();
    auto languages = std::make_shared<std::string>();
    auto* command = app.add_subcommand("run", "Boots a simulated Mac and runs a command in it");
    command->add_option("DIR", options->folder, "The Mac")->required();
    command->add_option("--as", options->user, "The user who runs the command")->type_name("USER");
    command->add_option("--fault", *faults, "Something that goes wrong (see list-faults)")
        ->allow_extra_args(false)
        ->type_name("NAME[=VALUE]");
    command->add_option("--display", options->display, "The X display to use: :N, or host for $DISPLAY")
        ->type_name("DISPLAY");
    auto* language =
        command->add_option("--language", *languages, "The user's languages from now on, comma-separated")
            ->type_name("LANG");
    command
        ->add_option("--wait", options->wait, "Seconds that helpers may continue after the command has ended")
        ->check(CLI::Range(0U, 3600U))
        ->capture_default_str()
        ->type_name("SECONDS");
    command->footer(faultList());
    command->add_option("COMMAND", options->command, "The command, after --")->required();
    command->callback([=, &action] {
        readFaults(*faults, options->faults);
        if (language->count() > 0) {
            options->languages = parseLanguages(*languages);
        }
        action = {[options] { return runMac(*options); }, true, true};
    });
}

void addPayload(CLI::App& app, Action& action) {
    auto options = std::make_shared<PayloadOptions>();
    auto version = std::make_shared<std::string>(SENTREL_DEFAULT_VERSION);
    auto size = std::make_shared<std::string>("small");
    auto* command =
        app.add_subcommand("payload", "Makes a payload of the product's installer in a new folder");
    command->add_option("DIR", options->folder, "The folder; it must be missing or empty")->required();
    command->add_option("--version", *version, "Version of the product")->type_name("SHORT/BUILD");
    command->add_option("--size", *size, "small or real")->check(CLI::IsMember({"small", "real"}));
    command->callback([=, &action] {
        readVersion(*version, options->shortVersion, options->build);
        options->realSize = *size == "real";
        action = {[options] { return makePayload(*options); }};
    });
}

void addInstall(CLI::App& app, Action& action) {
    auto options = std::make_shared<InstallOptions>();
    auto faults = std::make_shared<std::vector<std::string>>();
    auto* command =
        app.add_subcommand("install", "Boots a simulated Mac and runs the product's installer in it");
    command->add_option("DIR", options->folder, "The Mac")->required();
    command->add_option("--payload", options->payload, "A payload made by macsim payload")
        ->required()
        ->type_name("PAYLOAD");
    command->add_flag("--force-overinstall", options->forceOverinstall,
                      "Over-installs even if that is not needed");
    command->add_option("--timeout", options->timeout, "Seconds that the installer waits for the end")
        ->check(CLI::Range(1U, 3600U))
        ->type_name("SECONDS");
    command->add_option("--fault", *faults, "Something that goes wrong (see list-faults)")
        ->allow_extra_args(false)
        ->type_name("NAME[=VALUE]");
    command->footer(faultList());
    command->callback([=, &action] {
        readFaults(*faults, options->faults);
        action = {[options] { return installProduct(*options); }, true, true};
    });
}

void addInspection(CLI::App& app, Action& action) {
    auto folder = std::make_shared<std::string>();
    auto flag = std::make_shared<bool>(false);
    auto* log = app.add_subcommand("log", "Prints the system log");
    log->add_option("DIR", *folder, "The Mac")->required();
    log->add_flag("--follow", *flag, "Continues as the log grows");
    log->callback([=, &action] { action = {[=] { return printLog(*folder, *flag); }}; });
    auto* state = app.add_subcommand("state", "Prints the state of the Mac at the end of its last run");
    state->add_option("DIR", *folder, "The Mac")->required();
    state->add_flag("--json", *flag, "As it was recorded");
    state->callback([=, &action] { action = {[=] { return printState(*folder, *flag); }}; });
    auto* transcript =
        app.add_subcommand("transcript", "Prints the calls of the Mac's tools in its last run");
    transcript->add_option("DIR", *folder, "The Mac")->required();
    transcript->add_flag("--json", *flag, "As it was recorded, one object per line");
    transcript->callback([=, &action] { action = {[=] { return printTranscript(*folder, *flag); }}; });
    app.add_subcommand("list-faults", "Lists everything that can go wrong")->callback([&action] {
        action = {[] { return printFaults(); }};
    });
    app.add_subcommand("list-generations", "Lists the generations of the product that create knows")
        ->callback([&action] { action = {[] { return printGenerations(); }}; });
    auto* remove = app.add_subcommand("delete", "Removes a simulated Mac");
    remove->add_option("DIR", *folder, "The Mac")->required();
    remove->callback([=, &action] { action = {[=] { return deleteMac(*folder); }, true}; });
}

int run(int argc, char** argv) {
    CLI::App app{"Simulated Macs for the product's programs", "macsim"};
    app.set_version_flag("--version", "macsim " SENTREL_VERSION);
    app.require_subcommand(1);
    Action action;
    addCreate(app, action);
    addRun(app, action);
    addPayload(app, action);
    addInstall(app, action);
    addInspection(app, action);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        return app.exit(asked);
    } catch (const CLI::ExtrasError& extra) {
        throw Refusal(unexpectedWord(app, extra.what()), Refusal::kMisuse);
    } catch (const CLI::RequiredError& missing) {
        // An unknown word explains more than the option that is missing because of it.
        throw Refusal(unexpectedWord(app, missing.what()), Refusal::kMisuse);
    } catch (const CLI::ParseError& error) {
        throw Refusal(error.what(), Refusal::kMisuse);
    }
    if (action.needsUserIds) {
        needNamespaces(argv, action.boots);
    }
    return action.run();
}

}  // namespace

}  // namespace Simulator

int main(int argc, char** argv) {
    Platform::SystemPorts::setCurrent(&Platform::folderNamesOnly());
    // A Mac's folders have the same modes whoever makes them.
    ::umask(022);
    try {
        const int status = Simulator::run(argc, argv);
        errno = 0;
        if (!std::cout.flush()) {
            throw Simulator::Refusal(std::string("cannot write to standard output") +
                                     (errno != 0 ? std::string(": ") + std::strerror(errno) : ""));
        }
        return status;
    } catch (const Simulator::Refusal& refusal) {
        std::cerr << "macsim: " << refusal.what() << '\n';
        return refusal.status();
    } catch (const std::exception& failure) {
        std::cerr << "macsim: " << failure.what() << '\n';
        return Simulator::Refusal::kRefused;
    }
}
