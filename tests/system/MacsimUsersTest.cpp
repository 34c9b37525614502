// What the users of a simulated Mac have: rights, passwords, languages; and the names that its daemons
// register.

#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/PropertyList.h"
#include "support/SimulatedMac.h"

namespace {

using TestSupport::ProgramResult;
using TestSupport::runProgram;
using TestSupport::SimulatedMac;
using Words = std::vector<std::string>;

constexpr const char* kDaemon = "com.norvik.fileaccessd";
constexpr const char* kRoot = "com.norvik.antivirus.DaemonRoot";
constexpr const char* kScanner = "com.norvik.antivirus.OnDemandScannerRoot";
constexpr const char* kPreferences = "/Users/alice/Library/Preferences/.GlobalPreferences.plist";

class MacsimUsers : public ::testing::Test {
  protected:
    void create(const Words& options = {}) {
        const ProgramResult result = mac_.create(options);
        ASSERT_EQ(result.status, 0) << result.err;
        mac_.putCopy("/usr/local/bin/client", SENTREL_FIXTURES "/macsim_client");
    }
    std::string client(const Words& steps, const std::string& user = "root") {
        Words command{"client"};
        command.insert(command.end(), steps.begin(), steps.end());
        return mac_.run({}, command, user).out;
    }
    void expectMisuse(const Words& options, const std::string& words) {
        const ProgramResult result = mac_.create(options);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err, "macsim: " + words + "\n");
    }

    SimulatedMac mac_;
};

TEST_F(MacsimUsers, TheFirstIsTheAdministrator) {
    create();
    EXPECT_EQ(mac_.shell("id -Gn", "alice").out, "staff admin\n");
    EXPECT_EQ(mac_.shell("id -Gn", "bob").out, "staff\n");
    EXPECT_EQ(mac_.shell("getent group admin").out, "admin:x:80:root,alice\n");
}

TEST_F(MacsimUsers, AnAdministratorCanBeMarked) {
    create({"--users", "alice:501,bob:502:admin,carol:503:logged-out:admin"});
    EXPECT_EQ(mac_.shell("getent group admin").out, "admin:x:80:root,bob,carol\n");
    EXPECT_EQ(mac_.shell("id -Gn", "alice").out, "staff\n");
    EXPECT_EQ(mac_.state().at("jobs").contains("gui/503"), false);
}

TEST_F(MacsimUsers, NonsenseAboutUsersIsRefused) {
    expectMisuse({"--users", "alice:501:king"},
                 "'alice:501:king' is not NAME:UID, NAME:UID:admin or NAME:UID:logged-out");
    expectMisuse({"--users", "alice:501:admin:admin"},
                 "'alice:501:admin:admin' is not NAME:UID, NAME:UID:admin or NAME:UID:logged-out");
    expectMisuse({"--password", "alice"}, "'alice' is not USER=WORD");
    expectMisuse({"--password", "alice="}, "'alice=' is not USER=WORD");
    expectMisuse({"--password", "dave=x"}, "there is no user named 'dave' who could have a password");
}

TEST_F(MacsimUsers, PasswordsAreNowhereToBeRead) {
    create({"--password", "alice=open-sesame"});
    EXPECT_EQ(
        mac_.shell("grep -rl 'open-sesam[e]' / --exclude-dir=proc --exclude-dir=sys --exclude-dir=usr").out,
        "");
    EXPECT_NE(mac_.shell("cat /var/macsim/machine.json", "alice").status, 0);
    EXPECT_NE(mac_.contents("/var/macsim/machine.json").find("$6$"), std::string::npos);
}

TEST_F(MacsimUsers, ReadEnglishUnlessToldOtherwise) {
    create();
    EXPECT_EQ(client({"languages"}, "alice"), "en\n");
    EXPECT_EQ(client({"languages"}), "en\n");
}

TEST_F(MacsimUsers, HaveTheLanguagesOfTheirMac) {
    create({"--language", "de-AT,zh-Hans-CN"});
    EXPECT_EQ(client({"languages"}, "alice"), "de-AT,zh-Hans-CN\n");
    EXPECT_EQ(client({"languages"}, "carol"), "de-AT,zh-Hans-CN\n");
    EXPECT_EQ(client({"languages"}), "de-AT,zh-Hans-CN\n");
}

