// Dialogs in a simulated Mac: the administrator's password, and the maker's frameworks.

#include <future>
#include <thread>

#include <gtest/gtest.h>

#include "support/SimulatedMac.h"
#include "support/VirtualDisplay.h"

namespace {

using namespace std::chrono_literals;
using TestSupport::ProgramResult;
using TestSupport::runProgram;
using TestSupport::SimulatedMac;
using TestSupport::VirtualDisplay;
using Words = std::vector<std::string>;

constexpr const char* kDialog = "SecurityAgent";
const Words kRequest{"client", "raw", "authorize", "3", "system.privilege.admin"};
constexpr const char* kDenied = "-60005|\n";
constexpr const char* kCanceled = "-60006|\n";
constexpr const char* kNoInteraction = "-60007|\n";

class MacsimDialogs : public ::testing::Test {
  protected:
    void create(const Words& options = {}) {
        ASSERT_EQ(mac_.create(options).status, 0);
        mac_.putCopy("/usr/local/bin/client", SENTREL_FIXTURES "/macsim_client");
        mac_.putCopy("/usr/local/bin/maker-client", SENTREL_FIXTURES "/macsim_maker_client");
    }
    /// Starts a command at the display; its result comes when it has ended.
    std::future<ProgramResult> start(const Words& command, const std::string& user = "alice") {
        Words words{SimulatedMac::macsim(), "run", mac_.path(), "--as", user, "--display",
                    display_.name(),        "--"};
        words.insert(words.end(), command.begin(), command.end());
        return std::async(std::launch::async, [words] { return runProgram(words); });
    }
    void answer(const std::string& password) {
        display_.type(password);
        display_.press("Return");
    }

