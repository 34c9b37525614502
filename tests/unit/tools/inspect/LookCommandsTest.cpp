// The commands that look at a Mac, whose jobs, processes and time are made up; its files are this machine's.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "ATerminal.h"
#include "Commands.h"
#include "InspectedMac.h"
#include "RecordJson.h"

namespace InspectUnitTests {

namespace {

using Inspect::Json;
using TestSupport::CallList;

struct Said {
    int status = -1;
    std::string output;
    std::string errors;
};

class LookCommands : public testing::Test {
  protected:
    using Command = int (*)(const Inspect::Arguments& arguments);

    static Said run(Command command, std::map<std::string, std::string, std::less<>> options,
                    const std::string& argument = "") {
        Said said;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        said.status = command({argument, std::move(options)});
        said.output = testing::internal::GetCapturedStdout();
        said.errors = testing::internal::GetCapturedStderr();
        return said;
    }
    static Json planned(std::map<std::string, std::string, std::less<>> options) {
        options["--json"] = "";
        return Json::parse(run(&Inspect::runPlan, std::move(options)).output);
    }
    void startHelper() {
        mac.mac.processes.processes.push_back({7, 0, "com.norvik.InstallerHelper",
                                               "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper"});
    }
    [[nodiscard]] CallList sleeps() const { return mac.mac.callsOf("sleep"); }

    InspectedMac mac;
};

TEST_F(LookCommands, WaitForTheHelperUpToTheTimeThatIsGiven) {
    startHelper();
    const Said said = run(&Inspect::runVerify, {{"--wait", "3"}});
    EXPECT_EQ(sleeps(), (CallList{{"sleep", 1}, {"sleep", 1}, {"sleep", 1}}));
    EXPECT_TRUE(said.output.starts_with(
        "found: process 7, user 0, /Library/PrivilegedHelperTools/com.norvik.InstallerHelper\n"))
        << said.output;
    EXPECT_EQ(said.errors, "");
}

TEST_F(LookCommands, TellATerminalHowLongTheyHaveWaited) {
    startHelper();
    const ATerminal terminal;
    static_cast<void>(terminal.ask(
        [] {
            ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
            return static_cast<std::size_t>(Inspect::runVerify({"", {{"--wait", "2"}}}));
        },
        {}, STDERR_FILENO));
    EXPECT_EQ(terminal.written(),
              "\r\x1b[KWaiting for the helper to finish (0 s)..."
              "\r\x1b[KWaiting for the helper to finish (1 s)..."
              "\r\x1b[K");
}

TEST_F(LookCommands, DoNotWaitUnlessToldTo) {
    startHelper();
    static_cast<void>(run(&Inspect::runVerify, {}));
    static_cast<void>(run(&Inspect::runVerify, {{"--wait", "0"}}));
    EXPECT_EQ(sleeps(), CallList{});
}

TEST_F(LookCommands, DoNotWaitWhereNoHelperRuns) {
    const Said said = run(&Inspect::runVerify, {{"--wait", "86400"}});
    EXPECT_EQ(sleeps(), CallList{});
    EXPECT_NE(said.output.find("\nresult: "), std::string::npos) << said.output;
}

TEST_F(LookCommands, RefuseATimeThatIsNone) {
    for (const std::string time : {"86401", "", "x", "5x", "-1", " 5", "99999999999\n"}) {
        const Said said = run(&Inspect::runVerify, {{"--wait", time}});
        const std::string shown = time.ends_with('\n') ? "99999999999\\x0a" : time;
        EXPECT_EQ(said.status, 2);
        EXPECT_EQ(said.output, "");
        EXPECT_EQ(said.errors,
                  "sentrel-inspect: --wait: \"" + shown + "\" is not a number of seconds up to 86400\n");
    }
}

TEST_F(LookCommands, PlanForEveryProcessButThisOne) {
    const std::string place = "/opt/View Logs";
    mac.mac.processes.processes.push_back({8, 501, "View Logs", place});
    mac.mac.processes.processes.push_back({::getpid(), 0, "View Logs", "/opt/self"});
    const Json steps = planned({}).at("steps");
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_EQ(steps.at(0).at("number"), 22);
    EXPECT_EQ(steps.at(0).at("finds").size(), 1U);
    EXPECT_EQ(steps.at(0).at("finds").at(0).at("process"), place);
    EXPECT_EQ(planned({{"--all", ""}}).at("steps").size(), 75U);
}

TEST_F(LookCommands, FindWhatANameBelongsTo) {
    const Said found = run(&Inspect::runFind, {}, "com.norvik.SupportPrivilegedHelper");
    EXPECT_EQ(found.status, 0);
    EXPECT_EQ(found.output,
              "Records\n"
              "  SupportPrivilegedHelper, label\n"
              "No step of an uninstallation touches it.\n");
    EXPECT_EQ(found.errors, "");
    const Said json = run(&Inspect::runFind, {{"--json", ""}}, "com.norvik.SupportPrivilegedHelper");
    EXPECT_EQ(json.status, 0);
    EXPECT_EQ(Json::parse(json.output).at("records").size(), 1U);
}

TEST_F(LookCommands, FindNothingByAStrangersName) {
    const Said said = run(&Inspect::runFind, {}, "a\nb");
    EXPECT_EQ(said.status, 1);
    EXPECT_EQ(said.output, "");
    EXPECT_EQ(said.errors, "sentrel-inspect: nothing of the product goes by \"a\\x0ab\"\n");
    const Said json = run(&Inspect::runFind, {{"--json", ""}}, "a");
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(json.output,
              "{\n  \"formatVersion\": 1,\n  \"what\": \"a\",\n  \"records\": [],\n  \"steps\": []\n}\n");
}

}  // namespace

}  // namespace InspectUnitTests
