// The steps of an uninstallation, each through the lines that the helper writes about it.

#include "inspect/explain/Steps.h"

#include <gtest/gtest.h>

#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/StopLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "inspect/explain/Run.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using Base::URL;
using Inspect::makeStep;
using Inspect::Step;
using Inspect::StepDetail;
using Inspect::StepOutcome;
using TestSupport::installerLine;
using Lines = std::vector<std::string>;

const std::string kReport = "Send the report to support.";

/// What launchctl wrote, as it comes into the log.
std::string toolWords(const std::string& words, const std::string& status) {
    return "[SNTM Installer]\nError description: " + words + "\n;\ntermination status: " + status +
           ";\ntermination reason: exit.";
}

/// "outcome | subject | reason | advice" of each detail.
Lines detailsOf(const Step& step) {
    Lines lines;
    for (const StepDetail& detail : step.details()) {
        lines.push_back(std::string(nameOf(detail.outcome)) + " | " + detail.subject + " | " + detail.reason +
                        " | " + detail.advice);
    }
    return lines;
}

class Steps : public testing::Test {
  protected:
    static std::unique_ptr<Step> stopping(bool isDaemon) {
        return makeStep(InstallCommon::StopLaunchdJobCommand(
            "Unloading...", NorvikCommon::LaunchdInfo::launchdWithLabel("com.a", URL::fileURL("/a.plist")),
            isDaemon));
    }
    static std::unique_ptr<Step> unloading() {
        return makeStep(InstallCommon::UnloadKextCommand(
            "Unloading...",
            NorvikCommon::KextInfo{
                NorvikCommon::BundleInfo::bundleWithPath(URL::fileURL("/E/a.kext"), "com.a"), "A"}));
    }
    static std::unique_ptr<Step> closing() {
        return makeStep(InstallCommon::KillProcessCommand("Closing...", "a"));
    }
    static std::unique_ptr<Step> removing(const Lines& paths) {
        std::vector<URL> urls;
        for (const std::string& path : paths) {
            urls.push_back(URL::fileURL(path));
        }
        return makeStep(InstallCommon::RemoveCommand("Deleting...", urls));
    }

    TestSupport::FakeMac mac;
};

const std::string kRegistered = installerLine("Output: system/com.a = {\n\tstate = running\n}\n");
const std::string kAbsent = toolWords("Could not find service \"com.a\" in domain for system\n", "113");

TEST_F(Steps, OfADaemonStopOneThatIsRegistered) {
    const auto step = stopping(true);
    EXPECT_FALSE(step->pauses());
    EXPECT_EQ(step->outcomeOfSilence(), StepOutcome::unknown);
    ASSERT_TRUE(step->take(kRegistered));
    EXPECT_EQ(detailsOf(*step), Lines{"done | system/com.a |  | "});
    EXPECT_FALSE(step->isComplete());
    EXPECT_TRUE(step->pauses());
    // The answers to the next job's question.
    EXPECT_FALSE(step->take(kRegistered));
    EXPECT_FALSE(step->take(kAbsent));
    EXPECT_FALSE(step->take(installerLine("Output: something")));
    EXPECT_EQ(detailsOf(*step), Lines{"done | system/com.a |  | "});
}

TEST_F(Steps, OfADaemonFindNone) {
    const auto step = stopping(true);
    ASSERT_TRUE(step->take(kAbsent));
    EXPECT_EQ(detailsOf(*step), Lines{"not there | system/com.a | the job is not loaded | "});
    EXPECT_TRUE(step->isComplete());
    EXPECT_FALSE(step->pauses());
    EXPECT_FALSE(step->take(kAbsent));
    EXPECT_FALSE(step->take(toolWords("Boot-out failed", "5")));
}

