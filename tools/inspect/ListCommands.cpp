// The commands that show lists and the catalogue, without looking at any Mac.

#include "ArchiveInput.h"
#include "Base/Archive/KeyedArchiver.h"
#include "CatalogueReport.h"
#include "CommandJson.h"
#include "CommandLists.h"
#include "CommandTable.h"
#include "Commands.h"
#include "DisplayText.h"
#include "Files.h"
#include "Output.h"

namespace Inspect {

namespace {

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

/// Reads the folders of a payload from the command line; each is given exactly if the list uses it.
class PayloadFolders {
  public:
    PayloadFolders(const NamedCommandList& list, const Arguments& arguments)
        : list_(list), arguments_(arguments) {}

    [[nodiscard]] Base::URL folder(std::string_view option, bool isUsed) {
        const std::optional<std::string> given = arguments_.value(option);
        if (isUsed != given.has_value()) {
            complain(std::string(list_.name) + (isUsed ? " needs " : " takes no ") + std::string(option));
        } else if (given && !given->starts_with('/')) {
            complain(std::string(option) + ": \"" + *given + "\" is not an absolute path");
        }
        return Base::URL::fileURL(given.value_or("/"));
    }

    [[nodiscard]] const std::string& complaint() const { return complaint_; }

  private:
    void complain(const std::string& what) {
        if (complaint_.empty()) {
            complaint_ = what;
        }
    }

    const NamedCommandList& list_;
    const Arguments& arguments_;
    std::string complaint_;
};

}  // namespace

int runCommands(const Arguments& arguments) {
    // The command's definition has the names of the lists; a command line with another word is refused.
    const NamedCommandList* const list = findCommandList(arguments.argument);
    PayloadFolders folders(*list, arguments);
    const InstallCommon::PayloadLocations payload{folders.folder("--applications", list->uses.applications),
                                                  folders.folder("--launchd-jobs", list->uses.launchdJobs),
                                                  folders.folder("--support-files", list->uses.supportFiles)};
    if (!folders.complaint().empty()) {
        return fail(kMisuse, shown(std::string_view(folders.complaint())));
    }
    const InstallCommon::CommandList commands = list->make(payload);
    const std::optional<std::string> archive = arguments.value("--archive");
    return archive ? writeArchive(commands, *archive) : printCommands(commands, arguments.has("--json"));
}

int runDecode(const Arguments& arguments) {
    std::string why;
    const auto bytes = readFile(arguments.argument, kLargestArchive, why);
    const auto commands = bytes ? decodeCommandList(*bytes, why) : std::nullopt;
    return commands ? printCommands(*commands, arguments.has("--json"))
                    : refuse(arguments.argument, "standard input", why);
}

int runCatalogue(const Arguments& arguments) {
    const Json all = catalogue();
    return print(arguments.has("--json") ? jsonText(all) : catalogueText(all));
}

}  // namespace Inspect
