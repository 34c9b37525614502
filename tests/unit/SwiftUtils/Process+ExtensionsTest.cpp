#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include "SwiftUtils/Process+Extensions.h"
#include "support/FakeMac.h"
#include "support/InstallerLine.h"

namespace {

using TestSupport::installerLine;
using Lines = std::vector<std::string>;
using Platform::TerminationReason;
using SwiftUtils::ProcessResult;
using TestSupport::CallList;
using TestSupport::FakeMac;

const std::vector<std::string> kNoArguments;

TEST(Execute, LaunchesWaitsReadsTheOutputAndThenTheError) {
    FakeMac mac;

    static_cast<void>(SwiftUtils::execute(std::string("/bin/tool"), std::vector<std::string>{"a", "b c"}));

    EXPECT_EQ(mac.calls,
              (CallList{{"launch", "/bin/tool a b c"}, {"wait"}, {"read output"}, {"read error"}}));
    ASSERT_EQ(mac.tasks.argumentVectors.size(), 1U);
    EXPECT_EQ(mac.tasks.argumentVectors.front(), (std::vector<std::string>{"a", "b c"}));
}

TEST(Execute, PassesNoArgumentsOnAsNone) {
    FakeMac mac;

    static_cast<void>(SwiftUtils::execute(std::string("/bin/tool"), std::nullopt));

    ASSERT_EQ(mac.tasks.argumentVectors.size(), 1U);
    EXPECT_EQ(mac.tasks.argumentVectors.front(), std::nullopt);
}

TEST(Execute, PassesAnEmptyListOfArgumentsOnAsAList) {
    FakeMac mac;

    static_cast<void>(SwiftUtils::execute(std::string("/bin/tool"), kNoArguments));

    ASSERT_EQ(mac.tasks.argumentVectors.size(), 1U);
    EXPECT_EQ(mac.tasks.argumentVectors.front(), kNoArguments);
}

TEST(Execute, OfAURLRunsItsPath) {
    FakeMac mac;
    mac.tasks.results["/System/a tool x"] = {"", "", 4};

    const ProcessResult result =
        SwiftUtils::execute(Base::URL::fileURL("/System/a tool"), std::vector<std::string>{"x"});

    EXPECT_EQ(mac.calls,
              (CallList{{"launch", "/System/a tool x"}, {"wait"}, {"read output"}, {"read error"}}));
    EXPECT_EQ(result.terminationStatus(), 4);
}

TEST(Execute, OfAChildThatWritesNothingYieldsNoTextsAndNoLogLines) {
    FakeMac mac;

    const ProcessResult result = SwiftUtils::execute(std::string("/bin/tool"), kNoArguments);

    EXPECT_EQ(result.output(), std::nullopt);
    EXPECT_EQ(result.errorDescription(), std::nullopt);
    EXPECT_EQ(result.terminationStatus(), 0);
    EXPECT_EQ(result.terminationReason(), TerminationReason::exit);
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(Execute, OfAChildThatFailsSilentlyLogsNothing) {
    FakeMac mac;
    mac.tasks.results["/bin/tool"] = {"", "", 64, TerminationReason::exit};

    const ProcessResult result = SwiftUtils::execute(std::string("/bin/tool"), kNoArguments);

    EXPECT_EQ(result.terminationStatus(), 64);
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(Execute, LogsTheErrorWithItsLineBreaksAndThenTheOutput) {
    FakeMac mac;
    mac.tasks.results["/bin/tool"] = {"fine\n", "not so fine\n", 2, TerminationReason::exit};

    const ProcessResult result = SwiftUtils::execute(std::string("/bin/tool"), kNoArguments);

    EXPECT_EQ(result.output(), "fine\n");
    EXPECT_EQ(result.errorDescription(), "not so fine\n");
    EXPECT_EQ(mac.log.lines,
              (Lines{"[SNTM Installer]\nError description: not so fine\n;\ntermination status: "
                     "2;\ntermination reason: exit.",
                     installerLine("Output: fine\n")}));
}

TEST(Execute, LogsTheErrorAlsoOfAChildThatSucceeded) {
    FakeMac mac;
    mac.tasks.results["/bin/tool"] = {"", "warning", 0, TerminationReason::exit};

    static_cast<void>(SwiftUtils::execute(std::string("/bin/tool"), kNoArguments));

    EXPECT_EQ(mac.log.lines, (Lines{"[SNTM Installer]\nError description: warning;\ntermination status: "
                                    "0;\ntermination reason: exit."}));
}

TEST(Execute, LogsTheOutputAlone) {
    FakeMac mac;
    mac.tasks.results["/bin/tool"] = {"gr\xC3\xBC\xC3\x9F", "", 1, TerminationReason::exit};

    const ProcessResult result = SwiftUtils::execute(std::string("/bin/tool"), kNoArguments);

    EXPECT_EQ(result.output(), "gr\xC3\xBC\xC3\x9F");
    EXPECT_EQ(result.errorDescription(), std::nullopt);
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Output: gr\xC3\xBC\xC3\x9F")}));
}

TEST(Execute, YieldsNoTextForAStreamOfInvalidUTF8AndKeepsTheOther) {
    FakeMac mac;
    mac.tasks.results["/bin/bad-output"] = {"abc\xFF", "error", 1, TerminationReason::exit};
    mac.tasks.results["/bin/bad-error"] = {"output", "\xC3", 1, TerminationReason::exit};

    const ProcessResult badOutput = SwiftUtils::execute(std::string("/bin/bad-output"), kNoArguments);
    EXPECT_EQ(badOutput.output(), std::nullopt);
    EXPECT_EQ(badOutput.errorDescription(), "error");
    EXPECT_EQ(mac.log.lines, (Lines{"[SNTM Installer]\nError description: error;\ntermination status: "
                                    "1;\ntermination reason: exit."}));
    mac.log.lines.clear();

    const ProcessResult badError = SwiftUtils::execute(std::string("/bin/bad-error"), kNoArguments);
    EXPECT_EQ(badError.output(), "output");
    EXPECT_EQ(badError.errorDescription(), std::nullopt);
    EXPECT_EQ(mac.log.lines, (Lines{installerLine("Output: output")}));
}

TEST(Execute, OfAChildKilledByASignalYieldsReasonTwoAndALineThatEndsInUncaughtSignal) {
    FakeMac mac;
    mac.tasks.results["/bin/tool"] = {"", "last words", 9, TerminationReason::uncaughtSignal};

    const ProcessResult result = SwiftUtils::execute(std::string("/bin/tool"), kNoArguments);

    EXPECT_EQ(static_cast<std::int32_t>(result.terminationReason()), 2);
    EXPECT_EQ(result.terminationStatus(), 9);
    EXPECT_EQ(mac.log.lines, (Lines{"[SNTM Installer]\nError description: last words;\ntermination status: "
                                    "9;\ntermination reason: uncaughtSignal."}));
}

TEST(Execute, OfAChildKilledByASignalLogsNothingWhenItWroteNothing) {
    FakeMac mac;
    mac.tasks.results["/bin/tool"] = {"", "", 9, TerminationReason::uncaughtSignal};

    static_cast<void>(SwiftUtils::execute(std::string("/bin/tool"), kNoArguments));

    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(ExecuteDeathTest, EndsTheProcessWhenThePathCannotBeRun) {
    FakeMac mac;
    mac.tasks.notExecutable.insert("/bin/tool");

    EXPECT_EXIT(static_cast<void>(SwiftUtils::execute(std::string("/bin/tool"), kNoArguments)),
                testing::KilledBySignal(SIGABRT),
                testing::Eq("Fatal error: launch path not accessible: /bin/tool\n"));
}

TEST(ProcessResultDeathTest, HasNoPlainInitializer) {
    EXPECT_EXIT(static_cast<void>(ProcessResult()), testing::KilledBySignal(SIGABRT),
                testing::Eq("Fatal error: Use of unimplemented initializer 'init()' for class "
                            "'SwiftUtils.ProcessResult'\n"));
}

}  // namespace