TEST_F(Steps, OfADaemonFail) {
    const auto failed = [this](const std::string& words, const std::string& status) {
        const auto step = stopping(true);
        EXPECT_TRUE(step->take(kRegistered));
        EXPECT_TRUE(step->take(toolWords(words, status)));
        EXPECT_TRUE(step->isComplete());
        EXPECT_FALSE(step->pauses());
        EXPECT_FALSE(step->take(toolWords(words, status)));
        return detailsOf(*step);
    };
    EXPECT_EQ(
        failed("Boot-out\nfailed\n ", "5"),
        Lines{"failed | system/com.a | launchd refused without a reason (Boot-out failed) | Restart the "
              "Mac: the job's files are gone and it is not loaded again."});
    EXPECT_EQ(failed("gone", "3"), Lines{"not there | system/com.a | the job is not loaded (gone) | "});
    EXPECT_EQ(failed("odd", "77"), Lines{"failed | system/com.a | launchctl failed (odd) | " + kReport});
    EXPECT_EQ(failed("odd", "x"), Lines{"failed | system/com.a | launchctl failed (odd) | " + kReport});
    EXPECT_EQ(failed("odd", "3x"), Lines{"failed | system/com.a | launchctl failed (odd) | " + kReport});
    EXPECT_EQ(failed("", "1"), Lines{"failed | system/com.a | not permitted () | " + kReport});
    // The last status is the tool's own.
    EXPECT_EQ(failed("a;\ntermination status: 3;", "1"),
              Lines{"failed | system/com.a | not permitted (a; termination status: 3;) | " + kReport});
}

TEST_F(Steps, OfADaemonAreNotTakenByOtherLines) {
    const auto step = stopping(true);
    for (const std::string& line :
         {std::string(), installerLine("Output: system/com.b = {\n}\n"), installerLine("system/com.a = {"),
          installerLine("Output: com.a"), "x" + kRegistered, "x" + kAbsent,
          toolWords("Could not find service \"com.ab\"", "113"),
          toolWords("Could not find service com.a", "113"), toolWords("Boot-out failed", "5"),
          std::string("[SNTM Installer]\nError description: \"com.a\"")}) {
        EXPECT_FALSE(step->take(line)) << line;
    }
    EXPECT_EQ(detailsOf(*step), Lines{});
}

TEST_F(Steps, OfAnAgentStopItForEveryUser) {
    const auto step = stopping(false);
    const std::string line = installerLine("Disable & bootout agent com.a for ");
    EXPECT_EQ(step->outcomeOfSilence(), StepOutcome::unknown);
    EXPECT_FALSE(step->take(line + "501"));
    EXPECT_FALSE(step->take(toolWords("early", "5")));
    ASSERT_TRUE(step->take(line + "0"));
    // A second pass for user 0 belongs to the next step.
    EXPECT_FALSE(step->take(line + "0"));
    ASSERT_TRUE(step->take(toolWords("No session", "125")));
    EXPECT_FALSE(step->take(toolWords("again", "5")));
    ASSERT_TRUE(step->take(line + "501"));
    ASSERT_TRUE(step->take(line + "502"));
    ASSERT_TRUE(step->take(toolWords("odd", "5")));
    EXPECT_FALSE(step->take(installerLine("Disable & bootout agent com.ab for 503")));
    EXPECT_EQ(
        detailsOf(*step),
        (Lines{"not there | gui/0/com.a | the user has no session that can hold the job (No session) | ",
               "done | gui/501/com.a |  | ",
               "failed | gui/502/com.a | launchd refused without a reason (odd) | Restart the Mac: the "
               "job's files are gone and it is not loaded again."}));
    EXPECT_FALSE(step->isComplete());
    EXPECT_FALSE(step->pauses());
}

TEST_F(Steps, OfAnExtensionAreSilentOnSuccess) {
    const auto step = unloading();
    EXPECT_EQ(step->outcomeOfSilence(), StepOutcome::done);
    EXPECT_FALSE(step->isComplete());
    EXPECT_FALSE(step->pauses());
    EXPECT_FALSE(step->take(installerLine("Kext b.kext unload failed. Return code: -23ff7fe8")));
    EXPECT_FALSE(step->take("Kext a.kext unload failed. Return code: -23ff7fe8"));
}

