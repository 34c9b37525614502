// sentrel-inspect: shows what an uninstallation would do and what was sent. Reads only; the one thing that it
// ever writes is the archive that it was asked for.

#include <signal.h>

#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "ArchiveInput.h"
#include "Base/KeyedArchiver.h"
#include "CatalogueReport.h"
#include "CommandJson.h"
#include "CommandLists.h"
#include "CommandTable.h"
#include "DisplayText.h"
#include "Files.h"
#include "Platform/SystemPorts.h"
#include "ReadOnlyPorts.h"

namespace Inspect {

namespace {

constexpr int kDone = 0;
constexpr int kRefused = 1;
constexpr int kMisuse = 2;

int fail(int status, const std::string& line) {
    std::cerr << "sentrel-inspect: " << line << '\n';
    return status;
}

int refuse(const std::string& file, std::string_view standardStream, const std::string& why) {
    const std::string name = file.empty() ? "\"\"" : shown(std::string_view(file));
    return fail(kRefused, (file == "-" ? std::string(standardStream) : name) + ": " + why);
}

int print(std::string_view text) {
    std::string why;
    return writeStandardOutput(text, why) ? kDone : refuse("-", "standard output", why);
}

int printCommands(const InstallCommon::CommandList& commands, bool json) {
    return print(json ? jsonText(toJson(commands)) : commandTable(commands, outputWidth()));
}

int writeArchive(const InstallCommon::CommandList& commands, const std::string& file) {
    std::vector<const Base::CodedObject*> objects;
    objects.reserve(commands.size());
    for (const auto& command : commands) {
        objects.push_back(command.get());
    }
    const std::vector<std::uint8_t> archive = Base::archivedArray(objects);
    if (file == "-") {
        return print({reinterpret_cast<const char*>(archive.data()), archive.size()});
    }
    std::string why;
    return replaceFile(file, archive, why) ? kDone : refuse(file, "standard output", why);
}

int decode(const std::string& file, bool json) {
    std::string why;
    const auto bytes = readFile(file, kLargestArchive, why);
    const auto commands = bytes ? decodeCommandList(*bytes, why) : std::nullopt;
    return commands ? printCommands(*commands, json) : refuse(file, "standard input", why);
}

int printCatalogue(bool json) {
    const Json all = catalogue();
    return print(json ? jsonText(all) : catalogueText(all));
}

/// What the command line asks for.
struct Request {
    std::function<int()> run;
    std::string list;
    std::string file;
    std::optional<std::string> archive;
    bool json = false;
};

void addCommands(CLI::App& app, Request& request) {
    auto* command =
        app.add_subcommand("commands", "Shows the commands of a list in order, or writes its archive");
    command->add_option("LIST", request.list, commandListNames())
        ->required()
        ->type_name("")
        ->check([](const std::string& name) {
            return findCommandList(name) != nullptr ? std::string()
                                                    : '"' + name + "\" is none of " + commandListNames();
        });
    command->footer(describeCommandLists());
    auto* json = command->add_flag("--json", request.json, "An array of objects");
    command
        ->add_option("--archive", request.archive, "Writes the archive as it travels; - is standard output")
        ->type_name("FILE")
        ->excludes(json);
    command->callback([&request] {
        request.run = [&request] {
            const InstallCommon::CommandList commands = findCommandList(request.list)->make();
            return request.archive ? writeArchive(commands, *request.archive)
                                   : printCommands(commands, request.json);
        };
    });
}

void addDecode(CLI::App& app, Request& request) {
    auto* command = app.add_subcommand("decode", "Decodes an archive of a command list as the helper does");
    command->add_option("FILE", request.file, "A property list, binary or XML; - is standard input")
        ->required()
        ->type_name("");
    command->add_flag("--json", request.json, "An array of objects");
    command->callback(
        [&request] { request.run = [&request] { return decode(request.file, request.json); }; });
}

void addCatalogue(CLI::App& app, Request& request) {
    auto* command =
        app.add_subcommand("catalogue", "Shows where everything lies, in this version and earlier ones");
    command->add_flag("--json", request.json, "An object for each provider");
    command->callback([&request] { request.run = [&request] { return printCatalogue(request.json); }; });
}

int run(int argc, char** argv) {
    CLI::App app{"Shows what an uninstallation of Sentrel would do and what was sent. Changes nothing.",
                 "sentrel-inspect"};
    app.set_version_flag("--version", "sentrel-inspect " SENTREL_VERSION " (" SENTREL_BUILD ")");
    app.require_subcommand(0, 1);
    Request request;
    addCommands(app, request);
    addDecode(app, request);
    addCatalogue(app, request);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        std::ostringstream text;
        app.exit(asked, text, text);
        return print(text.str());
    } catch (const CLI::ParseError& misuse) {
        return fail(kMisuse, shown(std::string_view(misuse.what())));
    }
    return request.run ? request.run()
                       : fail(kMisuse, "a subcommand is required: commands, decode or catalogue");
}

}  // namespace

}  // namespace Inspect

int main(int argc, char** argv) {
    // A full disk or a file size limit is a refusal like any other.
    ::signal(SIGXFSZ, SIG_IGN);
    Platform::SystemPorts::setCurrent(&Tools::readOnlyPorts());
    try {
        return Inspect::run(argc, argv);
    } catch (const std::exception& failure) {
        return Inspect::fail(Inspect::kRefused, failure.what());
    }
}
