// Nothing that a name holds can leave its line in the log.

#include "NorvikCommon/InstallerLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "Base/FatalError.h"
#include "InstallCommon/FileSystemUtil.h"
#include "SwiftUtils/Process+Extensions.h"
#include "support/FakeMac.h"

namespace {

using InstallCommon::FileSystemUtil;
using Lines = std::vector<std::string>;
using TestSupport::FakeMac;

const std::string kForgedName = "/tmp/a\n[SNTM Installer] Uninstallation finished.";
const std::string kOnOneLine = "/tmp/a\\x0a[SNTM Installer] Uninstallation finished.";

TEST(InstallerLog, WritesALineWithAndWithoutThePrefix) {
    FakeMac mac;
    NorvikCommon::logLine("Uninstallation finished");
    NorvikCommon::logInstallerLine("Removed at /Gr\xC3\xBC\xC3\x9F e");
    EXPECT_EQ(mac.log.lines,
              (Lines{"Uninstallation finished", "[SNTM Installer] Removed at /Gr\xC3\xBC\xC3\x9F e"}));
}

TEST(InstallerLog, KeepsEveryLineOnOneLine) {
    FakeMac mac;
    NorvikCommon::logLine("a\nb\t\xE2\x80\xAE");
    NorvikCommon::logInstallerLine("a\nb");
    EXPECT_EQ(mac.log.lines, (Lines{"a\\x0ab\\x09\\xe2\\x80\\xae", "[SNTM Installer] a\\x0ab"}));
}

TEST(InstallerLog, KeepsTheLineBreaksAndTabsOfAToolAndNothingElseThatMovesTheText) {
    FakeMac mac;
    NorvikCommon::logLines("[SNTM Installer]\nError:\tone\n\ntwo\r\x1B[2J\n", {});
    EXPECT_EQ(mac.log.lines, Lines{"[SNTM Installer]\nError:\tone\n\ntwo\\x0d\\x1b[2J\n"});
}

TEST(InstallerLog, LetsNoToolBeginALineAsTheModuleDoes) {
    FakeMac mac;
    NorvikCommon::logLines("a\n[SNTM Installer] b\n\n[SNTM Installer]\n [SNTM Installer]", {});
    EXPECT_EQ(mac.log.lines, Lines{"a\\x0a[SNTM Installer] b\n\\x0a[SNTM Installer]\n [SNTM Installer]"});
}

TEST(InstallerLog, KeepsTheNamesThatAToolRepeatsOnTheirLines) {
    FakeMac mac;
    const Lines names{"verb", "x\ny", "/p\n/q", "z"};
    NorvikCommon::logLines("no /p\n/q\nand x\ny, x\nyz\nverb", names);
    EXPECT_EQ(mac.log.lines, (Lines{"no /p\\x0a/q\nand x\\x0ay, x\\x0ayz\nverb"}));
}

TEST(InstallerLog, KeepsTheLongerOfTwoNamesThatBeginAlikeOnItsLine) {
    for (const Lines& names : {Lines{"a\nb", "a\nb\nc"}, Lines{"a\nb\nc", "a\nb"}}) {
        FakeMac mac;
        NorvikCommon::logLines("no a\nb\nc\n", names);
        EXPECT_EQ(mac.log.lines, Lines{"no a\\x0ab\\x0ac\n"});
    }
}

TEST(InstallerLog, KeepsNamesOnTheirLinesInWhicheverOrderTheyCome) {
    for (const Lines& names : {Lines{"a\nb", "c\nd"}, Lines{"c\nd", "a\nb"}}) {
        FakeMac mac;
        NorvikCommon::logLines("no a\nb\nand c\nd\n", names);
        EXPECT_EQ(mac.log.lines, Lines{"no a\\x0ab\nand c\\x0ad\n"});
    }
}

TEST(InstallerLog, EscapesABackslashOfAToolOnce) {
    FakeMac mac;
    NorvikCommon::logLines("a\\x0ab\n", Lines{"c\nd"});
    EXPECT_EQ(mac.log.lines, Lines{"a\\x5cx0ab\n"});
}

TEST(ForgedNames, CannotWriteALineOfTheirOwnThroughARemoval) {
    FakeMac mac;
    mac.files.addFile(kForgedName);
    FileSystemUtil::remove(Base::URL::fileURL(kForgedName));
    FileSystemUtil::remove(Base::URL::fileURL(kForgedName));
    ASSERT_EQ(mac.log.lines.size(), 2U);
    EXPECT_EQ(mac.log.lines[0], "[SNTM Installer] Removed at " + kOnOneLine);
    EXPECT_EQ(mac.log.lines[1], "[SNTM Installer] Error removing: \"" + kOnOneLine + "\" does not exist");
}

TEST(ForgedNames, CannotWriteALineOfTheirOwnThroughACopyOrAChangeOfMode) {
    FakeMac mac;
    FileSystemUtil::copy(Base::URL::fileURL(kForgedName), Base::URL::fileURL("/b\n/c"));
    FileSystemUtil::setPermissions(0, Base::URL::fileURL(kForgedName));
    static_cast<void>(FileSystemUtil::isEmpty(Base::URL::fileURL(kForgedName)));
    ASSERT_FALSE(mac.log.lines.empty());
    EXPECT_EQ(mac.log.lines[0], "[SNTM Installer] Copy source " + kOnOneLine + "; destination: /b\\x0a/c");
    for (const std::string& line : mac.log.lines) {
        EXPECT_EQ(line.find('\n'), std::string::npos) << line;
        EXPECT_TRUE(line.starts_with("[SNTM Installer] ")) << line;
    }
}

TEST(ForgedNames, CannotWriteALineOfTheirOwnThroughAToolThatRepeatsThem) {
    FakeMac mac;
    mac.tasks.results["/bin/launchctl bootout system " + kForgedName] = {
        "", "/bin/launchctl: " + kForgedName + ": not found\nTry again.\n", 1};
    static_cast<void>(
        SwiftUtils::execute(std::string("/bin/launchctl"), Lines{"bootout", "system", kForgedName}));
    EXPECT_EQ(mac.log.lines,
              Lines{"[SNTM Installer]\nError description: /bin/launchctl: " + kOnOneLine +
                    ": not found\nTry again.\n;\ntermination status: 1;\ntermination reason: exit."});
}

/// A log in the place where a death test looks.
class PrintingLog final : public Platform::SystemLog {
  public:
    explicit PrintingLog(bool fails) : fails_(fails) {}
    void log(std::string_view text) override {
        std::fprintf(stderr, "logged: %s\n", std::string(text).c_str());
        if (fails_) {
            Base::fatalError("no log");
        }
    }

