// The runs of a log in a file.

#include <gtest/gtest.h>

#include <cerrno>

#include "inspect/explain/Explain.h"
#include "support/FakeMac.h"
#include "support/Scratch.h"

namespace {

using Inspect::RunAnalyzer;
using PlatformTests::makeFile;
using PlatformTests::openDescriptors;

/// A line of the uninstaller's process.
std::string uninstallersLine(int pid, const std::string& text) {
    return "Nov 21 10:00:00 Mac Uninstall Sentrel[" + std::to_string(pid) + "]: " + text + "\n";
}

class RunsOfLog : public testing::Test {
  protected:
    /// "REFUSAL|NOTICE|NUMBERS" of the runs.
    static std::string runs(const std::string& file,
                            const std::function<void(const RunAnalyzer&)>& whileReading = {}) {
        const int descriptors = openDescriptors();
        std::string refusal;
        std::string notice;
        const auto found = Inspect::runsOfLog(file, refusal, notice, whileReading);
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_EQ(found.has_value(), refusal.empty());
        std::string text = refusal + "|" + notice + "|";
        for (const auto& run : found.value_or(std::vector<Inspect::Run>())) {
            text += std::to_string(run.number) + " ";
        }
        return text;
    }
    [[nodiscard]] std::string runsIn(const std::string& log) const {
        makeFile(folder.path("log"), log);
        return runs(folder.path("log"));
    }

    TestSupport::FakeMac mac;
    PlatformTests::Scratch folder;
};

TEST_F(RunsOfLog, ComeInTheirOrder) {
    EXPECT_EQ(runsIn(uninstallersLine(18, "a") + uninstallersLine(19, "b")), "||1 2 ");
    EXPECT_EQ(runsIn("Nov 21 10:00:00 Mac kernel[0]: text\n"), "||");
}

TEST_F(RunsOfLog, AreNoneOfAFileThatIsNoLog) {
    const std::string refusal = "not a system log: no line has the form of an entry||";
    EXPECT_EQ(runsIn(""), refusal);
    EXPECT_EQ(runsIn("text\n"), refusal);
    EXPECT_EQ(runs(folder.path("missing")), "No such file or directory||");
    EXPECT_EQ(runs(folder.path()), "Is a directory||");
}

TEST_F(RunsOfLog, MayBeMissingInPart) {
    const std::string object =
        R"({"processID": 18, "processImagePath": "/Uninstall Sentrel", "eventMessage": "text"})";
    EXPECT_EQ(runsIn(object + "{"), "|The log ends in the middle of an entry.|1 ");
    std::string log;
    for (int pid = 1; pid <= 101; ++pid) {
        log += uninstallersLine(pid, "text");
    }
    EXPECT_TRUE(runsIn(log).starts_with("|Of the log's runs only the last 100 are told.|2 3 "));
}

TEST_F(RunsOfLog, AreShownWhileTheyAreRead) {
    makeFile(folder.path("log"),
             uninstallersLine(18, "a") + "Nov 21 10:00:00 Mac kernel[0]: text\n" + uninstallersLine(18, "b"));
    int calls = 0;
    EXPECT_EQ(runs(folder.path("log"),
                   [&calls](const RunAnalyzer& analyzer) {
                       ++calls;
                       EXPECT_FALSE(analyzer.standing());
                   }),
              "||1 ");
    EXPECT_EQ(calls, 3);
}

// The end of a file leaves errno as it is.
TEST_F(RunsOfLog, EndWhereTheFileEndsWhateverWasInterruptedBefore) {
    makeFile(folder.path("log"), uninstallersLine(18, "a"));
    std::string refusal;
    std::string notice;
    errno = EINTR;
    const auto found = Inspect::runsOfLog(folder.path("log"), refusal, notice);
    ASSERT_TRUE(found) << refusal;
    EXPECT_EQ(found->size(), 1U);
}

}  // namespace
