// sentrel-inspect: what it refuses, with which line and status.

#include "ForgedArchive.h"
#include "InspectRun.h"
#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"

namespace InspectTest {

namespace {

using Base::Coder;
using InstallCommon::KillProcessCommand;

std::string plistAround(const std::string& content) {
    return "<plist version=\"1.0\">" + content + "</plist>";
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

TEST_F(Inspect, RefusesAClassThatTheHelperDoesNotAllow) {
    const KillProcessCommand first("Closing...", "Sentrel");
    const InstallCommon::CommandConcrete base("Base...");
    expectRefusal(inspect({"decode", "-"}, archiveOf({&first, &base})), 1,
                  "_TtC13InstallCommon15CommandConcrete, which is not allowed");
    const InstallCommon::LaunchdJobCommand job("Job...", {}, true);
    expectRefusal(inspect({"decode", "-"}, archiveOf({&first, &job})), 1,
                  "_TtC13InstallCommon17LaunchdJobCommand, which is not allowed");
}

TEST_F(Inspect, RefusesAListThatHoldsARecordInPlaceOfACommand) {
    const Forged record(NorvikCommon::LaunchdInfo::codedClass());
    expectRefusal(inspect({"decode", "-"}, archiveOf(record)), 1, "contains an object that is not a command");
}

TEST_F(Inspect, RefusesEveryClassWithoutADescription) {
    const Forged job(NorvikCommon::LaunchdInfo::codedClass());
    const Forged kext(NorvikCommon::KextInfo::codedClass());
    const Forged::Keys jobKeys = [&job](Coder& coder) {
        coder.encodeObject("agent", job);
        coder.encodeBool("isDaemon", false);
    };
    const std::vector<Forged> commands{
        Forged(InstallCommon::RemoveCommand::staticClass(),
               [](Coder& coder) {
                   coder.encodeURLs("source", {});
                   coder.encodeBools("destination", {});
               }),
        Forged(InstallCommon::CopyCommand::staticClass(),
               [](Coder& coder) {
                   coder.encodeURLs("source", {});
                   coder.encodeURLs("destination", {});
               }),
        Forged(InstallCommon::StartLaunchdJobCommand::staticClass(), jobKeys),
        Forged(InstallCommon::StopLaunchdJobCommand::staticClass(), jobKeys),
        Forged(KillProcessCommand::staticClass(),
               [](Coder& coder) { coder.encodeString("kext", "Sentrel"); }),
        Forged(InstallCommon::UnloadKextCommand::staticClass(),
               [&kext](Coder& coder) { coder.encodeObject("kext", kext); }),
        Forged(InstallCommon::UpdateLaunchServices::staticClass()),
    };
    const KillProcessCommand first("Closing...", "Sentrel");
    for (const Forged& command : commands) {
        const Outcome outcome = inspect({"decode", "-", "--json"}, archiveOf({&first, &command}));
        expectRefusal(outcome, 1, "command 2 (" + std::string(command.codedClass().runtimeName) + ')');
        expectRefusal(outcome, 1, "\"commandDescription\"");
    }
}

TEST_F(Inspect, RefusesAProcessNameUnderItsPlainKey) {
    const Forged command(KillProcessCommand::staticClass(), [](Coder& coder) {
        coder.encodeString("process", "Sentrel");
        coder.encodeString("commandDescription", "Closing...");
    });
    const Outcome outcome = inspect({"decode", "-"}, archiveOf(command));
    expectRefusal(outcome, 1, "standard input: command 1 (_TtC13InstallCommon18KillProcessCommand): ");
    expectRefusal(outcome, 1, "\"kext\"");
}

TEST_F(Inspect, RefusesAFileThatIsNotAnArchive) {
    const std::string archive = inspect({"commands", "uninstall", "--archive", "-"}).output;
    write("truncated", archive.substr(0, archive.size() / 2));
    write("empty", "");
    write("text", "Just a note.\n");
    write("magic", "bplist00");
    write("other.xml", plistAround("<dict><key>CFBundleName</key><string>Sentrel</string></dict>"));
    std::filesystem::create_directory(path("folder"));
    expectRefusal(inspect({"decode", "truncated"}), 1, "truncated: not a readable binary property list");
    expectRefusal(inspect({"decode", "empty"}), 1, "empty: the file is empty");
    expectRefusal(inspect({"decode", "text"}), 1,
                  "text: neither a binary property list nor the XML form of one");
    expectRefusal(inspect({"decode", "magic"}), 1, "magic: not a readable binary property list");
    expectRefusal(inspect({"decode", "other.xml"}), 1, "other.xml: not a keyed archive");
    expectRefusal(inspect({"decode", "folder"}), 1, "folder: is a folder");
    expectRefusal(inspect({"decode", "missing"}), 1, "missing: No such file or directory");
    expectRefusal(inspect({"decode", ""}), 1, "\"\": No such file or directory");
    expectRefusal(inspect({"decode", "odd\n\x1b[31mname"}), 1, "odd\\x0a\\x1b[31mname: No such file");
}

TEST_F(Inspect, RefusesEveryTruncationOfAnArchiveWithoutACrash) {
    const std::string archive = inspect({"commands", "cleanup", "--archive", "-"}).output;
    const std::string xml = xmlForm(archive);
    constexpr std::size_t kSteps = 24;
    for (std::size_t i = 1; i < kSteps; ++i) {
        expectRefusal(inspect({"decode", "-"}, archive.substr(0, archive.size() * i / kSteps)), 1,
                      "standard input: ");
        expectRefusal(inspect({"decode", "-"}, xml.substr(0, xml.size() * i / kSteps)), 1,
                      "standard input: ");
    }
}

TEST_F(Inspect, RefusesAnXMLFormThatIsBroken) {
    const auto refused = [this](const std::string& xml, std::string_view what) {
        expectRefusal(inspect({"decode", "-"}, xml), 1, what);
    };
    refused("<?xml version=\"1.0\"?>\n<plist><string>\x01</string></plist>",
            "line 2 of the XML form holds a control");
    refused(plistAround("<string>\xFF</string>"), "is not UTF-8");
    refused(plistAround("<array></dict>"), "not a well-formed property list");
    refused(plistAround("<wrong/>"), "not a well-formed property list");
    refused(plistAround("<dict><string>a</string></dict>"), "not a well-formed property list");
    refused("<plist>", "ends within an element");
    refused("<plist></plist></plist>", "closes an element that is not open");
    refused("<plist <", "holds a broken tag");
    refused("<!-- never closed", "does not end");
    refused("<!DOCTYPE plist [<!ENTITY a \"b\">]><plist/>", "declares its own document type");
    refused(plistAround("<string><![CDATA[x</string>"), "CDATA section that does not end");
}

TEST_F(Inspect, BoundsWhatAHostileFileCosts) {
    expectRefusal(inspect({"decode", "-"}, "<plist>" + repeated("<array>", 300000)), 1,
                  "nests deeper than 64");
    expectRefusal(inspect({"decode", "-"}, plistAround("<array>" + repeated("<true/>", 300000) + "</array>")),
                  1, "beyond the limit of 262144 elements");
    expectRefusal(
        inspect({"decode", "-"}, plistAround("<string>" + std::string(5U << 20, 'x') + "</string>")), 1,
        "holds more than 4194304 bytes");
    write("large", "bplist00");
    std::filesystem::resize_file(path("large"), (std::uintmax_t{16} << 20) + 1);
    expectRefusal(inspect({"decode", "large"}), 1, "large: holds more than 16777216 bytes");
    expectRefusal(inspect({"decode", "/dev/zero"}), 1, "/dev/zero: holds more than 16777216 bytes");
}

TEST_F(Inspect, ExplainsMisuseInOneLine) {
    expectRefusal(inspect({}), 2, "a command is required; sentrel-inspect --help names them\n");
    expectRefusal(inspect({"bogus"}), 2, "sentrel-inspect: \"bogus\" is not a command\n");
    expectRefusal(inspect({"scna"}), 2, "\"scna\" is not a command: did you mean scan?\n");
    expectRefusal(inspect({"--bogus"}), 2, "sentrel-inspect: --bogus is not an option\n");
    expectRefusal(inspect({"--versoin"}), 2, "--versoin is not an option: did you mean --version?\n");
    expectRefusal(inspect({"scan", "--jsno"}), 2, "--jsno is not an option of scan: did you mean --json?\n");
    expectRefusal(inspect({"verify", "--wiat=5"}), 2,
                  "--wiat is not an option of verify: did you mean --wait?\n");
    expectRefusal(inspect({"verify", "--wait", "soon"}), 2,
                  "--wait: \"soon\" is not a number of seconds up to 86400\n");
    expectRefusal(inspect({"verify", "--wait", "86401"}), 2, "\"86401\" is not a number");
    expectRefusal(inspect({"verify", "--wait", "5", "--root", "/"}), 2, "--root excludes --wait");
    expectRefusal(inspect({"scan", "--plain", "--json"}), 2, "--json excludes --plain");
    expectRefusal(inspect({"scan", "--plain", "--removal-lines"}), 2, "--removal-lines excludes --plain");
    expectRefusal(inspect({"plan", "extra"}), 2, "\"extra\" is one word too many for plan\n");
    expectRefusal(inspect({"find"}), 2, "WHAT is required");
    expectRefusal(inspect({"find", "com.example"}), 1, "nothing of the product goes by \"com.example\"\n");
    expectRefusal(inspect({"commands", "unistall"}), 2, "over-install: did you mean uninstall?\n");
    expectRefusal(inspect({"commands"}), 2, "LIST is required");
    expectRefusal(inspect({"commands", "everything"}), 2,
                  "\"everything\" is not one of uninstall, cleanup, uninstall-all");
    expectRefusal(inspect({"commands", "Uninstall"}), 2, "\"Uninstall\" is not one of");
    expectRefusal(inspect({"commands", "line\nfeed"}), 2, "line\\x0afeed");
    expectRefusal(inspect({"commands", "cleanup", "--archive"}), 2, "--archive");
    expectRefusal(inspect({"commands", "cleanup", "--json", "--archive", "list"}), 2,
                  "--json excludes --archive");
    expectRefusal(inspect({"commands", "cleanup", "uninstall"}), 2, "uninstall");
    expectRefusal(inspect({"decode"}), 2, "FILE is required");
    expectRefusal(inspect({"decode", "a", "b"}), 2, "b");
    expectRefusal(inspect({"catalogue", "--archive", "list"}), 2, "--archive");
    EXPECT_TRUE(entries().empty());
}

TEST_F(Inspect, ExplainsWhichFoldersOfAPayloadAListTakes) {
    expectRefusal(inspect({"commands", "pre-install"}), 2, "pre-install needs --support-files");
    expectRefusal(inspect({"commands", "pre-install", "--support-files", "/S", "--applications", "/A"}), 2,
                  "pre-install takes no --applications");
    for (const char* list : {"install", "clean-install", "update", "over-install"}) {
        const std::string name = list;
        expectRefusal(inspect({"commands", list, "--launchd-jobs", "/J", "--support-files", "/S"}), 2,
                      name + " needs --applications");
        expectRefusal(inspect({"commands", list, "--applications", "/A", "--support-files", "/S"}), 2,
                      name + " needs --launchd-jobs");
        expectRefusal(inspect({"commands", list, "--applications", "/A", "--launchd-jobs", "/J"}), 2,
                      name + " needs --support-files");
    }
    for (const char* list : {"uninstall", "cleanup", "uninstall-all", "post-install"}) {
        const std::string name = list;
        expectRefusal(inspect({"commands", list, "--launchd-jobs", "/J"}), 2,
                      name + " takes no --launchd-jobs");
    }
    expectRefusal(inspect({"commands", "pre-install", "--support-files", "Support"}), 2,
                  "\"Support\" is not an absolute path");
    expectRefusal(inspect({"commands", "pre-install", "--support-files", ""}), 2,
                  "\"\" is not an absolute path");
    expectRefusal(inspect({"commands", "pre-install", "--support-files", "a\nb"}), 2, "a\\x0ab");
    expectRefusal(inspect({"commands", "pre-install", "--support-files"}), 2, "--support-files");
}

TEST_F(Inspect, ExplainsItselfWhenAsked) {
    const Outcome help = inspect({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.errors, "");
    for (const char* command : {"scan", "plan", "verify", "find", "commands", "decode", "catalogue"}) {
        EXPECT_NE(help.output.find("\n  " + std::string(command) + " "), std::string::npos) << command;
        const std::string text = inspect({command, "--help"}).output;
        EXPECT_NE(text.find("\nExamples:\n  sentrel-inspect " + std::string(command)), std::string::npos)
            << text;
        EXPECT_NE(text.find("\nExit status:\n  0  "), std::string::npos) << text;
    }
    const Outcome lists = inspect({"commands", "--help"});
    EXPECT_EQ(lists.status, 0);
    EXPECT_NE(lists.output.find("\n  uninstall-all "), std::string::npos) << lists.output;
    const Outcome version = inspect({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "sentrel-inspect " SENTREL_VERSION " (" SENTREL_BUILD ")\n");
}

}  // namespace

}  // namespace InspectTest