TEST_F(MacsimUsers, ChangeTheirLanguagesForGood) {
    create();
    mac_.put(kPreferences, Simulator::writePropertyList({{"AppleLanguages", {"en"}}, {"Other", "kept"}},
                                                        Simulator::PropertyListForm::xml));
    ASSERT_EQ(runProgram({SimulatedMac::macsim(), "run", mac_.path(), "--as", "alice", "--language", "ja,fr",
                          "--", "true"})
                  .status,
              0);
    EXPECT_EQ(client({"languages"}, "alice"), "ja,fr\n");
    EXPECT_EQ(client({"languages"}, "bob"), "en\n");
    const auto preferences = Simulator::parsePropertyList(mac_.contents(kPreferences));
    ASSERT_TRUE(preferences);
    EXPECT_EQ(Simulator::stringOf(*preferences, "Other"), "kept");
    EXPECT_EQ(mac_.shell(std::string("stat -c '%U %G %a' ") + kPreferences).out, "alice staff 600\n");
}

TEST_F(MacsimUsers, BrokenPreferencesAreReplaced) {
    create();
    mac_.put(kPreferences, "no property list");
    ASSERT_EQ(runProgram({SimulatedMac::macsim(), "run", mac_.path(), "--as", "alice", "--language", "fr",
                          "--", "true"})
                  .status,
              0);
    EXPECT_EQ(client({"languages"}, "alice"), "fr\n");
}

TEST_F(MacsimUsers, NonsenseAboutLanguagesIsRefused) {
    for (const char* nonsense : {"../de", "de_AT", "1e", "de-", "de-verylongpart"}) {
        expectMisuse({"--language", nonsense},
                     std::string("'") + nonsense + "' is not a language (like de or zh-Hans-CN)");
    }
    create();
    EXPECT_EQ(
        runProgram({SimulatedMac::macsim(), "run", mac_.path(), "--language", ",", "--", "true"}).status, 2);
}

TEST_F(MacsimUsers, ParentalControlIsOffOnOrRefused) {
    EXPECT_EQ(mac_.create({"--parental-control", "maybe"}).status, 2);
    create({"--parental-control", "on"});
    const auto state = Simulator::parsePropertyList(mac_.contents("/var/macsim/parental-control.plist"));
    ASSERT_TRUE(state);
    EXPECT_EQ(Simulator::stringOf(*state, "State"), "on");
    EXPECT_EQ(mac_.contents("/var/macsim/parental-control.plist").find("sentrel"), std::string::npos);
}

TEST_F(MacsimUsers, TheDaemonsNamesAreThereWhileItRuns) {
    create({"--installed", "current", "--without-uninstaller"});
    const std::string bootout = std::string("launchctl bootout system/") + kDaemon;
    EXPECT_EQ(
        client({"distant", kScanner,      ",",   "still-there", ",",       "distant", kRoot,
                ",",       "still-there", ",",   "shell",       bootout,   ",",       "still-there",
                ",",       "distant",     kRoot, ",",           "distant", kScanner}),
        "there\nvalid valid valid\nthere\nvalid valid valid\n0\ninvalid invalid invalid\nnobody\nnobody\n");
    EXPECT_EQ(mac_.state().at("distantObjects"), Words{});
}

TEST_F(MacsimUsers, AProxyDoesNotComeBackToLifeWithTheDaemon) {
    create({"--installed", "current", "--without-uninstaller"});
    const std::string lookUp = std::string("$(client raw lookup ") + kRoot + " | grep ^0)";
    const std::string restart =
        "old=" + lookUp + "; launchctl kickstart -k system/" + kDaemon +
        "; new=$old; while [ -z \"$new\" ] || [ \"$new\" = \"$old\" ]; do new=" + lookUp + "; done";
    EXPECT_EQ(client({"distant", kRoot, ",", "shell", restart, ",", "still-there", ",", "distant", kRoot, ",",
                      "still-there"},
                     "root"),
              "there\n0\ninvalid invalid invalid\nthere\nvalid valid valid\n");
    EXPECT_EQ(mac_.state().at("distantObjects"), (Words{kRoot, kScanner}));
}

TEST_F(MacsimUsers, NobodyHasTheNamesWithoutTheDaemon) {
    create();
    EXPECT_EQ(client({"distant", kRoot, ",", "distant", "", ",", "distant", kDaemon}, "alice"),
              "nobody\nnobody\nnobody\n");
    EXPECT_EQ(client({"raw", "lookup"}), "no reply\n");
}

}  // namespace
