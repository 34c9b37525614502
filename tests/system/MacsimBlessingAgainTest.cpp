#include <algorithm>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "BlessingMac.h"
#include "Support/PropertyList.h"
#include "support/WholeFile.h"

namespace {

using BlessingTests::kClient;
using BlessingTests::kLabel;
using BlessingTests::kReports;
using BlessingTests::kTool;
using BlessingTests::MacsimBlessing;
using TestSupport::contentsOf;

/// A helper that was blessed once and is to be blessed again.
class MacsimBlessingAgain : public MacsimBlessing {
  protected:
    /// Blesses, runs `change` in the Mac, and blesses again; whether the tool is another file afterwards.
    bool isReplacedAfter(const std::string& change) {
        const std::string bless = std::string(kClient) + " authorize 2 , bless " + kLabel;
        const std::string show = std::string("; stat -c '%i %z' ") + kTool + "; ";
        const auto result = mac_.shell(bless + show + change + show + bless + show + "launchctl list");
        std::vector<std::string> lines;
        std::istringstream text(result.out);
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "blessed"), 2) << result.out << result.err;
        EXPECT_TRUE(result.out.find(std::string("0\t") + kLabel) != std::string::npos) << result.out;
        const auto second = std::find(lines.rbegin(), lines.rend(), "blessed");
        return second == lines.rend() || *(second + 2) != *(second - 1);
    }
    /// The same when the application carries another version the second time: 10.2.1 is installed.
    bool isReplacedBy(const std::string& version) {
        std::string tool = contentsOf(SENTREL_FIXTURES "/macsim_helper");
        tool.replace(tool.find("10.2.1"), 6, version);
        mac_.put("/tmp/tool", tool, 0755);
        return isReplacedAfter(
            std::string("cp /tmp/tool /Applications/Client.app/Contents/Library/LaunchServices/") + kLabel);
    }
};

TEST_F(MacsimBlessingAgain, KeepsAWholeHelperOfTheSameVersion) {
    EXPECT_FALSE(isReplacedAfter("true"));
}

TEST_F(MacsimBlessingAgain, KeepsOneOfAHigherVersion) {
    EXPECT_FALSE(isReplacedBy("9.99.9"));
}

TEST_F(MacsimBlessingAgain, KeepsOneThatRunsUndisturbed) {
    const std::string bless = std::string(kClient) + " authorize 2 , bless " + kLabel + "; ";
    const std::string pid = std::string("launchctl list ") + kLabel + " | sed -n 's/.*pid = //p'";
    // The helper leaves after half a second; one that was stopped before stays.
    const auto result = mac_.shell(bless + "until launchctl kickstart system/" + kLabel + "; p=$(" + pid +
                                   "); [ -n \"$p\" ] && kill -STOP $p; do :; done; " + bless + "[ \"$(" +
                                   pid + ")\" = $p ] && echo the same; kill -CONT $p");
    EXPECT_EQ(result.out, "granted\nblessed\ngranted\nblessed\nthe same\n") << result.err;
}

TEST_F(MacsimBlessingAgain, ReplacesALowerVersionByTheNumbersOfIt) {
    EXPECT_TRUE(isReplacedBy("10.3.0"));
}

TEST_F(MacsimBlessingAgain, ReplacesAToolThatIsMissing) {
    EXPECT_TRUE(isReplacedAfter(std::string("rm ") + kTool));
}

TEST_F(MacsimBlessingAgain, ReplacesAToolThatWasChanged) {
    EXPECT_TRUE(isReplacedAfter(std::string("printf x >>") + kTool));
}

TEST_F(MacsimBlessingAgain, ReplacesAToolThatIsNoLongerAProgram) {
    EXPECT_TRUE(isReplacedAfter(std::string("printf x >") + kTool));
}

TEST_F(MacsimBlessingAgain, ReplacesAToolThatOthersMayWrite) {
    EXPECT_TRUE(isReplacedAfter(std::string("chmod o+w ") + kTool));
}

TEST_F(MacsimBlessingAgain, ReplacesAHelperWithoutItsPropertyList) {
    EXPECT_TRUE(isReplacedAfter(std::string("rm /Library/LaunchDaemons/") + kLabel + ".plist"));
}

TEST_F(MacsimBlessingAgain, ReplacesAHelperWithoutItsJob) {
    EXPECT_TRUE(isReplacedAfter(std::string("launchctl bootout system/") + kLabel));
}

TEST_F(MacsimBlessingAgain, WaitsWhileAJobOfTheLabelIsBeingRemoved) {
    mac_.put("/usr/local/bin/stubborn",
             "#!/bin/bash\ntrap 'touch /tmp/asked' TERM\ntouch /tmp/ready\nwhile :; do sleep 0.1; done\n",
             0755);
    const Simulator::PropertyList job{{"Label", kLabel},
                                      {"RunAtLoad", true},
                                      {"ExitTimeOut", 2},
                                      {"ProgramArguments", {"/usr/local/bin/stubborn"}}};
    mac_.put(std::string("/Library/LaunchDaemons/") + kLabel + ".plist",
             Simulator::writePropertyList(job, Simulator::PropertyListForm::xml));
    const auto result =
        mac_.shell(std::string("until [ -e /tmp/ready ]; do sleep 0.1; done; launchctl bootout system/") +
                   kLabel + " & until [ -e /tmp/asked ]; do sleep 0.1; done; " + kClient +
                   " authorize 2 , bless " + kLabel + " , call " + kLabel);
    EXPECT_EQ(result.out, std::string("granted\nblessed\n") + kReports) << result.err;
}

}  // namespace