  private:
    const bool fails_;
};

/// A fatal error in a process whose log is this one.
void endWith(bool logFails) {
    FakeMac mac;
    PrintingLog log(logFails);
    Platform::SystemPorts ports = Platform::SystemPorts::current();
    ports.log = log;
    const TestSupport::ScopedSystemPorts scope(ports);
    mac.tasks.notExecutable.insert("/bin/launchctl");
    static_cast<void>(SwiftUtils::execute(std::string("/bin/launchctl"), std::nullopt));
}

TEST(LastWordsDeathTest, GoToTheSystemLogToo) {
    EXPECT_EXIT(endWith(false), testing::KilledBySignal(SIGABRT),
                testing::Eq("Fatal error: launch path not accessible: /bin/launchctl\n"
                            "logged: Fatal error: launch path not accessible: /bin/launchctl\n"));
}

TEST(LastWordsDeathTest, EndWithTheFirstErrorWhenTheLogFails) {
    EXPECT_EXIT(endWith(true), testing::KilledBySignal(SIGABRT),
                testing::Eq("Fatal error: launch path not accessible: /bin/launchctl\n"
                            "logged: Fatal error: launch path not accessible: /bin/launchctl\n"
                            "Fatal error: no log\n"));
}

void endWithoutPorts() {
    { const FakeMac mac; }
    Base::fatalError("nobody listens");
}

TEST(LastWordsDeathTest, NeedNoPorts) {
    EXPECT_EXIT(endWithoutPorts(), testing::KilledBySignal(SIGABRT),
                testing::Eq("Fatal error: nobody listens\n"));
}

}  // namespace