TEST_F(Steps, OfAnExtensionTellTheCode) {
    const auto failed = [this](const std::string& code) {
        const auto step = unloading();
        const std::string line = installerLine("Kext a.kext unload failed. Return code: ") + code;
        EXPECT_TRUE(step->take(line));
        EXPECT_TRUE(step->isComplete());
        EXPECT_FALSE(step->take(line));
        return detailsOf(*step);
    };
    EXPECT_EQ(failed("-23ff7ffa"), Lines{"not there | a.kext | not loaded (-23ff7ffa) | "});
    EXPECT_EQ(failed("-23ff7fff"),
              Lines{"failed | a.kext | internal error of the system (-23ff7fff) | " + kReport});
    EXPECT_EQ(failed("1"), Lines{"failed | a.kext | unknown reason (1) | " + kReport});
    EXPECT_EQ(failed(""), Lines{"failed | a.kext | unknown reason () | " + kReport});
}

TEST_F(Steps, OfAProcessTellEachThatWasClosed) {
    const auto step = closing();
    const std::string advice = "Check whether it still runs; restart the Mac if it does.";
    EXPECT_EQ(step->outcomeOfSilence(), StepOutcome::notThere);
    EXPECT_FALSE(step->take(installerLine("Failed to kill process 77")));
    EXPECT_TRUE(step->take(installerLine("Kill result for pid 77: 0")));
    EXPECT_FALSE(step->take(installerLine("Failed to kill process 77")));
    EXPECT_TRUE(step->take(installerLine("Kill result for pid 78: -1")));
    EXPECT_TRUE(step->take(installerLine("Failed to kill process 78")));
    EXPECT_FALSE(step->take("Failed to kill process 78"));
    EXPECT_FALSE(step->take("Kill result for pid 79: 0"));
    EXPECT_TRUE(step->take(installerLine("Kill result for pid 79: 10")));
    EXPECT_EQ(detailsOf(*step),
              (Lines{"done | process 77 |  | ",
                     "failed | process 78 | it could not be ended, or had gone already | " + advice,
                     "failed | process 79 | it could not be ended, or had gone already | " + advice}));
    EXPECT_FALSE(step->isComplete());
    EXPECT_FALSE(step->pauses());
}

TEST_F(Steps, OfARemovalExpectEachItemAndItsRepairCopyOnce) {
    const auto step = removing({"/a", "/b"});
    const std::string repair = "/Library/Application Support/NORVIK/SNT/Repair";
    const std::string removed = installerLine("Removed at ");
    const std::string failed = installerLine("Error removing: \"");
    const std::string absent = "\" could not be removed: No such file or directory";
    EXPECT_EQ(step->outcomeOfSilence(), StepOutcome::unknown);
    EXPECT_FALSE(step->take(removed + "/c"));
    EXPECT_FALSE(step->take(removed + "/a/inside"));
    EXPECT_FALSE(step->take(failed + "/a/inside" + absent));
    EXPECT_FALSE(step->take(failed + "/a\" was lost"));
    EXPECT_FALSE(step->take("Removed at /a"));
    EXPECT_TRUE(step->take(removed + "/b"));
    EXPECT_FALSE(step->take(removed + "/b"));
    EXPECT_TRUE(step->take(failed + repair + "/b" + absent));
    EXPECT_TRUE(step->take(failed + "/a" + absent));
    EXPECT_FALSE(step->isComplete());
    EXPECT_TRUE(step->take(removed + repair + "/a"));
    EXPECT_TRUE(step->isComplete());
    EXPECT_EQ(detailsOf(*step),
              (Lines{"done | /b |  | ", "not there | " + repair + "/b | No such file or directory | ",
                     "not there | /a | No such file or directory | ", "done | " + repair + "/a |  | "}));
    EXPECT_FALSE(step->pauses());
}