    VirtualDisplay display_;
    SimulatedMac mac_;
};

TEST_F(MacsimDialogs, TheAdministratorsPasswordGrants) {
    create();
    auto result = start({"client", "authorize", "3", "Its own words."});
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    answer("alice");
    EXPECT_EQ(result.get().out, "granted\n");
    EXPECT_EQ(mac_.messages("launchd"), Words{});
}

TEST_F(MacsimDialogs, AStandardUserNamesAnAdministrator) {
    create({"--password", "alice=open sesame"});
    auto result = start({"client", "authorize", "3"}, "bob");
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    display_.type("alice");
    display_.press("Tab");
    answer("open sesame");
    EXPECT_EQ(result.get().out, "granted\n");
}

TEST_F(MacsimDialogs, AStandardUsersOwnPasswordIsNotEnough) {
    create();
    auto result = start(kRequest, "bob");
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    display_.type("bob");
    display_.press("Tab");
    answer("bob");
    display_.press("Escape");
    EXPECT_EQ(result.get().out, kCanceled);
    EXPECT_EQ(mac_.messages("launchd"), Words{"SecurityAgent: wrong name or password of an administrator"});
}

TEST_F(MacsimDialogs, TwoWrongAnswersAreForgiven) {
    create();
    auto result = start({"client", "authorize", "3"});
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    answer("wrong");
    answer("");
    answer("alice");
    EXPECT_EQ(result.get().out, "granted\n");
}

TEST_F(MacsimDialogs, ThreeWrongAnswersDeny) {
    create();
    auto result = start(kRequest);
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    for (const char* password : {"wrong", "Alice", "alice "}) {
        answer(password);
    }
    EXPECT_EQ(result.get().out, kDenied);
}

TEST_F(MacsimDialogs, CancelIsReportedAsSuch) {
    create();
    auto result = start(kRequest);
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    display_.press("Escape");
    EXPECT_EQ(result.get().out, kCanceled);
}

TEST_F(MacsimDialogs, WithoutADisplayThereIsNoInteraction) {
    create();
    EXPECT_EQ(mac_.run({}, kRequest, "alice").out, kNoInteraction);
    EXPECT_EQ(mac_.run({}, {"client", "authorize", "3"}, "alice").out, "denied\n");
}

TEST_F(MacsimDialogs, NobodyIsAskedWhenTheRequestDoesNotAllowIt) {
    create();
    EXPECT_EQ(start({"client", "raw", "authorize", "2", "system.privilege.admin"}).get().out, kNoInteraction);
}

TEST_F(MacsimDialogs, RootIsNotAsked) {
    create();
    EXPECT_EQ(start({"client", "authorize", "3"}, "root").get().out, "granted\n");
}

TEST_F(MacsimDialogs, OnlyTheSessionsUserCanAsk) {
    create();
    const Words command{"setpriv",   "--reuid", "501", "--clear-groups", "client", "raw",
                        "authorize", "3",       "x"};
    EXPECT_EQ(start(command, "root").get().out, kNoInteraction);
}

TEST_F(MacsimDialogs, AnAgentThatCannotShowAnythingAllowsNoInteraction) {
    create();
    mac_.putCopy(
        "/System/Library/Frameworks/Security.framework/Versions/A/MachServices/"
        "SecurityAgent.bundle/Contents/MacOS/SecurityAgent",
        "/usr/bin/false");
    EXPECT_EQ(start(kRequest).get().out, kNoInteraction);
}

TEST_F(MacsimDialogs, TheCallersPromptIsPartOfTheDialog) {
    create();
    int heights[2]{};
    const std::string prompt(200, 'p');
    for (const bool hasPrompt : {false, true}) {
        auto result = start({"client", "authorize", "3", hasPrompt ? "Words, words. " + prompt : ""});
        ASSERT_TRUE(display_.waitForWindow(kDialog));
        heights[hasPrompt ? 1 : 0] = display_.windowHeight(kDialog);
        display_.press("Escape");
        EXPECT_EQ(result.get().out, "denied\n");
    }
    EXPECT_GT(heights[0], 150);
    EXPECT_GT(heights[1], heights[0] + 20);
}

TEST_F(MacsimDialogs, StandAnyPrompt) {
    create();
    for (const std::string& prompt :
         {std::string(60'000, '\n'), std::string(60'000, 'W'), std::string("-NSFont \xff\xfe"),
          "x" + std::string(999, '\xc3') + std::string("\xa9")}) {
        mac_.put("/tmp/prompt", prompt + ".");
        auto result = start({"sh", "-c", "client authorize 3 \"$(cat /tmp/prompt)\""});
        ASSERT_TRUE(display_.waitForWindow(kDialog)) << prompt.substr(0, 20);
        EXPECT_LT(display_.windowHeight(kDialog), 700);
        answer("alice");
        EXPECT_EQ(result.get().out, "granted\n");
    }
}

TEST_F(MacsimDialogs, OthersAreServedWhileTheDialogIsOpen) {
    create();
    auto result = start(
        {"sh", "-c", "client authorize 3 & launchctl print system >/dev/null && touch /tmp/served; wait"});
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    EXPECT_TRUE(TestSupport::comesTrue([this] { return mac_.exists("/tmp/served"); }));
    answer("alice");
    EXPECT_EQ(result.get().out, "granted\n");
}

TEST_F(MacsimDialogs, TheDialogGoesWithItsCaller) {
    create();
    auto result =
        start({"sh", "-c",
               "client authorize 3 & pid=$!; while [ ! -e /tmp/end ]; do sleep 0.05; done; kill -9 $pid; "
               "while [ ! -e /tmp/more ]; do sleep 0.05; done; client authorize 3"});
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    mac_.put("/tmp/end", "");
    EXPECT_TRUE(display_.waitUntilGone(kDialog));
    mac_.put("/tmp/more", "");
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    answer("alice");
    EXPECT_EQ(result.get().out, "granted\n");
}

TEST_F(MacsimDialogs, OpenOneAfterAnother) {
    create();
    auto result = start({"sh", "-c",
                         "(client authorize 3 > /tmp/a; touch /tmp/done) & "
                         "(client authorize 3 > /tmp/b; touch /tmp/done) & wait"});
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    answer("alice");
    EXPECT_TRUE(TestSupport::comesTrue([this] { return mac_.exists("/tmp/done"); }));
    EXPECT_TRUE(mac_.contents("/tmp/a").empty() != mac_.contents("/tmp/b").empty()) << "one is still waiting";
    // The first one may still be on the screen, and take the answer with it.
    while (result.wait_for(1s) != std::future_status::ready) {
        if (display_.waitForWindow(kDialog, 1s)) {
            answer("alice");
        }
    }
    EXPECT_EQ(result.get().status, 0);
    EXPECT_EQ(mac_.contents("/tmp/a") + mac_.contents("/tmp/b"), "granted\ngranted\n");
}

TEST_F(MacsimDialogs, LeaveNoFileAndNoProcessBehind) {
    create();
    const std::string list = "find /Users /tmp -not -name 'X*' | sort";
    const std::string before = mac_.shell(list).out;
    auto result = start(kRequest);
    ASSERT_TRUE(display_.waitForWindow(kDialog));
    answer("typed, and wrong");
    answer("alice");
    EXPECT_TRUE(result.get().out.starts_with("0|"));
    EXPECT_EQ(mac_.processes(), Words{});
    mac_.shell("rmdir /tmp/.X11-unix");
    EXPECT_EQ(mac_.shell(list).out, before);
}

TEST_F(MacsimDialogs, ParentalControlThatIsOffOrRefusedAsksNobody) {
    create({"--installed", "current", "--without-uninstaller"});
    EXPECT_EQ(start({"maker-client", "parental-control"}).get().out, "authorized\n");
    SimulatedMac refusing;
    ASSERT_EQ(
        refusing.create({"--installed", "current", "--without-uninstaller", "--parental-control", "refused"})
            .status,
        0);
    refusing.putCopy("/usr/local/bin/maker-client", SENTREL_FIXTURES "/macsim_maker_client");
    EXPECT_EQ(runProgram({SimulatedMac::macsim(), "run", refusing.path(), "--as", "alice", "--display",
                          display_.name(), "--", "maker-client", "parental-control"})
                  .out,
              "refused\n");
}

TEST_F(MacsimDialogs, ParentalControlTakesItsPassword) {
    create({"--installed", "current", "--without-uninstaller", "--parental-control", "on"});
    auto result = start({"maker-client", "parental-control"});
    ASSERT_TRUE(display_.waitForWindow("Parental control"));
    answer("alice");
    answer("sentrel");
    EXPECT_EQ(result.get().out, "authorized\n");
    auto canceled = start({"maker-client", "parental-control"});
    ASSERT_TRUE(display_.waitForWindow("Parental control"));
    display_.press("Escape");
    EXPECT_EQ(canceled.get().out, "refused\n");
}

TEST_F(MacsimDialogs, TheMakersAlertWaitsForItsButton) {
    create({"--installed", "current", "--without-uninstaller"});
    auto result = start({"maker-client", "alert"});
    ASSERT_TRUE(display_.waitForWindow("A message"));
    display_.press("Return");
    EXPECT_EQ(result.get().out, "answered\n");
}

TEST_F(MacsimDialogs, TheMakersFrameworksGoWithTheProduct) {
    create({"--installed", "current", "--without-uninstaller"});
    ASSERT_EQ(mac_.shell("rm -rf /Applications/Sentrel.app").status, 0);
    EXPECT_EQ(start({"maker-client", "parental-control", "alert"}).get().out, "no framework\nno framework\n");
}

}  // namespace
