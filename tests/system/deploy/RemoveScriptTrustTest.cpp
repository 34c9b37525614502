// deploy/remove-sentrel.sh: its command line, and whom it trusts with its log and its programs.

#include <gtest/gtest.h>

#include "RemovalMac.h"

namespace DeployTests {

namespace {

using Lines = std::vector<std::string>;

std::string inOneLine(std::string text) {
    for (char& c : text) {
        c = c == '\n' ? '|' : c;
    }
    return text;
}

TEST(CommandLineOfARemoval, IsRefusedInOneLine) {
    RemovalMac mac(kEmpty);
    const std::vector<std::pair<std::string, std::string>> rows{
        {"--pln", "unknown argument \"--pln\"; see --help"},
        {"removal", "unknown argument \"removal\"; see --help"},
        {"''", "unknown argument \"\"; see --help"},
        {"\"$(printf 'a\\033[2J\\nb')\"", "unknown argument \"a?[2J?b\"; see --help"},
        {"--log", "--log needs a value"},
        {"--log ''", "--log needs a value"},
        {"--inspect", "--inspect needs a value"},
        {"--time-limit 0", "--time-limit: \"0\" is not a number of seconds from 1 to 99999"},
        {"--time-limit 1x", "--time-limit: \"1x\" is not a number of seconds from 1 to 99999"},
        {"--time-limit -1", "--time-limit: \"-1\" is not a number of seconds from 1 to 99999"},
        {"--time-limit 100000", "--time-limit: \"100000\" is not a number of seconds from 1 to 99999"},
        {"--plan --log /var/log/removal", "--plan changes nothing and writes no --log"},
        {"--log /no/such/folder", "--log: there is no folder for \"/no/such/folder\""},
        {"--log /var/log/", "--log: \"/var/log/\" is not the name of a file"},
        {"--log /var/log/..", "--log: \"/var/log/..\" is not the name of a file"},
        {"--log /var/log", "--log: \"/var/log\" is not a regular file"},
    };
    std::string all;
    std::string expected;
    for (const auto& [words, message] : rows) {
        all += joined({kScript, " ", words, "; echo $?;"});
        expected += joined({"remove-sentrel.sh: ", message, "|2|"});
    }
    EXPECT_EQ(inOneLine(mac.shell("{ " + all + " } 2>&1").out), expected);
}

TEST(CommandLineOfARemoval, HasAHelpWithEveryExitStatus) {
    RemovalMac mac(kEmpty);
    const auto help = mac.shell(kScript + " --help");
    EXPECT_EQ(help.status, 0);
    for (const char* status :
         {"   0  ", "   1  ", "   2  ", "  10  ", "  11  ", "  12  ", "  13  ", "  14  ", "  15  "}) {
        EXPECT_NE(help.out.find(std::string("\n") + status), std::string::npos) << status;
    }
}

TEST(LogOfARemoval, GrowsInAFolderOfRoots) {
    RemovalMac mac(kEmpty);
    const std::string run = kScript + " --log /var/log/removal.log >/dev/null; ";
    EXPECT_EQ(mac.shell(run + run + "cd /var/log; " + kScript +
                        " --log removal.log >/dev/null; stat -c %a removal.log")
                  .out,
              "600\n");
    const std::string log = mac.contents("/var/log/removal.log");
    EXPECT_EQ(countOf("\"result\":\"nothing\"", log), 3U) << log;
    EXPECT_NE(log.find("Z looked: nothing\n  verdict\tnothing\n"), std::string::npos) << log;
}

TEST(LogOfARemoval, HoldsWhatTheUninstallerAndTheCleaningSaid) {
    RemovalMac mac({"--installed", "antivir", "--users", "alice:501"}, false);
    mac.put("/opt/uninstaller", "#!/bin/sh\necho words of the uninstaller\n", 0755);
    EXPECT_EQ(mac.shell(kScript + " --uninstaller /opt/uninstaller --log /var/log/removal.log").status, 10);
    const std::string log = mac.contents("/var/log/removal.log");
    EXPECT_NE(log.find("attempt 2: /opt/uninstaller --silent\n  words of the uninstaller\n"),
              std::string::npos)
        << log;
}

// Root opens no file where somebody may have put a link: neither at its name nor on the way to it.
TEST(LogOfARemoval, GoesNowhereWhereAUserCouldSendIt) {
    RemovalMac mac(kEmpty);
    mac.put("/etc/precious", "precious");
    ASSERT_EQ(
        mac.shell("ln -s /etc/precious /tmp/link; ln -s /etc/new /tmp/dangling; ln -s /etc /Users/alice/way; "
                  "mkdir -p /Users/alice/logs; echo old >/tmp/old; mkfifo /tmp/fifo; ln -s /etc /tmp/way",
                  "alice")
            .status,
        0);
    ASSERT_EQ(mac.shell("ln -s /etc/precious /var/log/link").status, 0);
    const std::vector<std::pair<std::string, std::string>> rows{
        {"/tmp/link", "\"/tmp/link\" must be a new file, because others can write to its folder"},
        {"/tmp/dangling", "\"/tmp/dangling\" must be a new file, because others can write to its folder"},
        {"/tmp/old", "\"/tmp/old\" must be a new file, because others can write to its folder"},
        {"/tmp/fifo", "\"/tmp/fifo\" must be a new file, because others can write to its folder"},
        {"/tmp/way/new", "\"/tmp/way\" can be changed by others than root"},
        {"/Users/alice/way/new", "\"/Users/alice/way\" can be changed by others than root"},
        {"/Users/alice/logs/new", "\"/Users/alice/logs\" can be changed by others than root"},
        {"/Users/alice/logs/../../../etc/new",
         "\"/Users/alice/logs/../../../etc\" can be changed by others than root"},
        {"/var/log/link", "\"/var/log/link\" is not a regular file"},
    };
    for (const auto& [file, message] : rows) {
        const auto result = mac.shell(joined({kScript, " --log ", file}));
        EXPECT_EQ(result.status, 2) << file;
        EXPECT_EQ(result.out, "") << file;
        EXPECT_EQ(result.err, joined({"remove-sentrel.sh: --log: ", message, "\n"}));
    }
    EXPECT_EQ(mac.contents("/etc/precious"), "precious");
    EXPECT_FALSE(mac.exists("/etc/new"));
    EXPECT_EQ(mac.contents("/tmp/old"), "old\n");
    EXPECT_EQ(mac.shell(kScript + " --log /tmp/new").status, 0);
    EXPECT_NE(mac.contents("/tmp/new").find("\"result\":\"nothing\""), std::string::npos);
}

// A program that somebody else could have put there is not run by root, unless the administrator names it.
TEST(ProgramsOfARemoval, AreRootsAloneOrAreNotFound) {
    RemovalMac mac({"--installed", "antivir", "--users", "alice:501"}, false);
    const std::string trap = "#!/bin/sh\ntouch /tmp/trapped\n";
    mac.put("/usr/local/bin/sentrel-inspect", trap, 0755);
    const std::string app = "/Applications/Uninstall Sentrel.app";
    mac.put(app + "/Contents/MacOS/Uninstall Sentrel", trap, 0755);
    const Lines doors{"chown 501 /usr/local/bin/sentrel-inspect",
                      "chmod 777 /usr/local/bin/sentrel-inspect",
                      "chown 501 /usr/local/bin",
                      "chmod 777 /usr/local/bin",
                      "chmod g+w /usr/local/bin; chgrp 20 /usr/local/bin",
                      "mv /usr/local/bin/sentrel-inspect /tmp; ln -s /tmp/sentrel-inspect /usr/local/bin/"};
    const std::string start = "mv " + kInspect + " /opt/inspect; ";
    const std::string shut = "chown -R 0:0 /usr/local/bin; chmod -R 755 /usr/local/bin; ";
    std::string line = start;
    for (const std::string& door : doors) {
        line += joined({shut, door, "; ", kScript, "; "});
    }
    const auto looked = mac.shell("mkdir -p /opt; " + line);
    EXPECT_EQ(countOf("\"exitStatus\":1,", looked.out), doors.size()) << looked.out;
    EXPECT_FALSE(mac.exists("/tmp/trapped"));

    line = "rm /usr/local/bin/*; ";
    const std::string inside = "'" + app + "/Contents/Resources/helper'";
    const Lines doorsOfBundle{
        joined({"chown 501 '", app, "/Contents/MacOS/Uninstall Sentrel'"}), joined({"chown 501 '", app, "'"}),
        joined({"mkdir '", app, "/Contents/Resources'; touch ", inside, "; chmod 666 ", inside})};
    for (const std::string& door : doorsOfBundle) {
        line += joined(
            {"chown -R 0:0 '", app, "'; ", door, "; ", kScript, " --inspect /opt/inspect >&2; echo $?; "});
    }
    EXPECT_EQ(mac.shell(line).out, "15\n15\n15\n");
    EXPECT_FALSE(mac.exists("/tmp/trapped"));
    EXPECT_EQ(mac.shell(kScript + " --inspect /opt/inspect --uninstaller '" + app + "'").status, 10);
    EXPECT_TRUE(mac.exists("/tmp/trapped"));
}

}  // namespace

}  // namespace DeployTests
