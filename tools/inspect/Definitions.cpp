#include "Definitions.h"

#include "CommandLists.h"
#include "Commands.h"

namespace Inspect {

namespace {

const OptionDefinition kJson{"--json", "", ValueKind::none, "JSON in place of text"};
const OptionDefinition kRoot{"--root", "DIR", ValueKind::folder,
                             "looks at the files of a Mac in this folder, a mounted disk for instance; jobs, "
                             "processes and loaded extensions are not looked at"};

const std::vector<StatusDefinition> kPlain{
    {0, "done"},
    {1, "a file could not be read or written, or an archive was refused"},
    {2, "the command line is invalid"}};

const std::vector<StatusDefinition> kVerdict{
    {0, "nothing of the product is there"},
    {1, "not everything could be looked at, and no installation was found"},
    {2, "the command line is invalid"},
    {3, "the product is installed"},
    {4, "the product is not installed, but something of it is left"},
    {5, "only a restart is missing: an extension is loaded, or a job's files are gone"}};

CommandDefinition scanDefinition() {
    return {"scan",
            "Shows which parts of the product are on this Mac",
            {"Version, generations, every item with its kind and size, jobs, processes, loaded kernel "
             "extensions, launchd's overrides; for leftovers, the lines that remove them."},
            std::nullopt,
            {kJson,
             kRoot,
             {"--removal-lines", "", ValueKind::none, "only the lines that remove what is left", {"--json"}},
             {"--plain",
              "",
              ValueKind::none,
              "one fact per line, for a shell script",
              {"--json", "--removal-lines"}}},
            kVerdict,
            {{"scan", "what is on this Mac"},
             {"scan --root '/Volumes/Macintosh HD' --json", "what is on a mounted disk, for a program"}},
            &runScan};
}

CommandDefinition verifyDefinition() {
    return {"verify",
            "Checks whether anything is left after an uninstallation",
            {"One line for everything that was found or could not be looked at, and a last line with the "
             "result. Made for logs."},
            std::nullopt,
            {kJson,
             kRoot,
             {"--wait",
              "SECONDS",
              ValueKind::number,
              "waits that long at most until the uninstaller's helpers have finished",
              {"--root"}}},
            kVerdict,
            {{"verify --wait 120", "after a silent run: waits for the helper, then looks"},
             {"verify --json", "the same facts as scan, without sizes"}},
            &runVerify};
}

CommandDefinition planDefinition() {
    return {"plan",
            "Shows what an uninstallation would find, step by step",
            {"The 75 steps in their order, each with what is there now: jobs, processes, extensions, items "
             "with their size. Steps that find nothing are left out. An item that an earlier step takes away "
             "counts there only."},
            std::nullopt,
            {kJson, {"--all", "", ValueKind::none, "also the steps that find nothing"}, kRoot},
            {{0, "the plan was made"},
             {1, "not everything could be looked at; the plan says what"},
             {2, "the command line is invalid"}},
            {{"plan", "what will happen on this Mac"}, {"plan --all --json", "all steps, for a program"}},
            &runPlan};
}

CommandDefinition findDefinition() {
    return {"find",
            "Shows what a path, label or process belongs to",
            {"The records of the catalogue that name it, with their generation, and the steps of an "
             "uninstallation that touch it. Does not look at the disk."},
            ArgumentDefinition{"WHAT", ValueKind::word,
                               "an absolute path, a launchd label, a process's name or a bundle identifier"},
            {kJson},
            {{0, "a part of the product has that name"},
             {1, "no part of the product does"},
             {2, "the command line is invalid"}},
            {{"find com.norvik.TrayMenu", "a job"},
             {"find '/Library/Application Support/NORVIK/SNT/settings.plist'", "a file"}},
            &runFind};
}

CommandDefinition explainDefinition() {
    return {
        "explain",
        "Shows what happened in the runs of a system log",
        {"How each run began and ended, how far it came, what became of every step, and what to do. Every "
         "form of a log is read: the styles of log show, log stream, a system.log and standard error."},
        ArgumentDefinition{
            "LOG", ValueKind::file, "a system log; standard input when it is - or missing", {}, true},
        {kJson,
         {"--all", "", ValueKind::none, "also the successful steps", {"--json"}},
         {"--follow", "", ValueKind::none, "shows the steps while the log grows", {"--json"}},
         {"--html", "FILE", ValueKind::file, "writes the report as one page as well; - is standard output"}},
        {{0, "the log was read"},
         {1, "the log could not be read, or is not one"},
         {2, "the command line is invalid"}},
        {{"explain system.log --html report.html", "what happened, with a page to send"},
         {"explain --json < system.log", "the same, for a program"}},
        &runExplain};
}

CommandDefinition commandsDefinition() {
    return {"commands",
            "Shows the commands of a list in order, or writes its archive",
            {describeCommandLists()},
            ArgumentDefinition{"LIST", ValueKind::word, "the list", commandListNameList()},
            {kJson,
             {"--archive",
              "FILE",
              ValueKind::file,
              "writes the archive as it travels; - is standard output",
              {"--json"}},
             {"--applications", "DIR", ValueKind::folder,
              "the payload's folder of applications, an absolute path"},
             {"--launchd-jobs", "DIR", ValueKind::folder,
              "the payload's folder of launchd jobs, an absolute path"},
             {"--support-files", "DIR", ValueKind::folder,
              "the payload's folder of support files, an absolute path"}},
            kPlain,
            {{"commands uninstall-all", "what an uninstallation does, in which order"},
             {"commands uninstall --archive list.plist", "the first part of it, as it is sent"}},
            &runCommands};
}

CommandDefinition decodeDefinition() {
    return {
        "decode",
        "Decodes an archive of a command list as the helper does",
        {"Refuses whatever the helper would refuse, at the first fault."},
        ArgumentDefinition{"FILE", ValueKind::file, "a property list, binary or XML; - is standard input"},
        {kJson},
        kPlain,
        {{"decode list.plist", "what a recorded list would do"},
         {"commands cleanup --archive - | sentrel-inspect decode -", "there and back"}},
        &runDecode};
}

CommandDefinition catalogueDefinition() {
    return {"catalogue",
            "Shows where everything lies, in this version and earlier ones",
            {"Every property of the three path providers."},
            std::nullopt,
            {kJson},
            kPlain,
            {{"catalogue", "all of it"}, {"catalogue --json", "the same, for a program"}},
            &runCatalogue};
}

}  // namespace

const std::vector<CommandDefinition>& commandDefinitions() {
    static const std::vector<CommandDefinition> definitions{
        scanDefinition(), planDefinition(),     verifyDefinition(), explainDefinition(),
        findDefinition(), commandsDefinition(), decodeDefinition(), catalogueDefinition()};
    return definitions;
}

std::vector<std::string> namesOf(const std::vector<CommandDefinition>& commands) {
    std::vector<std::string> names;
    names.reserve(commands.size());
    for (const CommandDefinition& command : commands) {
        names.emplace_back(command.name);
    }
    return names;
}

}  // namespace Inspect