TEST_F(Steps, OfARemovalTellWhatResisted) {
    const auto failed = [this](const std::string& path, const std::string& reason) {
        const auto step = removing({"/a", "/ab"});
        EXPECT_TRUE(
            step->take(installerLine("Error removing: \"") + path + "\" could not be removed: " + reason));
        return detailsOf(*step);
    };
    EXPECT_EQ(failed("/a/x/y", "Operation not permitted"),
              Lines{"failed | /a/x/y | Operation not permitted | Take the immutable flag off (chflags -R "
                    "nouchg,noschg PATH) or give the helper Full Disk Access, then run the uninstaller "
                    "again."});
    EXPECT_EQ(failed("/a", "Read-only file system"),
              Lines{"failed | /a | Read-only file system | Make the disk writable, then run the uninstaller "
                    "again."});
    EXPECT_EQ(failed("/ab", "Directory not empty"),
              Lines{"failed | /ab | Directory not empty | Look at that path, then run the uninstaller "
                    "again."});
    const auto step = removing({"/a"});
    EXPECT_FALSE(
        step->take(installerLine("Error removing: \"/ab\" could not be removed: Directory not empty")));
}

TEST_F(Steps, OfARemovalTakeAFailureInsideForTheItemItself) {
    const auto step = removing({"/a", "/b"});
    EXPECT_TRUE(
        step->take(installerLine("Error removing: \"/b/x\" could not be removed: Directory not empty")));
    EXPECT_FALSE(step->take(installerLine("Removed at /b")));
    EXPECT_TRUE(step->take(installerLine("Removed at /a")));
}

TEST_F(Steps, ExistForCommandsOfAnUninstallationOnly) {
    EXPECT_EQ(makeStep(InstallCommon::UpdateLaunchServices("Updating...")), nullptr);
}

TEST_F(Steps, KeepAHundredDetailsAlikeAndTheLast) {
    const auto step = closing();
    const auto close = [&step](int number, const char* result) {
        EXPECT_TRUE(
            step->take(installerLine("Kill result for pid ") + std::to_string(number) + ": " + result));
    };
    for (int number = 1; number <= 101; ++number) {
        close(number, "0");
    }
    EXPECT_EQ(step->details().size(), 101U);
    EXPECT_EQ(step->leftOut(), 0U);
    close(102, "0");
    close(103, "0");
    EXPECT_EQ(step->details().size(), 101U);
    EXPECT_EQ(step->details().back().subject, "process 103");
    EXPECT_EQ(step->details()[99].subject, "process 100");
    EXPECT_EQ(step->leftOut(), 2U);
    // Those of another outcome are counted apart.
    for (int number = 201; number <= 301; ++number) {
        close(number, "-1");
    }
    EXPECT_EQ(step->details().size(), 201U);
    EXPECT_EQ(step->details()[99].subject, "process 100");
    EXPECT_EQ(step->details()[100].subject, "process 201");
    EXPECT_EQ(step->leftOut(), 3U);
    close(302, "-1");
    EXPECT_EQ(step->details().size(), 201U);
    EXPECT_EQ(step->details().back().subject, "process 302");
    EXPECT_EQ(step->leftOut(), 4U);
}

TEST_F(Steps, KeepTheBeginningOfLongTexts) {
    const auto remove = removing({"/a"});
    const std::string path = "/a/" + std::string(3000, 'x');
    EXPECT_TRUE(remove->take(installerLine("Error removing: \"") + path +
                             "\" could not be removed: " + std::string(3000, 'y')));
    EXPECT_EQ(remove->details().at(0).subject, path.substr(0, 2048));
    EXPECT_EQ(remove->details().at(0).reason, std::string(2048, 'y'));
    const auto stop = stopping(true);
    EXPECT_TRUE(stop->take(kRegistered));
    EXPECT_TRUE(stop->take(toolWords(std::string(3000, 'x'), "1")));
    EXPECT_EQ(stop->details().at(0).reason, "not permitted (" + std::string(2048, 'x') + ")");
}

TEST_F(Steps, AreWhatTheirDetailsAreTogether) {
    const auto combined = [](const std::vector<StepOutcome>& outcomes) {
        std::vector<StepDetail> details(outcomes.size());
        for (std::size_t index = 0; index < outcomes.size(); ++index) {
            details[index].outcome = outcomes[index];
        }
        return Inspect::combinedOutcome(details);
    };
    using enum StepOutcome;
    EXPECT_EQ(combined({}), unknown);
    EXPECT_EQ(combined({notThere}), notThere);
    EXPECT_EQ(combined({notThere, done, notThere}), done);
    EXPECT_EQ(combined({notThere, done, failed, done}), failed);
}

}  // namespace
