// sentrel-inspect: shows what an uninstallation or installation would do and what was sent. Reads only; the
// one thing that it ever writes is the archive that it was asked for.

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
#include "inspect/explain/Explain.h"
#include "inspect/explain/RunReport.h"

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
    return fail(kRefused,
                (file == "-" ? std::string(standardStream) : name) + ": " + shown(std::string_view(why)));
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

/// The report on a log: text, JSON, or a page that is written to `page`.
int explain(const std::string& file, bool json, bool allSteps, const std::optional<std::string>& page) {
    std::string why;
    std::string notice;
    const auto runs = runsOfLog(file, why, notice);
    if (!runs) {
        return refuse(file, "standard input", why);
    }
    if (!notice.empty()) {
        std::cerr << "sentrel-inspect: " << notice << '\n';
    }
    if (page && *page != "-") {
        const std::string text = runPage(*runs);
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        if (!replaceFile(*page, {bytes, text.size()}, why)) {
            return refuse(*page, "standard output", why);
        }
    } else if (page) {
        return print(runPage(*runs));
    }
    return print(json ? jsonText(runJson(*runs)) : runReport(*runs, allSteps, outputWidth()));
}

/// The folders of a payload as the command line names them.
struct PayloadFolders {
    std::optional<std::string> applications;
    std::optional<std::string> launchdJobs;
    std::optional<std::string> supportFiles;
};

/// What the command line asks for.
struct Request {
    std::function<int()> run;
    std::string list;
    PayloadFolders payload;
    std::string file;
    std::optional<std::string> archive;
    std::optional<std::string> page;
    bool json = false;
    bool allSteps = false;
};

/// The folder that an option names, which is given exactly where the list uses it.
Base::URL payloadFolder(const NamedCommandList& list, const char* option, bool isUsed,
                        const std::optional<std::string>& given) {
    if (isUsed != given.has_value()) {
        throw CLI::ValidationError(std::string(list.name) + (isUsed ? " needs " : " takes no ") + option);
    }
    return Base::URL::fileURL(given.value_or("/"));
}

InstallCommon::PayloadLocations payloadOf(const NamedCommandList& list, const PayloadFolders& given) {
    return {payloadFolder(list, "--applications", list.uses.applications, given.applications),
            payloadFolder(list, "--launchd-jobs", list.uses.launchdJobs, given.launchdJobs),
            payloadFolder(list, "--support-files", list.uses.supportFiles, given.supportFiles)};
}

void addPayloadFolders(CLI::App& command, PayloadFolders& folders) {
    const auto add = [&command](const char* option, std::optional<std::string>& folder, const char* what) {
        command.add_option(option, folder, std::string(what) + ", an absolute path")
            ->type_name("DIR")
            ->check([](const std::string& path) {
                return path.starts_with('/') ? std::string() : '"' + path + "\" is no absolute path";
            });
    };
    add("--applications", folders.applications, "The payload's folder of applications");
    add("--launchd-jobs", folders.launchdJobs, "The payload's folder of launchd jobs");
    add("--support-files", folders.supportFiles, "The payload's folder of support files");
}

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
    addPayloadFolders(*command, request.payload);
    auto* json = command->add_flag("--json", request.json, "An array of objects");
    command
        ->add_option("--archive", request.archive, "Writes the archive as it travels; - is standard output")
        ->type_name("FILE")
        ->excludes(json);
    command->callback([&request] {
        const NamedCommandList& list = *findCommandList(request.list);
        request.run = [&request, &list, payload = payloadOf(list, request.payload)] {
            const InstallCommon::CommandList commands = list.make(payload);
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

void addExplain(CLI::App& app, Request& request) {
    auto* command = app.add_subcommand("explain", "Says what happened, from a system log");
    command
        ->add_option("LOG", request.file, "A system log in any of its forms; - or nothing is standard input")
        ->type_name("")
        ->default_str("-");
    auto* json = command->add_flag("--json", request.json, "An object with every run and step");
    command->add_flag("--all", request.allSteps, "Shows every step, not only what failed")->excludes(json);
    command->add_option("--html", request.page, "Writes the report as one page as well; - is standard output")
        ->type_name("FILE");
    command->callback([&request] {
        request.run = [&request] {
            return explain(request.file.empty() ? "-" : request.file, request.json, request.allSteps,
                           request.page);
        };
    });
}

int run(int argc, char** argv) {
    CLI::App app{
        "Shows what an uninstallation or installation of Sentrel would do and what was sent. Changes "
        "nothing.",
        "sentrel-inspect"};
    app.set_version_flag("--version", "sentrel-inspect " SENTREL_VERSION " (" SENTREL_BUILD ")");
    app.require_subcommand(0, 1);
    Request request;
    addCommands(app, request);
    addDecode(app, request);
    addCatalogue(app, request);
    addExplain(app, request);
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
                       : fail(kMisuse, "a subcommand is required: commands, decode, catalogue or explain");
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
